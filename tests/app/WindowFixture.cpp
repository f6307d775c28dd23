#include "app/WindowFixture.h"

#include "app/GuardedApplication.h"
#include "app/document/DocumentWindow.h"
#include "platform/qt/QtGlSurface.h"
#include "platform/qt/QtText.h"
#include "plot/BasicOpenGLView.h"
#include "support/SessionBus.h"
#include "support/VirtualDisplay.h"

#include <dlfcn.h>
#include <link.h>

#include <QAbstractItemView>
#include <QPixmap>
#include <QProcess>
#include <QScreen>
#include <clocale>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <stdexcept>

namespace orrery::test {

namespace {

/// Has the GL driver stay when the display goes: what it keeps to the end is told apart from leaks by its name.
void keepDriverLoaded() {
    const auto keep = [](dl_phdr_info* object, std::size_t /*size*/, void* /*data*/) {
        if (std::string_view(object->dlpi_name).find("/dri/") != std::string_view::npos) {
            dlopen(object->dlpi_name, RTLD_LAZY | RTLD_NOLOAD | RTLD_NODELETE);
        }
        return 0;
    };
    dl_iterate_phdr(keep, nullptr);
}

/// What a process has once: a display, its window manager, and the application object.
class Desktop {
public:
    Desktop() {
        startWindowManager();
        QtGlSurface::setApplicationFormat(BasicOpenGLView::basicPixelFormat());
        QApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
        m_application = std::make_unique<GuardedApplication>(m_count, m_arguments);
        std::setlocale(LC_NUMERIC, "C");
        QApplication::setApplicationDisplayName("Orrery");
        QApplication::setApplicationVersion("0.1.0");
    }
    ~Desktop() {
        keepDriverLoaded();
        m_application.reset();
        m_windowManager.kill();
        m_windowManager.waitForFinished();
    }
    Desktop(const Desktop&) = delete;
    Desktop& operator=(const Desktop&) = delete;

private:
    /// A window that comes before its manager is ready is never made active. One manager in some thousand never is.
    void startWindowManager() {
        for (int attempt = 0; attempt < 3; ++attempt) {
            m_windowManager.start("openbox", {"--sm-disable"});
            if (windowManagerAnswers()) return;
            m_windowManager.kill();
            m_windowManager.waitForFinished();
        }
        ADD_FAILURE() << "openbox did not answer: " << m_windowManager.readAllStandardError().toStdString();
    }
    static bool windowManagerAnswers() { // with the number of its desktops, once it is ready
        for (const QDeadlineTimer deadline(8'000); !deadline.hasExpired();) {
            if (std::system("timeout 1 xdotool get_num_desktops > /dev/null 2>&1") == 0) return true;
        }
        return false;
    }

    int m_count = 1;
    char m_name[7] = "orrery";
    char* m_arguments[2] = {m_name, nullptr};
    VirtualDisplay m_display;
    SessionBus m_bus; // before the application: what looks for a bus first settles its address
    QProcess m_windowManager;
    std::unique_ptr<GuardedApplication> m_application;
};

/// Leaves the screen of a failed test beside the programs.
void saveScreen(const std::string& testName) {
    const std::string path = ORRERY_BIN "/failed-" + testName + ".png";
    QGuiApplication::primaryScreen()->grabWindow(0).save(qtPath(path));
    std::cerr << "The screen: " << path << "\n";
}

/// Where a failure is told while no window is active, as it is for a moment when a sheet goes.
void setFrontWindow(std::function<QWidget*()> frontWindow) {
    static_cast<GuardedApplication*>(qApp)->setFrontWindow(std::move(frontWindow));
}

/// The desktop lives from the first test to the last: Qt's own statics must outlive the application object.
class DesktopEnvironment : public testing::Environment {
    void SetUp() override { m_desktop = std::make_unique<Desktop>(); }
    void TearDown() override { m_desktop.reset(); }
    std::unique_ptr<Desktop> m_desktop;
};
const testing::Environment* const desktopEnvironment =
    testing::AddGlobalTestEnvironment(new DesktopEnvironment); // gtest's to delete

} // namespace

void xdotool(const QStringList& arguments) {
    QProcess tool;
    tool.start("xdotool", arguments);
    EXPECT_TRUE(waitFor([&] { return tool.state() == QProcess::NotRunning; }));
    EXPECT_EQ(tool.exitCode(), 0) << tool.readAllStandardError().toStdString();
}

void clickAt(QPoint point, const QStringList& click) {
    xdotool(QStringList{"mousemove", QString::number(point.x()), QString::number(point.y())} + click);
}

void choose(QComboBox& box, int index) {
    QTest::keyClick(&box, Qt::Key_Down); // opens the list
    ASSERT_TRUE(waitFor([&] { return box.view()->isVisible(); }));
    QTest::keyClick(box.view(), Qt::Key_Home);
    for (int i = 0; i < index; ++i)
        QTest::keyClick(box.view(), Qt::Key_Down);
    QTest::keyClick(box.view(), Qt::Key_Return);
    ASSERT_TRUE(waitFor([&] { return !box.view()->isVisible(); }));
}

QStringList dragArguments(QPoint from, QPoint to, const QStringList& last) {
    constexpr int steps = 8;
    QStringList arguments;
    const auto moveTo = [&arguments](QPoint point) {
        arguments += {"mousemove", QString::number(point.x()), QString::number(point.y()), "sleep", "0.03"};
    };
    moveTo(from);
    arguments += {"mousedown", "1", "sleep", "0.05"};
    for (int i = 1; i <= steps; ++i)
        moveTo(from + (to - from) * i / steps);
    moveTo(to + QPoint(1, 0));
    moveTo(to);
    return arguments + last + QStringList{"mouseup", "1"};
}

QPoint centreOnScreen(const QWidget& widget) {
    return widget.mapToGlobal(widget.rect().center());
}

WindowTest::WindowTest() {
    std::filesystem::create_directories(files.path() + "tmp");
    ::setenv("TMPDIR", (files.path() + "tmp").c_str(), 1);
    services = std::make_unique<ApplicationServices>(std::make_unique<MemoryUserDefaults>());
    controller = std::make_unique<AppController>(*services);
    setFrontWindow([this] { return controller->frontWindow(); });
}

WindowTest::~WindowTest() {
    if (HasFailure()) saveScreen(std::string(testing::UnitTest::GetInstance()->current_test_info()->name()));
    setFrontWindow({});
    controller.reset();
    services.reset();
    ::unsetenv("TMPDIR"); // the folder goes now
}

std::string WindowTest::sampleCopy(const std::string& name) {
    for (const auto& each : std::filesystem::directory_iterator(ORRERY_SAMPLES)) {
        if (each.is_regular_file()) {
            std::filesystem::copy(each.path(), files.path(), std::filesystem::copy_options::skip_existing);
        }
    }
    return files.path() + name;
}

DocumentWindow& WindowTest::open(const std::string& nameOrPath) {
    const std::string path = nameOrPath.find('/') == std::string::npos ? sampleCopy(nameOrPath) : nameOrPath;
    DocumentWindow* window = controller->documentController().openDocument(qtPath(path));
    if (window == nullptr) throw std::runtime_error("not opened: " + path);
    activate(*window);
    return *window;
}

DocumentWindow& WindowTest::openNew() {
    DocumentWindow* window = controller->documentController().newDocument();
    activate(*window);
    return *window;
}

void WindowTest::run(DocumentWindow& window) {
    window.document().runSimulation();
    ASSERT_TRUE(waitFor([&] { return window.document().runControl().state() == RunControl::State::Idle; }, 60'000));
    ASSERT_TRUE(window.document().runControl().outcome().isWhole());
}

void WindowTest::activate(QWidget& window) {
    window.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&window, 20'000));
}

} // namespace orrery::test

// Pictures of the application in its states, for people to look at: `make screenshots`.
#include "app/DocumentFiles.h"
#include "app/Screenshot.h"
#include "app/StartPanel.h"

#include <QCheckBox>
#include <QComboBox>
#include <QMenu>
#include <QPushButton>
#include <QTimer>
#include <initializer_list>
#include <utility>

namespace orrery::test {
namespace {

class Screenshots : public WindowTest {
protected:
    DocumentWindow& openSized(const std::string& sample, QSize size = {1180, 820}) {
        DocumentWindow& window = open(sample);
        window.resize(size);
        window.move(20, 20);
        return window;
    }

    static void choose(DocumentWindow& window, const char* chooser, int role) {
        auto& box = find<QComboBox>(window, chooser);
        box.setCurrentIndex(role);
        emit box.activated(role);
    }
    static void showPlot(DocumentWindow& window, bool surfaces) {
        run(window);
        action(window, "actionShowPlot").trigger();
        choose(window, "sweepRole2", 1);
        if (surfaces) choose(window, "sweepRole0", 2);
        for (const char* response : {"responseInclude0", "responseInclude1", "responseInclude2"}) {
            find<QCheckBox>(window, response).click();
        }
    }
};

TEST_F(Screenshots, EmptySetup) {
    DocumentWindow& window = openNew();
    window.move(20, 20);
    saveScreenshot("setup-empty");
}

TEST_F(Screenshots, FilledSetup) {
    openSized("crop-two-steppers.orrery");
    saveScreenshot("setup-filled");
}

TEST_F(Screenshots, SmallWindow) {
    openSized("crop-two-steppers.orrery", {1024, 700});
    saveScreenshot("setup-1024x700");
}

TEST_F(Screenshots, Plots) {
    DocumentWindow& window = openSized("crop-two-steppers.orrery");
    action(window, "actionShowPlot").trigger();
    saveScreenshot("plot-no-results");
    showPlot(window, false);
    saveScreenshot("plot-curves");
    choose(window, "sweepRole0", 2);
    saveScreenshot("plot-surfaces");
    window.resize(1024, 700);
    saveScreenshot("plot-1024x700");
}

/// The picture of the README: the window alone.
TEST_F(Screenshots, Documentation) {
    DocumentWindow& window = openSized("crop-two-steppers.orrery", {1100, 760});
    MyDocument& document = window.document();
    run(window);
    action(window, "actionShowPlot").trigger();
    document.independentVariables()[2].setConstant(258);
    for (ResponseVariable& response : document.dependentVariables()) {
        const std::string& name = response.name();
        response.setValue("includep", name.ends_with("biomass") || name.ends_with("grain"));
    }
    choose(window, "sweepRole0", 1);
    choose(window, "sweepRole1", 2);
    document.setYRotation(30);
    document.setLightHeight(2);
    document.outlets().dependentVariableSettings->reloadData();
    saveScreenshot("screen-documentation");
    window.grab().save(qtPath(screenshotFolder() + "/window-plot.png"));
}

TEST_F(Screenshots, UnsavedRunAlert) {
    DocumentWindow& window = openSized("crop-two-steppers.orrery");
    window.document().editText(setup_key::runLength, "90");
    QTimer::singleShot(0, [] {
        saveScreenshot("alert-unsaved");
        QTest::keyClick(QApplication::activeModalWidget(), Qt::Key_Escape);
    });
    window.document().runSimulation();
}

TEST_F(Screenshots, Running) {
    DocumentWindow& window = openSized("crop-two-steppers.orrery");
    window.document().editEntry(PortList::Steppers, 0, "step", "0.0005");
    window.document().saveToFile(*window.document().filePath());
    window.document().runSimulation();
    QTest::qWait(2500); // for some lines of the engine
    saveScreenshot("running");
    window.document().abortSimulation();
    saveScreenshot("aborted");
}

TEST_F(Screenshots, StatesOfARun) {
    DocumentWindow& window = openSized("crop-one-stepper.orrery");
    MyDocument& document = window.document();
    action(window, "actionShowPlot").trigger();
    document.runSimulation();
    document.editText(setup_key::runLength, "50");
    ASSERT_TRUE(waitFor([&] { return document.runControl().state() == RunControl::State::Idle; }, 60'000));
    saveScreenshot("run-other-grid");
    document.readByOtherGrid();
    saveScreenshot("run-grid-that-ran");
}

TEST_F(Screenshots, ImportFailure) {
    DocumentWindow& window = openSized("crop-two-steppers.orrery");
    window.document().useModel(files.write("broken.xml", "<?xml version='1.0'?>\n<database>\n<object type='KSLEVEL'"));
    saveScreenshot("sheet-import-failure");
}

TEST_F(Screenshots, CompanionSheet) {
    DocumentWindow& window = openSized("crop-two-steppers.orrery");
    window.document().saveToDorado();
    saveScreenshot("sheet-dorado");
}

QPalette darkPalette() {
    QPalette dark(QColor(0x35, 0x35, 0x35), QColor(0x2b, 0x2b, 0x2b));
    dark.setColor(QPalette::Highlight, QColor(0x2a, 0x82, 0xda));
    return dark;
}

TEST_F(Screenshots, StartPanel) {
    for (const bool isDark : {false, true}) {
        const QPalette light = QApplication::palette();
        if (isDark) QApplication::setPalette(darkPalette());
        controller->documentController().recentDocuments().note(sampleCopy("crop-single.orrery"));
        controller->showStartPanelWhenEmpty();
        activate(controller->startPanel());
        saveScreenshot(isDark ? "dark-start-panel" : "start-panel");
        auto& file = find<QMenu>(controller->startPanel(), "menuFile");
        file.popup(controller->startPanel().mapToGlobal(QPoint(8, 24)));
        saveScreenshot(isDark ? "dark-start-menu" : "start-menu");
        file.close();
        QApplication::setPalette(light);
    }
}

TEST_F(Screenshots, CloseQuestionAndSavePanel) {
    DocumentWindow& window = openSized("crop-two-steppers.orrery");
    window.document().editText(setup_key::runLength, "90");
    window.close();
    saveScreenshot("sheet-close");
    QTest::keyClick(QApplication::activeWindow(), Qt::Key_Escape);
    window.files().saveAs([](bool) {});
    saveScreenshot("panel-save-as");
}

TEST_F(Screenshots, PanelsOfTheApplication) {
    DocumentWindow& window = openSized("crop-two-steppers.orrery");
    const std::initializer_list<std::pair<const char*, const char*>> panels = {{"actionPreferences", "preferences"},
                                                                               {"actionAbout", "about"},
                                                                               {"actionReleaseNotes", "release-notes"},
                                                                               {"actionHelp", "help"}};
    for (const auto& [item, name] : panels) {
        action(window, item).trigger();
        ASSERT_TRUE(waitFor([&] { return QApplication::activeWindow() != &window; }));
        saveScreenshot(name);
        QApplication::activeWindow()->close();
        activate(window);
    }
}

TEST_F(Screenshots, Dark) {
    const QPalette light = QApplication::palette();
    QApplication::setPalette(darkPalette());
    DocumentWindow& window = openSized("crop-two-steppers.orrery");
    saveScreenshot("dark-setup");
    showPlot(window, true);
    saveScreenshot("dark-plot");
    QApplication::setPalette(light);
}

} // namespace
} // namespace orrery::test

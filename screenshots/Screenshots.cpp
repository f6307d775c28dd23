// Pictures of the application in its states, for people to look at: `make screenshots`.
#include "app/SetupWindow.h"
#include "app/StartPanel.h"
#include "app/document/DocumentFiles.h"

#include <QCheckBox>
#include <QDialog>
#include <QMenu>
#include <QPixmap>
#include <QScreen>
#include <QTimer>
#include <cstdlib>
#include <filesystem>

namespace orrery::test {
namespace {

constexpr auto crop = "crop-two-steppers.orrery";

std::string pathOf(const std::string& name) {
    const char* wanted = std::getenv("ORRERY_SCREENSHOTS");
    const std::string folder = wanted != nullptr ? wanted : ORRERY_BIN "/../screenshots";
    std::filesystem::create_directories(folder);
    return folder + "/" + name + ".png";
}

/// Saves the whole screen under the name in the folder for pictures.
void save(const std::string& name) {
    QTest::qWait(250); // styles fade focus rings and hovers in
    ASSERT_TRUE(QGuiApplication::primaryScreen()->grabWindow(0).save(qtPath(pathOf(name))));
}

class Screenshots : public SetupWindowTest {
protected:
    MyDocument& openSized(const std::string& sample, QSize size = {1180, 820}) {
        window = &open(sample);
        window->resize(size);
        window->move(20, 20);
        return window->document();
    }
    void chooseAxis(const char* chooser, int axis) {
        auto& box = find<QComboBox>(*window, chooser);
        box.setCurrentIndex(axis);
        emit box.activated(axis);
    }
    void showCurves() {
        run(*window);
        action(*window, "actionShowPlot").trigger();
        chooseAxis("sweepRole2", 1);
        for (const char* response : {"responseInclude0", "responseInclude1", "responseInclude2"})
            find<QCheckBox>(*window, response).click();
    }
    /// The screen while a port or a row is above its goal.
    void saveDrag(const std::string& name, QPoint from, QPoint to) {
        QTimer::singleShot(1000, window, [name] { save(name); });
        xdotool(dragArguments(from, to, {"sleep", "1.5", "key", "Escape", "sleep", "0.1"}));
    }
};

TEST_F(Screenshots, Setups) {
    openNew().move(20, 20);
    save("setup-empty");
    openSized(crop);
    save("setup-filled");
    window->resize(1024, 700);
    save("setup-1024x700");
    window->document().setup().chooseModel(
        files.write("broken.xml", "<?xml version='1.0'?>\n<database>\n<object type='KSLEVEL'"));
    save("sheet-import-failure");
}

TEST_F(Screenshots, WorkOnASetup) {
    openSample("insect-two-steppers.orrery");
    PortTableView& steppers = table("stepperTable");
    saveDrag("drag-onto-empty-table", nodePoint("Weather/outputs/mean temperature"), rowPoint(table("outputTable"), 0));
    saveDrag("drag-onto-row", nodePoint("Moth/Eggs/inputs/delay"), rowPoint(steppers, 0));
    saveDrag("drag-between-rows", rowPoint(steppers, 0), rowPoint(steppers, 1, 0.9));
    steppers.setFocus();
    steppers.setCurrentIndex(steppers.model()->index(0, 2));
    xdotool({"key", "Return", "type", "12abc"});
    xdotool({"key", "Return"});
    save("cell-refused");
    clickAt(nodePoint("Moth/Eggs/inputs/delay"), {"sleep", "1.5"});
    save("node-tooltip");
    window->document().setup().editEntry(PortList::Steppers, 0, "portPath", "/Orchard/Weather/heigth");
    window->document().setup().editEntry(PortList::Steppers, 1, "step", "0");
    field("modelFilter").setText("eggs");
    save("setup-faults");
    outline().setCurrentIndex(showNode("Moth/Egg laying/inputs/eggs per degree day"));
    auto& menu = find<QMenu>(*window, "menuSetup");
    menu.popup(window->mapToGlobal(QPoint(130, 30)));
    save("setup-menu");
    menu.close();
}

TEST_F(Screenshots, Plots) {
    openSized(crop);
    action(*window, "actionShowPlot").trigger();
    save("plot-no-results");
    showCurves();
    save("plot-curves");
    chooseAxis("sweepRole0", 2);
    save("plot-surfaces");
    window->resize(1024, 700);
    save("plot-1024x700");
}

/// The picture of the README: the window alone.
TEST_F(Screenshots, Documentation) {
    MyDocument& document = openSized(crop, {1100, 760});
    run(*window);
    action(*window, "actionShowPlot").trigger();
    document.independentVariables()[2].setConstant(258);
    for (ResponseVariable& response : document.dependentVariables()) {
        const std::string& name = response.name();
        response.setValue("includep", name.ends_with("biomass") || name.ends_with("grain"));
    }
    chooseAxis("sweepRole0", 1);
    chooseAxis("sweepRole1", 2);
    document.setYRotation(30);
    document.setLightHeight(2);
    document.outlets().dependentVariableSettings->reloadData();
    save("screen-documentation");
    window->grab().save(qtPath(pathOf("window-plot")));
}

TEST_F(Screenshots, Runs) {
    MyDocument& document = openSized("crop-one-stepper.orrery");
    action(*window, "actionShowPlot").trigger();
    document.runSimulation();
    document.setup().editText(setup_key::runLength, "50");
    ASSERT_TRUE(waitFor([&] { return document.runControl().state() == RunControl::State::Idle; }, 60'000));
    save("run-other-grid");
    document.readByOtherGrid();
    save("run-grid-that-ran");
    QTimer::singleShot(0, [] {
        save("alert-unsaved");
        QTest::keyClick(QApplication::activeModalWidget(), Qt::Key_Escape);
    });
    document.runSimulation();
    document.setup().editEntry(PortList::Steppers, 0, "step", "0.00001");
    document.saveToFile(*document.file().path());
    document.runSimulation();
    QTest::qWait(2500); // for some lines of the engine
    save("running");
    document.abortSimulation();
    save("aborted");
}

TEST_F(Screenshots, KeptRuns) {
    services->setStoreDirectory(files.path() + "runs");
    MyDocument& document = openSized("crop-two-steppers.orrery");
    run(*window);
    document.setup().editText(setup_key::runLength, "20");
    document.saveToFile(*document.file().path());
    run(*window);
    action(*window, "actionShowRuns").trigger();
    auto& runs = find<QDialog>(*window, "runsPanel");
    activate(runs);
    save("runs");
    runs.close();
    controller->preferences();
    save("preferences-keeping");
}

TEST_F(Screenshots, StartPanel) {
    controller->documentController().recentDocuments().note(sampleCopy("crop-single.orrery"));
    controller->showStartPanelWhenEmpty();
    activate(controller->startPanel());
    save("start-panel");
    auto& file = find<QMenu>(controller->startPanel(), "menuFile");
    file.popup(controller->startPanel().mapToGlobal(QPoint(8, 24)));
    save("start-menu");
    file.close();
}

TEST_F(Screenshots, SheetsAndPanels) {
    openSized(crop).saveToDorado();
    save("sheet-dorado");
    openSized("crop-single.orrery").setup().editText(setup_key::runLength, "90");
    window->close();
    save("sheet-close");
    QTest::keyClick(QApplication::activeWindow(), Qt::Key_Escape);
    window->files().saveAs([](bool) {});
    save("panel-save-as");
    openSized("insect-single.orrery");
    for (const char* panel : {"Preferences", "About", "ReleaseNotes", "Help"}) {
        action(*window, (std::string("action") + panel).c_str()).trigger();
        ASSERT_TRUE(waitFor([&] { return QApplication::activeWindow() != window; }));
        save(panel);
        QApplication::activeWindow()->close();
        activate(*window);
    }
}

TEST_F(Screenshots, Dark) {
    const QPalette light = QApplication::palette();
    QPalette dark(QColor(0x35, 0x35, 0x35), QColor(0x2b, 0x2b, 0x2b));
    dark.setColor(QPalette::Highlight, QColor(0x2a, 0x82, 0xda));
    QApplication::setPalette(dark);
    controller->showStartPanelWhenEmpty();
    save("dark-start-panel");
    openSized(crop);
    save("dark-setup");
    showCurves();
    chooseAxis("sweepRole0", 2);
    save("dark-plot");
    QApplication::setPalette(light);
}

} // namespace
} // namespace orrery::test

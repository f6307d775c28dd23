// The plot tab: controls, picture and document agree, whoever changes what.
#include "app/ShellTest.h"
#include "app/setup/PortTableView.h"
#include "platform/qt/QtGlSurface.h"
#include "run/IndexSet.h"
#include "run/SweepVariables.h"

#include <gmock/gmock.h>

#include <QCheckBox>
#include <QClipboard>
#include <QColorDialog>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QLabel>
#include <QOpenGLContext>
#include <QOpenGLFunctions>
#include <QProgressBar>
#include <QScreen>
#include <QScrollArea>
#include <QSlider>
#include <QTabWidget>
#include <QToolButton>
#include <QToolTip>
#include <cmath>

namespace orrery::test {
namespace {

constexpr auto oneStepper = "crop-one-stepper.orrery"; // rows: 0 irrigation, 1 day
constexpr auto twoSteppers = "crop-two-steppers.orrery";

class PlotTabTest : public ShellTest {
protected:
    /// The sample's window with its plot tab in front, and run.
    DocumentWindow& openPlot(const char* sample) {
        DocumentWindow& window = open(sample);
        action(window, "actionShowPlot").trigger();
        run(window);
        return window;
    }
    static QComboBox& role(const QWidget& window, int row) {
        return find<QComboBox>(window, ("sweepRole" + std::to_string(row)).c_str());
    }
    static QSlider& heldSlider(const QWidget& window, int row) {
        return find<QSlider>(window, ("sweepHeldSlider" + std::to_string(row)).c_str());
    }
    static QLineEdit& heldField(const QWidget& window, int row) {
        return find<QLineEdit>(window, ("sweepHeldField" + std::to_string(row)).c_str());
    }
    static void type(QLineEdit& field, const char* text) {
        field.selectAll();
        QTest::keyClicks(&field, text);
        QTest::keyClick(&field, Qt::Key_Return);
    }
    static void include(const QWidget& window, int row) {
        QTest::mouseClick(&find<QCheckBox>(window, ("responseInclude" + std::to_string(row)).c_str()), Qt::LeftButton);
    }
    static QtGlSurface& view(const QWidget& window) { return find<QtGlSurface>(window, "glView"); }
    /// What the screen itself shows of the plot.
    static QImage shown(const QWidget& window) {
        const QWidget& area = view(window);
        const QPoint corner = area.mapToGlobal(QPoint(0, 0));
        return area.screen()->grabWindow(0, corner.x(), corner.y(), area.width(), area.height()).toImage();
    }
    static bool becomesDifferent(const QWidget& window, const QImage& earlier) {
        return waitFor([&] { return shown(window) != earlier; });
    }
    /// Whether the screen comes to show the colour in the plot, and the highest row that has it.
    static int topOf(const QWidget& window, QColor color) {
        int top = -1;
        (void)waitFor([&] {
            const QImage image = shown(window);
            for (int y = 0; y < image.height(); ++y) {
                for (int x = 0; x < image.width(); ++x) {
                    if (image.pixelColor(x, y) == color) return (top = y, true);
                }
            }
            return false;
        });
        return top;
    }
    static QString notice(const QWidget& window) { return find<QLabel>(window, "plotNotice").text(); }
};

TEST_F(PlotTabTest, AxesAndResponsesChosenAtTheControlsAppearOnTheScreen) {
    DocumentWindow& window = open(twoSteppers);
    action(window, "actionShowPlot").trigger();
    EXPECT_EQ(notice(window), "Run the setup to see its results here.");
    run(window);
    EXPECT_FALSE(find<QLabel>(window, "noSweepVariables").isVisible());
    EXPECT_EQ(notice(window), "Choose an axis and a response to see a plot.");
    QApplication::sendPostedEvents(); // the rows find their places
    const QImage nothing = shown(window);
    clickAt(centreOnScreen(find<QCheckBox>(window, "responseInclude0")));
    ASSERT_TRUE(waitFor([&] { return window.document().dependentVariables()[0].includep(); }));
    choose(role(window, 2), 1);
    ASSERT_TRUE(becomesDifferent(window, nothing));
    EXPECT_TRUE(find<QWidget>(window, "plotNoticeRow").isHidden());
    const QImage curves = shown(window);
    choose(role(window, 0), 2);
    ASSERT_TRUE(becomesDifferent(window, curves));
    EXPECT_EQ(window.document().plot().layout().dimensions, 3U);
    EXPECT_FALSE(heldSlider(window, 2).isEnabled() || heldField(window, 2).isEnabled());
    choose(role(window, 1), 1); // which one variable has at a time
    EXPECT_EQ(role(window, 2).currentText(), "Held at");
    EXPECT_TRUE(heldSlider(window, 2).isEnabled() && heldField(window, 2).isEnabled());
    EXPECT_FALSE(heldSlider(window, 1).isEnabled() || heldField(window, 1).isEnabled());
}

TEST_F(PlotTabTest, TheHeldValueIsTheOneThatIsDrawnAndWhatIsNoNumberIsRefusedWithTheReason) {
    DocumentWindow& window = openPlot(oneStepper);
    const IndependentVariable& irrigation = window.document().independentVariables()[0];
    QSlider& slider = heldSlider(window, 0);
    QLineEdit& field = heldField(window, 0);
    ASSERT_EQ(slider.maximum() + 1, static_cast<int>(irrigation.stridesPerCycle()));
    for (int i = 0; i <= slider.maximum(); ++i) {
        slider.setValue(i);
        EXPECT_EQ(heldIndex(irrigation), static_cast<std::uint32_t>(i));
        const QString text = field.text();
        slider.setValue(i == 0 ? 1 : 0);
        type(field, text.toUtf8().constData());
        EXPECT_EQ(heldIndex(irrigation), static_cast<std::uint32_t>(i)) << "typed " << text.toStdString();
        EXPECT_EQ(slider.value(), i);
    }
    type(field, " 0.27 ");
    EXPECT_EQ(irrigation.constant(), 0.27F);
    EXPECT_EQ(field.text(), "0.27");
    EXPECT_EQ(slider.value(), static_cast<int>(heldIndex(irrigation)));

    const std::pair<const char*, const char*> cases[] = {
        {"0,5", "“0,5” is not a number. Write 0.5, with a decimal point."},
        {"0.27 mm", "“0.27 mm” is not a number."},
        {"1e99", "“1e99” is too large a number."},
        {" ", "There is no number."},
    };
    for (QLineEdit* each : {&field, &find<QLineEdit>(window, "responseScale0")}) {
        const QString before = each->text();
        for (const auto& [typed, reason] : cases) {
            type(*each, typed);
            EXPECT_TRUE(waitFor([reason = QString(reason)] { return QToolTip::text() == reason; })) << typed;
            EXPECT_EQ(each->text(), before);
        }
    }
    EXPECT_EQ(window.document().dependentVariables()[0].scale(), 1);
    EXPECT_EQ(irrigation.constant(), 0.27F);
}

TEST_F(PlotTabTest, ScaleAndColourChangeTheCurveAndCopiesFollow) {
    DocumentWindow& window = openPlot(oneStepper);
    auto responses = window.document().dependentVariables();
    responses.push_back(responses[0]); // as for a label that stands twice
    const std::vector<float> alongTheTop(window.document().nRowsOfData() * responses.size(), 1.0F);
    window.document().setSimulationData(CellBlock(alongTheTop));
    window.document().setYMax(std::vector<float>(responses.size(), 1.0F));
    const auto last = std::to_string(responses.size() - 1);
    window.document().setDependentVariables(std::move(responses));
    choose(role(window, 1), 1);
    include(window, 0);
    EXPECT_TRUE(find<QCheckBox>(window, ("responseInclude" + last).c_str()).isChecked());
    const int top = topOf(window, QColor(255, 0, 0));
    ASSERT_GE(top, 0);
    type(find<QLineEdit>(window, "responseScale0"), "0.5");
    EXPECT_EQ(find<QLineEdit>(window, ("responseScale" + last).c_str()).text(), "0.5");
    ASSERT_TRUE(waitFor([&] { return topOf(window, QColor(255, 0, 0)) > top + 20; }));
    QTest::mouseClick(&find<QToolButton>(window, "responseColor0"), Qt::LeftButton);
    auto& dialog = find<QColorDialog>(window, "colorDialog");
    dialog.setCurrentColor(QColor(255, 255, 0));
    dialog.accept();
    EXPECT_GE(topOf(window, QColor(255, 255, 0)), 0);
    EXPECT_TRUE(find<QToolButton>(window, ("responseColor" + last).c_str()).accessibleName().endsWith("#ffff00"));
}

TEST_F(PlotTabTest, WhatIsUndoneComesToViewFromAnotherTab) {
    DocumentWindow& window = openPlot(oneStepper);
    MyDocument& document = window.document();
    const auto& tabs = find<QTabWidget>(window, "tabView");
    document.setup().editEntry(PortList::Steppers, 0, "stop", "0.4");
    xdotool({"key", "ctrl+z"});
    ASSERT_TRUE(waitFor([&] { return tabs.currentIndex() == 0; }));
    auto& steppers = find<PortTableView>(window, "stepperTable");
    EXPECT_TRUE(steppers.hasFocus());
    EXPECT_EQ(steppers.currentIndex(), steppers.model()->index(0, 3));
    EXPECT_FALSE(document.setup().hasUnsavedChanges());

    action(window, "actionShowPlot").trigger();
    auto& scale = find<QLineEdit>(window, "responseScale1");
    type(scale, "2");
    xdotool(dragArguments(centreOnScreen(view(window)), centreOnScreen(view(window)) + QPoint(-60, 40)));
    ASSERT_TRUE(waitFor([&] { return document.yRotation() == -30 && document.eyeYPos() > 1.3F; }));
    action(window, "actionShowSetup").trigger();
    EXPECT_EQ(action(window, "actionUndo").text(), "&Undo Change Camera");
    xdotool({"key", "ctrl+z"});
    ASSERT_TRUE(waitFor([&] { return tabs.currentIndex() == 1; }));
    EXPECT_EQ(document.yRotation(), 0) << "all of the drag";
    EXPECT_EQ(document.eyeYPos(), 1);
    EXPECT_TRUE(view(window).hasFocus());
    action(window, "actionShowSetup").trigger();
    xdotool({"key", "ctrl+z"});
    ASSERT_TRUE(waitFor([&] { return scale.hasFocus(); }));
    EXPECT_EQ(scale.text(), "1");
    EXPECT_TRUE(waitFor([&] { return !scale.visibleRegion().isEmpty(); }));
    xdotool({"key", "ctrl+shift+z"}); // the field lets it through
    ASSERT_TRUE(waitFor([&] { return scale.text() == "2"; }));
    EXPECT_FALSE(document.setup().hasUnsavedChanges());
}

TEST_F(PlotTabTest, EachTimeThatAControlIsHeldIsOneStep) {
    DocumentWindow& window = openPlot(oneStepper);
    MyDocument& document = window.document();
    auto& light = find<QSlider>(window, "lightHeight");
    auto& height = find<QDoubleSpinBox>(window, "eyeYPos");
    find<QScrollArea>(window, "plotControls").ensureWidgetVisible(&height);
    find<QScrollArea>(window, "plotControls").ensureWidgetVisible(&light);
    QApplication::sendPostedEvents();
    const QPoint middle = centreOnScreen(light);
    xdotool(dragArguments(middle - QPoint(30, 0), middle + QPoint(30, 0)));
    ASSERT_TRUE(waitFor([&] { return !light.isSliderDown() && document.setup().canUndo(); }));
    height.setFocus();
    xdotool({"keydown", "Up", "sleep", "1"});
    ASSERT_TRUE(waitFor([&] { return document.eyeYPos() > 1; }));
    for (const auto type : {QEvent::KeyRelease, QEvent::KeyPress}) { // a repetition that Qt read in two halves
        QKeyEvent half(type, Qt::Key_Up, Qt::NoModifier);
        half.setTimestamp(1);
        QApplication::sendEvent(&height, &half);
    }
    xdotool({"keyup", "Up"});
    QGuiApplication::sync(); // all that the display has sent
    const float held = document.eyeYPos();
    xdotool({"key", "Up"});
    ASSERT_TRUE(waitFor([&] { return document.eyeYPos() > held; }));
    const float raised = document.eyeYPos();
    xdotool({"key", "ctrl+z"});
    ASSERT_TRUE(waitFor([&] { return document.eyeYPos() < raised; }));
    EXPECT_EQ(document.eyeYPos(), held);
    xdotool({"key", "ctrl+z"});
    ASSERT_TRUE(waitFor([&] { return document.eyeYPos() == 1; })) << "all of the held key";
    xdotool({"key", "ctrl+z"});
    ASSERT_TRUE(waitFor([&] { return document.lightHeight() == 1; }));
    EXPECT_FALSE(document.setup().canUndo());
    QTest::keyClick(&view(window), Qt::Key_Plus);
    QTest::keyClick(&view(window), Qt::Key_0);
    document.setup().undo();
    EXPECT_EQ(document.eyeZPos(), 3.75F) << "the reset is a step of its own";
}

TEST_F(PlotTabTest, MouseWheelAndKeysMoveTheCameraAndControlsSetTheDocumentOnce) {
    DocumentWindow& window = openPlot(oneStepper);
    MyDocument& document = window.document();
    const QPoint middle = centreOnScreen(view(window));
    auto& rotation = find<QSlider>(window, "yRotationSlider");
    auto& height = find<QDoubleSpinBox>(window, "eyeYPos");
    auto& depth = find<QDoubleSpinBox>(window, "eyeZPos");
    xdotool(dragArguments(middle, middle + QPoint(-60, 40)));
    ASSERT_TRUE(waitFor([&] { return document.yRotation() == -30 && document.eyeYPos() > 1.3F; }));
    EXPECT_EQ(rotation.value(), 330) << "to the left of 0 the slider goes on from its end";
    EXPECT_NEAR(height.value(), static_cast<double>(document.eyeYPos()), 0.005);
    rotation.setValue(340);
    EXPECT_EQ(document.yRotation(), -20) << "the slider goes on where the mouse left";
    xdotool({"click", "4", "click", "4"});
    ASSERT_TRUE(waitFor([&] { return document.eyeZPos() == 3.5F; }));
    EXPECT_EQ(depth.value(), 3.5);
    for (int i = 0; i < 100; ++i)
        QTest::keyClick(&view(window), Qt::Key_Minus);
    EXPECT_LE(document.eyeZPos(), 10) << "out of sight";
    depth.setValue(20); // typed beyond what the wheel reaches
    QTest::keyClick(&view(window), Qt::Key_Minus);
    EXPECT_EQ(document.eyeZPos(), 20);
    QTest::keyClick(&view(window), Qt::Key_Plus);
    EXPECT_LT(document.eyeZPos(), 20);
    QTest::mouseDClick(&view(window), Qt::LeftButton);
    EXPECT_EQ(depth.value(), 4);
    EXPECT_EQ(height.value(), 1);
    EXPECT_EQ(find<QDoubleSpinBox>(window, "eyeZDir").value(), -10);

    auto& light = find<QSlider>(window, "lightHeight");
    light.setValue(light.maximum());
    EXPECT_EQ(document.lightHeight(), 20);
    light.setValue(light.minimum());
    EXPECT_EQ(document.lightHeight(), -5);
    document.setLightHeight(2.51F); // between two of the slider's places
    EXPECT_EQ(document.lightHeight(), 2.51F) << "the slider follows and rounds nothing";
    document.setEyeXPos(0.123F);
    EXPECT_EQ(document.eyeXPos(), 0.123F);
    action(window, "actionResetCamera").trigger();
    EXPECT_EQ(light.value(), 20);
}

TEST_F(PlotTabTest, TheAnimationMovesTheSliderThroughItsEndAndItsButtonFollows) {
    DocumentWindow& window = openPlot(oneStepper);
    auto& rotation = find<QSlider>(window, "yRotationSlider");
    rotation.setValue(358);
    QTest::mouseClick(&find<QPushButton>(window, "animate"), Qt::LeftButton);
    EXPECT_TRUE(action(window, "actionAnimate").isChecked());
    ASSERT_TRUE(waitFor([&] { return rotation.value() > 2 && rotation.value() < 90; })) << "around the end";
    action(window, "actionAnimate").trigger();
    EXPECT_FALSE(find<QPushButton>(window, "animate").isChecked());
}

TEST_F(PlotTabTest, AWindowClosedInTheMiddleOfATurnLeavesNothingBehind) {
    DocumentWindow& window = openPlot(oneStepper);
    const QPointer<QWidget> surface = &view(window);
    const QPointer<QWidget> gone = &window;
    include(window, 0);
    choose(role(window, 1), 1);
    heldField(window, 0).setFocus();
    QTest::keyClicks(&heldField(window, 0), "7"); // an edit that ends with the window
    QTest::mouseClick(&find<QPushButton>(window, "animate"), Qt::LeftButton);
    delete gone.data();
    EXPECT_TRUE(surface.isNull());
    int ticks = 0;
    const auto timer = services->runLoop().repeat(std::chrono::milliseconds(17), [&ticks] { ++ticks; });
    ASSERT_TRUE(waitFor([&] { return ticks > 15; })); // a timer that was left would call a document that is gone
    EXPECT_TRUE(controller->documentController().windows().empty());
}

TEST_F(PlotTabTest, TheStateSpeaksAndAnotherGridThanTheOneThatRanIsTold) {
    DocumentWindow& window = open(oneStepper);
    action(window, "actionShowPlot").trigger();
    MyDocument& document = window.document();
    const auto& state = find<QLabel>(window, "runState");
    const auto& tabs = find<QTabWidget>(window, "tabView");
    auto& otherGrid = find<QPushButton>(window, "plotOtherGrid");
    EXPECT_EQ(state.text(), "");
    document.runSimulation();
    EXPECT_EQ(state.text(), "Running");
    document.setup().editText(setup_key::runLength, "50");
    ASSERT_TRUE(waitFor([&] { return document.runControl().state() == RunControl::State::Idle; }, 60'000));
    EXPECT_TRUE(state.text().startsWith("Done: ")) << state.text().toStdString();
    EXPECT_EQ(tabs.tabToolTip(1), state.text());
    EXPECT_FALSE(tabs.tabIcon(1).isNull());
    EXPECT_TRUE(notice(window).contains("has another grid")) << notice(window).toStdString();
    const std::uint32_t rows = document.nRowsOfData();
    QTest::mouseClick(&otherGrid, Qt::LeftButton);
    EXPECT_GT(document.nRowsOfData(), rows);
    EXPECT_TRUE(notice(window).contains("by the grid of the setup that ran")) << notice(window).toStdString();
    EXPECT_TRUE(otherGrid.isVisible());

    document.setup().editEntry(PortList::Steppers, 0, "step",
                               "0.00001"); // millions of rows: never at its end by itself
    document.saveToFile(*document.file().path());
    const auto& button = find<QPushButton>(window, "startStopButton");
    const auto& wheel = find<QProgressBar>(window, "progressWheel");
    clickAt(centreOnScreen(button));
    ASSERT_TRUE(waitFor([&] { return wheel.isVisible() && button.isChecked(); }));
    EXPECT_FALSE(otherGrid.isVisible());
    clickAt(centreOnScreen(button));
    EXPECT_TRUE(waitFor([&] { return state.text() == "Aborted"; })) << state.text().toStdString();
    EXPECT_TRUE(document.independentVariables().empty());
    EXPECT_FALSE(button.isChecked() || wheel.isVisible());
}

TEST_F(PlotTabTest, ANewRunKeepsTheChoicesAndSaysWhatThePlotShows) {
    DocumentWindow& window = openPlot(oneStepper);
    include(window, 1);
    choose(role(window, 1), 1);
    const QPointer<QComboBox> kept = &role(window, 1);
    kept->setFocus();
    window.document().runSimulation();
    ASSERT_TRUE(waitFor([&] { return window.document().independentVariables().empty(); }));
    EXPECT_EQ(notice(window), "The results come when the run has ended.");
    EXPECT_TRUE(find<QLabel>(window, "noSweepVariables").isVisible());
    ASSERT_TRUE(waitFor([&] { return window.document().runControl().state() == RunControl::State::Idle; }));
    EXPECT_EQ(notice(window), "The plot shows an earlier run.");
    EXPECT_EQ(role(window, 1).currentText(), "Axis 1");
    EXPECT_TRUE(find<QCheckBox>(window, "responseInclude1").isChecked());
    QTest::mouseClick(&find<QPushButton>(window, "plotNewResults"), Qt::LeftButton);
    EXPECT_TRUE(find<QWidget>(window, "plotNoticeRow").isHidden());
    EXPECT_FALSE(window.document().plot().isOutdated());
}

TEST_F(PlotTabTest, APlotBeyondTheMemoryIsToldAndLeavesThePlotEmpty) {
    DocumentWindow& window = openPlot(twoSteppers);
    choose(role(window, 2), 1);
    for (const std::size_t row : {0U, 2U})
        window.document().independentVariables()[row].setStridesPerCycle(3000);
    std::vector<ResponseVariable> many(300);
    for (ResponseVariable& response : many)
        response.setValue("includep", true);
    window.document().setDependentVariables(many);
    choose(role(window, 0), 2);
    answer(window, "The plot could not be drawn.", "OK");
    EXPECT_THAT(notice(window).toStdString(), testing::MatchesRegex("The plot, 300 responses of .* but .* GB.*\\."));
    many.resize(1);
    window.document().setDependentVariables(many);
    choose(role(window, 0), 0);
    EXPECT_EQ(notice(window), "");
    ASSERT_TRUE(view(window).makeCurrent());
    QOpenGLContext::currentContext()->functions()->glEnable(0xffff);
    window.document().outlets().glView->setNeedsDisplay();
    EXPECT_TRUE(waitFor([&] { return notice(window) == "OpenGL could not draw the plot: invalid enumerant."; }));
}

TEST_F(PlotTabTest, VariablesOfOneOrNoValueAndManyResponsesHaveTheirRows) {
    DocumentWindow& window = openPlot(oneStepper);
    std::vector<IndependentVariable> variables(5);
    variables[1].setStridesPerCycle(1);
    variables[1].setStep(1);
    std::vector<ResponseVariable> responses;
    responses.reserve(300);
    for (int i = 0; i < 300; ++i)
        responses.emplace_back("Part/response" + std::to_string(i), std::to_string(i));
    window.document().setSimulationData({});
    window.document().setDependentVariables(responses);
    window.document().setIndependentVariables(variables);
    EXPECT_EQ(heldSlider(window, 0).maximum(), 0);
    EXPECT_EQ(heldField(window, 1).text(), "0");
    for (int row = 0; row < 5; ++row)
        choose(role(window, row), 1);
    auto& filter = find<QLineEdit>(window, "responseFilter");
    ASSERT_TRUE(filter.isVisible());
    filter.setText("response29");
    QTest::mouseClick(&find<QToolButton>(window, "responsesAll"), Qt::LeftButton);
    EXPECT_EQ(std::ranges::count_if(responses, &ResponseVariable::includep), 11) << "29 and 290 to 299";
    window.document().setDependentVariables({});
    EXPECT_EQ(window.findChild<QCheckBox*>("responseInclude299")->isVisible(), false);
}

TEST_F(PlotTabTest, ThePictureIsCopiedAndSavedWhole) {
    DocumentWindow& window = openPlot(oneStepper);
    include(window, 0);
    choose(role(window, 1), 1);
    QApplication::sendPostedEvents(); // the picture takes the notice's place
    const auto picture = [&] { return view(window).grabFramebuffer().convertToFormat(QImage::Format_RGB32); };
    action(window, "actionCopyPicture").trigger();
    EXPECT_EQ(QGuiApplication::clipboard()->image().convertToFormat(QImage::Format_RGB32), picture());
    action(window, "actionSavePicture").trigger();
    chooseFile(window, "savePicturePanel", files.path() + "curve");
    const QImage saved(QString::fromStdString(files.path() + "curve.png"));
    EXPECT_EQ(saved.convertToFormat(QImage::Format_RGB32), picture());
}

} // namespace
} // namespace orrery::test

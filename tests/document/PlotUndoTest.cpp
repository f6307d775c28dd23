// What is chosen on the plot tab is taken back by the history of the setup's edits, and marks nothing edited.
#include "document/DocumentFixture.h"

namespace orrery::test {
namespace {

class PlotUndoTest : public ResultsTest {
protected:
    PlotUndoTest() {
        document.setup().observers().showEdit = [this](const EditPlace& place) { shown = place; };
    }
    void axis(std::size_t row, std::uint32_t role) {
        document.plot().change({PlotAct::ChooseAxis, row}, [&] {
            document.independentVariables()[row].setFunction(static_cast<PlotRole>(role));
            document.updatePlot({SettingsTag::RoleChooser, row});
        });
    }
    void include(std::size_t row) {
        document.plot().change({PlotAct::ChooseResponses}, [&] {
            document.dependentVariables()[row].setValue("includep", true);
            document.updateScale();
        });
    }
    void light(float height) {
        document.plot().change({PlotAct::MoveLight}, [&] { document.setLightHeight(height); });
    }
    EditPlace shown;
};

TEST_F(PlotUndoTest, EveryChoiceIsTakenBackAndMadeAgainAndNoEdit) {
    struct Case {
        PlotControl control;
        const char* name;
        std::function<void(MyDocument&)> choose;
    };
    const std::vector<Case> cases{
        {{PlotAct::ChooseAxis},
         "Change Axis",
         [](auto& d) { d.independentVariables()[0].setFunction(PlotRole::Axis2); }},
        {{PlotAct::TypeHeldValue}, "Change Held Value", [](auto& d) { d.independentVariables()[0].setConstant(1); }},
        {{PlotAct::TypeScale}, "Change Scale", [](auto& d) { d.dependentVariables()[1].setValue("scale", 2.0F); }},
        {{PlotAct::ChooseColor},
         "Change Color",
         [](auto& d) {
             d.dependentVariables()[1].setValue("color", Color{0, 1, 0});
         }},
        {{PlotAct::ChooseResponses},
         "Change Responses",
         [](auto& d) { d.dependentVariables()[1].setValue("includep", true); }},
        {{PlotAct::MoveCamera}, "Change Camera", [](auto& d) { d.setEyeZDir(-3); }},
        {{PlotAct::MoveLight}, "Change Light", [](auto& d) { d.setLightHeight(7); }},
        {{PlotAct::Rotate}, "Change Rotation", [](auto& d) { d.setYRotation(350); }},
    };
    const PlotState before = document.plot().state();
    for (const Case& row : cases) {
        document.plot().change(row.control, [&] { row.choose(document); });
        const PlotState after = document.plot().state();
        EXPECT_EQ(document.setup().undoMenuItemTitle(), std::string("Undo ") + row.name);
        document.setup().undo();
        EXPECT_EQ(document.plot().state(), before) << row.name;
        EXPECT_TRUE(shown.setup.key.empty());
        document.setup().redo();
        EXPECT_EQ(document.plot().state(), after) << row.name;
        document.setup().undo();
    }
    EXPECT_FALSE(document.setup().canUndo());
    EXPECT_FALSE(document.setup().hasUnsavedChanges());
}

TEST_F(PlotUndoTest, WhileOneControlMovesItsWayIsOneStepAndTheAnimationIsNone) {
    document.toggleAnimatedRotation();
    for (const float height : {2.0F, 3.0F, 4.0F}) {
        light(height);
        document.animationTimer();
    }
    document.plot().endMove();
    light(5);
    const float angle = document.yRotation();
    document.setup().undo();
    EXPECT_EQ(document.lightHeight(), 4);
    document.setup().undo();
    EXPECT_EQ(document.lightHeight(), 1);
    EXPECT_EQ(document.yRotation(), angle) << "the scene turns on";
    EXPECT_FALSE(document.setup().canUndo());
    light(2);
    light(1); // back where it began
    EXPECT_FALSE(document.setup().canUndo());
    light(2);
    document.setup().editText(setup_key::runLength, "7");
    light(3);
    document.setup().undo();
    document.setup().undo();
    EXPECT_EQ(document.lightHeight(), 2) << "what came between parts the steps";
}

TEST_F(PlotUndoTest, AnAxisComesBackWithTheCameraThatItsLossPutBack) {
    include(0);
    axis(0, 1);
    axis(1, 2);
    document.plot().change({PlotAct::MoveCamera}, [&] { document.setEyeXPos(3); });
    document.updateScale();
    EXPECT_EQ(document.eyeXPos(), 3) << "a surface keeps the camera";
    axis(1, 1); // taken from the other: curves
    EXPECT_EQ(document.eyeXPos(), 0);
    document.setup().undo();
    EXPECT_EQ(plot.dimensions(), 3U);
    EXPECT_EQ(document.eyeXPos(), 3);
    EXPECT_EQ(document.independentVariables()[0].function(), PlotRole::Axis1);
    document.setup().redo();
    EXPECT_EQ(plot.dimensions(), 2U);
    EXPECT_EQ(document.eyeXPos(), 0);
    EXPECT_EQ(document.independentVariables()[0].function(), PlotRole::Held);
}

TEST_F(PlotUndoTest, ANewRunOfTheSameKeepsTheStepsAndOneOfOthersPassesThemOver) {
    document.setup().editText(setup_key::runLength, "3.5");
    include(1);
    document.setIndependentVariables({}); // a run goes on
    document.reading().build();
    document.dependentVariables()[1].setValue("includep", true); // as choices are carried over
    document.setup().undo();
    EXPECT_FALSE(document.dependentVariables()[1].includep());
    document.setup().redo();
    axis(0, 2);
    light(9);
    document.setDependentVariables({ResponseVariable("Other/x", "1"), ResponseVariable("Other/y", "2")});
    document.setIndependentVariables({});
    document.setup().undo();
    EXPECT_EQ(document.lightHeight(), 1) << "the view is the same";
    EXPECT_EQ(document.setup().undoMenuItemTitle(), "Undo Change Run Length");
    document.setup().undo();
    EXPECT_EQ(document.theDictionary().textOrEmpty(setup_key::runLength), "3");
    EXPECT_FALSE(document.dependentVariables()[1].includep());
    light(5);
    document.revertToFile();
    EXPECT_FALSE(document.setup().canUndo());
}

TEST_F(PlotUndoTest, AnEditIsShownWhereItIs) {
    struct Case {
        std::function<void(MyDocument&)> edit;
        SetupPlace undone;
        SetupPlace redone;
    };
    const SetupPlace stop{"steppers", 1, "stop"};
    const std::vector<Case> cases{
        {[](auto& d) { d.setup().editText(setup_key::gcd, "7"); }, {"GCD"}, {"GCD"}},
        {[](auto& d) { d.setup().editEntry(PortList::Steppers, 1, "stop", "4"); }, stop, stop},
        {[](auto& d) { d.setup().addPort(PortList::Steppers, "/d"); }, {"steppers", 2}, {"steppers", 3}},
        {[](auto& d) { d.addOrRemoveStepper(1); }, {"steppers", 1}, {"steppers", 1}},
        {[](auto& d) { d.setup().addPort(PortList::Outputs, "/o"); },
         {"outputs"},
         {"outputs", 0}}, // the first of its list
    };
    document.setup().addPorts(PortList::Steppers, {"/b", "/c"});
    for (const Case& row : cases) {
        document.controller(PortList::Steppers).setSelection({1});
        row.edit(document);
        SCOPED_TRACE(document.setup().undoMenuItemTitle());
        document.setup().undo();
        EXPECT_EQ(shown.setup, row.undone);
        document.setup().redo();
        EXPECT_EQ(shown.setup, row.redone);
        document.setup().undo();
    }
}

} // namespace
} // namespace orrery::test

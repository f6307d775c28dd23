// The user's edits: what they do, what they count, and how they are taken back.
#include "document/DocumentFixture.h"
#include "document/Toolbar.h"

namespace orrery::test {
namespace {

class EditsTest : public DocumentTest {
protected:
    EditsTest() { document.initWithType(""); }

    [[nodiscard]] std::string outputs() const {
        std::string all;
        for (const Entry& entry : std::as_const(document).theDictionary().entries(setup_key::outputs)) {
            all += std::string(entry.text("portPath")) + " ";
        }
        return all;
    }

    MyDocument document{services()};
};

TEST_F(EditsTest, EveryKindOfEditIsTakenBackAndDoneAgainUnderItsName) {
    struct Case {
        const char* name;
        std::function<void(MyDocument&)> edit;
        bool counted; // as a change of the document
    };
    const std::vector<Case> cases{
        {"Change Run Length", [](MyDocument& d) { d.editText(setup_key::runLength, "7"); }, true},
        {"Change GCD", [](MyDocument& d) { d.editText(setup_key::gcd, "3"); }, false},
        {"Change Start Day", [](MyDocument& d) { d.editStartDay(std::nullopt); }, false},
        {"Choose Model", [](MyDocument& d) { d.useModel(ORRERY_SAMPLES "/crop.xml"); }, true},
        {"Add Output", [](MyDocument& d) { d.addPort(PortList::Outputs, "/c"); }, true},
        {"Add Stepper", [](MyDocument& d) { d.addOrRemoveStepper(0); }, true},
        {"Remove Output",
         [](MyDocument& d) {
             d.controller(PortList::Outputs).setSelection({0});
             d.addOrRemoveOutput(1);
         },
         true},
        {"Move Outputs",
         [](MyDocument& d) {
             d.controller(PortList::Outputs).setSelection({1});
             d.moveSelected(PortList::Outputs, -1);
         },
         true},
        {"Drop Output",
         [](MyDocument& d) {
             MemoryPasteboard port;
             port.declareTypes({std::string(outputPathPboardType)});
             port.setData(archivePortPath("/d"), std::string(outputPathPboardType));
             d.tableViewAcceptDrop(PortList::Outputs, port, 1, DropOperation::On);
         },
         true},
        {"Change Output Result File", [](MyDocument& d) { d.editEntry(PortList::Outputs, 1, "outputPath", "x.txt"); },
         false},
    };
    for (const Case& row : cases) {
        SCOPED_TRACE(row.name);
        MyDocument each(services());
        each.initWithType("");
        each.addPort(PortList::Outputs, "/a");
        each.addPort(PortList::Outputs, "/b");
        each.saveToFile(files.path() + "each.orrery");
        const SetupDictionary::Values before = each.theDictionary().values();
        row.edit(each);
        const SetupDictionary::Values after = each.theDictionary().values();
        EXPECT_NE(before, after);
        EXPECT_EQ(each.undoMenuItemTitle(), std::string("Undo ") + row.name);
        EXPECT_EQ(each.isDocumentEdited(), row.counted);
        EXPECT_TRUE(each.hasUnsavedChanges());
        each.undo();
        EXPECT_EQ(each.theDictionary().values(), before);
        EXPECT_EQ(each.redoMenuItemTitle(), std::string("Redo ") + row.name);
        EXPECT_EQ(each.hasUnsavedChanges(), row.counted) << "an undone edit is a change that was counted";
        each.redo();
        EXPECT_EQ(each.theDictionary().values(), after);
        each.saveToFile(files.path() + "each.orrery");
        EXPECT_FALSE(each.hasUnsavedChanges());
    }
}

TEST_F(EditsTest, WhatChangesNothingIsNoStepAndANewEditForgetsWhatWasUndone) {
    document.editText(setup_key::runLength, "100");
    document.addOrRemoveOutput(1);
    document.moveSelected(PortList::Outputs, 1);
    EXPECT_FALSE(document.canUndo());
    document.addPort(PortList::Outputs, "/a");
    document.addPort(PortList::Outputs, "/b");
    document.undo();
    document.undo();
    EXPECT_EQ(outputs(), "");
    EXPECT_EQ(document.theDictionary().list(setup_key::outputs), nullptr) << "as before the first entry";
    document.addPort(PortList::Outputs, "/c");
    EXPECT_FALSE(document.canRedo());
    EXPECT_EQ(outputs(), "/c ");
}

TEST_F(EditsTest, RowsMoveByOnePlaceAndStayAtTheEnds) {
    for (const char* port : {"a", "b", "c"}) {
        document.addPort(PortList::Outputs, port);
    }
    ListController& controller = document.controller(PortList::Outputs);
    controller.setSelection({0, 1});
    document.moveSelected(PortList::Outputs, -1);
    EXPECT_EQ(outputs(), "a b c ");
    document.moveSelected(PortList::Outputs, 1);
    EXPECT_EQ(outputs(), "c a b ");
    EXPECT_EQ(controller.selection(), (std::vector<std::size_t>{1, 2}));
    document.moveSelected(PortList::Outputs, 1);
    EXPECT_EQ(outputs(), "c a b ");
}

TEST_F(EditsTest, UndoingTheChoiceOfAModelBringsItsTreeBack) {
    document.useModel(ORRERY_SAMPLES "/crop.xml");
    document.useModel(ORRERY_SAMPLES "/insect.xml");
    const std::string insect(document.modelTree().root()->name());
    document.undo();
    EXPECT_NE(document.modelTree().root()->name(), insect);
    document.undo();
    EXPECT_TRUE(document.modelTree().empty());
    EXPECT_FALSE(document.modelModification());
}

TEST_F(EditsTest, AModelFileThatCannotBeReadEmptiesTheOutlineAndTellsWhy) {
    show(document);
    document.useModel(ORRERY_SAMPLES "/crop.xml");
    document.useModel(files.write("cut.xml", "<database>\n<object"));
    EXPECT_TRUE(document.modelTree().empty());
    EXPECT_TRUE(document.modelModification().has_value());
    ASSERT_EQ(window.sheets.size(), 1U);
    EXPECT_NE(window.sheets[0].informative.find("cut.xml:2"), std::string::npos) << window.sheets[0].informative;
}

TEST_F(EditsTest, RevertingReadsTheFileAgain) {
    const std::string path = files.path() + "kept.orrery";
    document.saveToFile(path);
    document.editText(setup_key::runLength, "7");
    document.revertToFile();
    EXPECT_EQ(document.theDictionary().textOrEmpty(setup_key::runLength), "100");
    EXPECT_FALSE(document.hasUnsavedChanges());
    EXPECT_FALSE(document.canUndo());
    document.editText(setup_key::runLength, "8");
    EXPECT_TRUE(document.isDocumentEdited()) << "observed again";
}

TEST_F(EditsTest, ARunAsksToSaveFieldsThatCountedNoChange) {
    document.addPort(PortList::Steppers, "/a");
    document.saveToFile(files.path() + "run.orrery");
    show(document);
    window.modalAnswer = 1;
    document.editEntry(PortList::Steppers, 0, "stop", "3");
    EXPECT_FALSE(document.isDocumentEdited());
    document.runSimulation();
    EXPECT_EQ(window.alerts.size(), 1U) << "the engine would run another sweep than the window shows";
    EXPECT_TRUE(launcher.children.empty());
}

TEST_F(EditsTest, TheToolbarOffersRunAndThenSend) {
    EXPECT_EQ(toolbarItemIdentifiers(), (std::vector<std::string>{"Run Simulation", "To Dorado"}));
    EXPECT_EQ(toolbarItem("Run Simulation").tag, runTag);
    EXPECT_EQ(toolbarItem("To Dorado").label, "Send To Dorado");
    EXPECT_FALSE(toolbarItem("Print").action.has_value());
}

} // namespace
} // namespace orrery::test

// The user's edits: what they do, what they count, and how they are taken back.
#include "document/DocumentFixture.h"
#include "platform/Files.h"
#include "platform/values/OrreryError.h"

#include <filesystem>

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
};

TEST_F(EditsTest, EveryKindOfEditIsTakenBackAndDoneAgainUnderItsName) {
    struct Case {
        const char* name;
        std::function<void(MyDocument&)> edit; // of two outputs, the second selected
        bool counted;                          // as a change of the document
    };
    MemoryPasteboard port;
    port.declareTypes({std::string(outputPathPboardType)});
    port.setData(archivePortPath("/d"), std::string(outputPathPboardType));
    constexpr PortList outputs = PortList::Outputs;
    const std::vector<Case> cases{
        {"Change Run Length", [](auto& d) { d.setup().editText(setup_key::runLength, "7"); }, true},
        {"Change GCD", [](auto& d) { d.setup().editText(setup_key::gcd, "3"); }, false},
        {"Change Start Day", [](auto& d) { d.setup().editStartDay(std::nullopt); }, false},
        {"Choose Model", [](auto& d) { d.setup().chooseModel(ORRERY_SAMPLES "/crop.xml"); }, true},
        {"Add Output", [](auto& d) { d.setup().addPort(outputs, "/c"); }, true},
        {"Add Stepper", [](auto& d) { d.addOrRemoveStepper(0); }, true},
        {"Remove Output", [](auto& d) { d.addOrRemoveOutput(1); }, true},
        {"Move Outputs", [](auto& d) { d.setup().moveSelected(outputs, -1); }, true},
        {"Drop Output", [&](auto& d) { d.tableViewAcceptDrop(outputs, port, 1, DropOperation::On); }, true},
        {"Change Output Result File", [](auto& d) { d.setup().editEntry(outputs, 1, "outputPath", "x.txt"); }, false},
    };
    for (const Case& row : cases) {
        SCOPED_TRACE(row.name);
        MyDocument each(services());
        each.initWithType("");
        each.setup().addPorts(outputs, {"/a", "/b"});
        each.controller(outputs).setSelection({1});
        each.saveToFile(files.path() + "each.orrery");
        const SetupDictionary::Values before = each.theDictionary().values();
        row.edit(each);
        const SetupDictionary::Values after = each.theDictionary().values();
        EXPECT_NE(before, after);
        EXPECT_EQ(each.setup().undoMenuItemTitle(), std::string("Undo ") + row.name);
        EXPECT_EQ(each.setup().isEdited(), row.counted);
        EXPECT_TRUE(each.setup().hasUnsavedChanges());
        each.setup().undo();
        EXPECT_EQ(each.theDictionary().values(), before);
        EXPECT_EQ(each.setup().redoMenuItemTitle(), std::string("Redo ") + row.name);
        EXPECT_EQ(each.setup().hasUnsavedChanges(), row.counted) << "an undone edit is a change that was counted";
        each.setup().redo();
        EXPECT_EQ(each.theDictionary().values(), after);
        each.saveToFile(files.path() + "each.orrery");
        EXPECT_FALSE(each.setup().hasUnsavedChanges());
    }
}

TEST_F(EditsTest, WhatChangesNothingIsNoStepAndANewEditForgetsWhatWasUndone) {
    document.setup().editText(setup_key::runLength, "100");
    document.addOrRemoveOutput(1);
    document.setup().moveSelected(PortList::Outputs, 1);
    EXPECT_FALSE(document.setup().canUndo());
    document.setup().addPort(PortList::Outputs, "/a");
    document.setup().addPort(PortList::Outputs, "/b");
    document.setup().undo();
    document.setup().undo();
    EXPECT_EQ(outputs(), "");
    EXPECT_EQ(document.theDictionary().list(setup_key::outputs), nullptr) << "as before the first entry";
    document.setup().addPort(PortList::Outputs, "/c");
    EXPECT_FALSE(document.setup().canRedo());
    EXPECT_EQ(outputs(), "/c ");
}

TEST_F(EditsTest, RowsMoveByOnePlaceAndStayAtTheEnds) {
    document.setup().addPorts(PortList::Outputs, {"a", "b", "c"});
    ListController& controller = document.controller(PortList::Outputs);
    controller.setSelection({0, 1});
    document.setup().moveSelected(PortList::Outputs, -1);
    EXPECT_EQ(outputs(), "a b c ");
    document.setup().moveSelected(PortList::Outputs, 1);
    EXPECT_EQ(outputs(), "c a b ");
    EXPECT_EQ(controller.selection(), (std::vector<std::size_t>{1, 2}));
    document.setup().moveSelected(PortList::Outputs, 1);
    EXPECT_EQ(outputs(), "c a b ");
}

TEST_F(EditsTest, UndoingTheChoiceOfAModelBringsItsTreeBackAndOneThatCannotBeReadEmptiesItAndTellsWhy) {
    show(document);
    document.setup().chooseModel(ORRERY_SAMPLES "/crop.xml");
    const std::string crop(document.model().tree().root()->name());
    document.setup().chooseModel(ORRERY_SAMPLES "/insect.xml");
    EXPECT_NE(document.model().tree().root()->name(), crop);
    document.setup().undo();
    EXPECT_EQ(document.model().tree().root()->name(), crop);
    document.setup().chooseModel(files.write("cut.xml", "<database>\n<object"));
    EXPECT_TRUE(document.model().tree().empty());
    EXPECT_TRUE(document.modelModification().has_value());
    ASSERT_EQ(window.sheets.size(), 1U);
    EXPECT_NE(window.sheets[0].informative.find("cut.xml:2"), std::string::npos) << window.sheets[0].informative;
    document.setup().undo();
    EXPECT_EQ(document.model().tree().root()->name(), crop);
    document.setup().undo();
    EXPECT_TRUE(document.model().tree().empty());
    EXPECT_FALSE(document.modelModification());
}

TEST_F(EditsTest, ACancelledImportLeavesTheModelAsItWas) {
    struct Case {
        const char* name;
        std::function<void(MyDocument&, const std::string& insect)> import;
    };
    const std::vector<Case> cases = {
        {"choosing", [](MyDocument& d, auto& insect) { d.setup().chooseModel(insect); }},
        {"choosing the same", [](MyDocument& d, auto&) { d.setup().chooseModel(d.file().modelPath()); }},
        {"setting the path", [](MyDocument& d, auto& insect) { d.setup().editText(setup_key::modelPath, insect); }},
        {"undoing", [](MyDocument& d, auto&) { d.setup().undo(); }},
        {"reverting", [](MyDocument& d, auto&) { d.revertToFile(); }},
        {"coming back to a changed file",
         [](MyDocument& d, auto&) {
             d.setModelModification({});
             d.refreshModel();
         }},
    };
    const std::string insect = ORRERY_SAMPLES "/insect.xml";
    for (const Case& row : cases) {
        MyDocument opened(services());
        opened.initWithType("");
        CancellablePanel panel;
        show(opened, &panel);
        opened.setup().chooseModel(insect);
        opened.setup().chooseModel(ORRERY_SAMPLES "/crop.xml");
        opened.saveToFile(files.path() + "model.orrery");
        window.sheets.clear();
        const std::string model = opened.file().modelPath();
        const ModelNode* root = opened.model().tree().root();
        panel.cancels = true;
        row.import(opened, insect);
        EXPECT_EQ(opened.file().modelPath(), model) << row.name;
        EXPECT_EQ(opened.model().tree().root(), root) << row.name;
        EXPECT_EQ(opened.modelModification(), modificationDate(model)) << row.name << ": it is not tried again";
        EXPECT_EQ(window.sheets.size(), 1U) << row.name;
        EXPECT_EQ(panel.open, 0) << row.name;
    }
}

TEST_F(EditsTest, ASetupWhoseModelIsNotWantedOpensWithoutOneUntilItIsChosenAgain) {
    document.setup().chooseModel(ORRERY_SAMPLES "/crop.xml");
    document.saveToFile(files.path() + "model.orrery");
    MyDocument opened(services());
    opened.readFromFile(files.path() + "model.orrery");
    CancellablePanel panel;
    panel.cancels = true;
    show(opened, &panel);
    opened.awakeFromNib();
    opened.refreshModel();
    EXPECT_TRUE(opened.model().tree().empty());
    EXPECT_FALSE(opened.setup().hasUnsavedChanges());
    EXPECT_EQ(window.sheets.size(), 1U) << "once, although the application became active again";
    panel.cancels = false;
    opened.setup().chooseModel(opened.file().modelPath());
    EXPECT_FALSE(opened.model().tree().empty());
}

TEST_F(EditsTest, RevertingReadsTheFileAgain) {
    const std::string path = files.path() + "kept.orrery";
    document.saveToFile(path);
    document.setup().editText(setup_key::runLength, "7");
    document.revertToFile();
    EXPECT_EQ(document.theDictionary().textOrEmpty(setup_key::runLength), "100");
    EXPECT_FALSE(document.setup().hasUnsavedChanges());
    EXPECT_FALSE(document.setup().canUndo());
    document.setup().editText(setup_key::runLength, "8");
    EXPECT_TRUE(document.setup().isEdited()) << "observed again";
    ASSERT_EQ(document.file().path(), path);
    window.modalAnswer = 0; // Save
    show(document);
    document.runSimulation();
    EXPECT_NE(readWholeFile(path).find("<RunLength>8<"), std::string::npos);
    EXPECT_EQ(launcher.last().command.back(), path);
}

TEST_F(EditsTest, ASaveElsewhereKeepsTheModelAndSoDoesUndo) {
    const std::string place = files.path() + "place/";
    std::filesystem::create_directories(place + "sub");
    for (const char* name : {"place/crop.xml", "place/weed.xml", "crop.xml"}) {
        files.write(name, cropModel);
    }
    document.saveToFile(place + "a.orrery");
    document.setup().editText(setup_key::modelPath, "weed.xml");
    document.setup().editText(setup_key::modelPath, "crop.xml");
    const auto model = [&] { return std::string(document.theDictionary().textOrEmpty(setup_key::modelPath)); };
    document.saveToFile(place + "b.orrery");
    EXPECT_EQ(model(), "crop.xml");
    document.setup().editText(setup_key::runLength, "7");
    EXPECT_THROW(document.saveToFile(files.path() + "missing/c.orrery"), OrreryError);
    EXPECT_EQ(model(), "crop.xml");
    EXPECT_TRUE(document.setup().isEdited());
    document.saveToFile(files.path() + "c.orrery");
    EXPECT_EQ(model(), place + "crop.xml");
    EXPECT_NE(readWholeFile(files.path() + "c.orrery").find(">" + model() + "<"), std::string::npos);
    EXPECT_FALSE(document.setup().hasUnsavedChanges());
    document.setup().undo(); // the run length
    document.setup().undo();
    EXPECT_EQ(document.file().modelPath(), place + "weed.xml");
}

} // namespace
} // namespace orrery::test

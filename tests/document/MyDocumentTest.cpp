#include "document/DocumentFixture.h"
#include "platform/Files.h"
#include "platform/values/OrreryError.h"

#include <algorithm>
#include <deque>
#include <filesystem>

namespace orrery::test {
namespace {

class MyDocumentTest : public DocumentTest {
protected:
    std::string writeSetup(const std::string& name, const std::string& model) {
        return files.write(name, "<Simulation><ModelPath>" + model + "</ModelPath><Dimensions>{1,1}</Dimensions>" +
                                     "<RunLength>3</RunLength><ReportStep>10</ReportStep></Simulation>");
    }
};

TEST_F(MyDocumentTest, ANewSetupObservesFiveKeysAndAnOpenedOneSix) {
    for (const bool opened : {false, true}) {
        SCOPED_TRACE(opened);
        MyDocument each(services());
        opened ? each.readFromFile(writeSetup("a.orrery", "")) : each.initWithType("setup");
        EXPECT_FALSE(each.setup().isEdited());
        EXPECT_EQ(each.theDictionary().startDay(), Date()) << "the reference date";
        each.theDictionary().setStartDay(Date{});
        EXPECT_EQ(each.setup().isEdited(), opened);
        each.updateChangeCount(ChangeKind::Cleared);
        const std::string same(each.theDictionary().textOrEmpty(setup_key::runLength));
        each.theDictionary().setText(setup_key::runLength, same);
        EXPECT_TRUE(each.setup().isEdited());
    }
}

TEST_F(MyDocumentTest, SavingStoresTheLocationBeforeTheSaveAndAFailedSaveKeepsTheFileAndTheMark) {
    document.initWithType("setup");
    defaults.setObject("old", "lastPath");
    document.saveToFile(files.path() + "a b.orrery");
    EXPECT_EQ(defaults.stringForKey("lastPath"), std::nullopt);
    document.saveToFile(files.path() + "c.orrery");
    EXPECT_EQ(defaults.stringForKey("lastPath"), "file://" + files.path() + "a%20b.orrery");
    const std::string path = files.path() + "c.orrery";
    EXPECT_EQ(document.file().path(), path);

    const std::string before = readWholeFile(path);
    document.theDictionary().setText(setup_key::runLength, "\u4E2D");
    EXPECT_THROW(document.saveToFile(path), OrreryError);
    EXPECT_EQ(readWholeFile(path), before);
    EXPECT_TRUE(document.setup().isEdited());
}

TEST_F(MyDocumentTest, BytesThatAreNoSetupOpenEmptyAndAreKeptBesideTheFirstSave) {
    const std::string path = files.write("a.orrery", "<Simulation><oops");
    document.readFromFile(path);
    EXPECT_EQ(document.theDictionary().textOrEmpty(setup_key::gcd), "0");
    EXPECT_EQ(log.size(), 1U);
    document.saveToFile(path);
    EXPECT_EQ(readWholeFile(path + "~"), "<Simulation><oops");
    document.saveToFile(path);
    EXPECT_FALSE(fileExists(path + "~2"));
}

TEST_F(MyDocumentTest, ARefusedFileLeavesTheDocumentAsItWas) {
    document.readFromFile(writeSetup("a.orrery", "m.xml"));
    EXPECT_THROW(document.readFromFile(files.write("b.orrery", "<Simulation/>")), OrreryError);
    EXPECT_EQ(document.file().path(), files.path() + "a.orrery");
    EXPECT_EQ(document.theDictionary().textOrEmpty(setup_key::modelPath), "m.xml");
}

TEST_F(MyDocumentTest, OnlyChangedModelsAreImportedAnewOnActivation) {
    const std::string model = files.write("crop.xml", cropModel);
    std::deque<MyDocument> documents;
    std::vector<MyDocument*> pointers;
    for (const std::string& path : {model, model, std::string()}) {
        pointers.push_back(&documents.emplace_back(services()));
        pointers.back()->readFromFile(writeSetup("a.orrery", path));
        pointers.back()->awakeFromNib();
    }
    const auto roots = [&] {
        std::vector<const ModelNode*> all;
        std::ranges::transform(documents, std::back_inserter(all), [](auto& d) { return d.model().tree().root(); });
        return all;
    };
    const auto before = roots();
    applicationDidBecomeActive(pointers);
    EXPECT_EQ(roots(), before);

    std::filesystem::last_write_time(model, std::filesystem::file_time_type::clock::now() + std::chrono::hours(1));
    applicationDidBecomeActive(pointers);
    const auto after = roots();
    EXPECT_NE(after[0], before[0]);
    EXPECT_NE(after[1], before[1]);
    EXPECT_EQ(after[2], nullptr);
    applicationDidBecomeActive(pointers);
    EXPECT_EQ(roots(), after);
}

TEST_F(MyDocumentTest, AModelThatCannotBeImportedIsToldAndTheWindowIsSetUp) {
    const std::string model = files.write("m.xml", "<database><object type='KSLevel' id='r'/></database>");
    document.readFromFile(writeSetup("a.orrery", "m.xml")); // beside the setup
    show(document);
    document.awakeFromNib();
    ASSERT_EQ(window.sheets.size(), 1U);
    EXPECT_NE(window.sheets[0].informative.find("Couldn't find class for KSLevel"), std::string::npos);
    EXPECT_NE(window.sheets[0].informative.find(model), std::string::npos);
    EXPECT_EQ(document.modelModification(), std::nullopt); // the next activation tries again
    EXPECT_EQ(document.lightSliderMax(), 20);
    EXPECT_EQ(document.lightSliderMin(), -5);
    EXPECT_EQ(loop.liveTimers(), 1U);
    document.close();
    EXPECT_EQ(loop.liveTimers(), 0U);
}

TEST_F(MyDocumentTest, TagsEnableTheirCommands) {
    document.initWithType("setup");
    show(document);
    EXPECT_FALSE(document.validateTag(CommandTag::Run));
    document.theDictionary().setText(setup_key::modelPath, "");
    EXPECT_TRUE(document.validateTag(CommandTag::Run));
    EXPECT_TRUE(window.buttonEnabled);
    EXPECT_FALSE(document.validateTag(CommandTag::Send));
    EXPECT_FALSE(window.buttonEnabled); // whichever was asked last
    temporary.write("Zephyr.txt", "");
    EXPECT_TRUE(document.validateTag(CommandTag::Send));
    document.theDictionary().setText(setup_key::dimensions, "{ 2, 1 }");
    EXPECT_FALSE(document.validateTag(CommandTag::Send)); // no outputs
    EXPECT_FALSE(document.validateTag(CommandTag{7}));
    EXPECT_TRUE(document.validateMenuItem(7));
}

TEST_F(MyDocumentTest, PortsAndRowsAreDroppedOnTheirOwnTables) {
    document.initWithType("setup");
    document.makeModelTree(files.write("crop.xml", cropModel));
    const ModelNode* crop = document.model().tree().topLevel().at(0);
    const ModelNode* rain = crop->children.at(0)->children.at(0);
    MemoryPasteboard pasteboard;
    EXPECT_FALSE(document.outlineViewWriteItems({crop}, pasteboard));
    EXPECT_FALSE(document.outlineViewWriteItems({rain->parent}, pasteboard));
    ASSERT_TRUE(document.outlineViewWriteItems({rain, crop}, pasteboard));

    EXPECT_EQ(MyDocument::tableViewValidateDrop(PortList::Outputs, pasteboard).operation, DragOperation::None);
    EXPECT_FALSE(document.tableViewAcceptDrop(PortList::Outputs, pasteboard, 0, DropOperation::Above));
    EXPECT_FALSE(document.setup().isEdited());
    EXPECT_EQ(MyDocument::tableViewValidateDrop(PortList::Steppers, pasteboard).operation, DragOperation::Copy);
    ASSERT_TRUE(document.tableViewAcceptDrop(PortList::Steppers, pasteboard, 0, DropOperation::Above));
    EXPECT_TRUE(document.setup().isEdited());
    const EntryList dropped = {Entry{{"coordinates", "{ 0, 0 }"}, {"portPath", "/Field/Crop/rain"}}};
    EXPECT_EQ(document.theDictionary().entries(setup_key::steppers), dropped);

    document.addOrRemoveStepper(0);
    ASSERT_TRUE(document.tableViewWriteRows(PortList::Steppers, {1}, pasteboard));
    EXPECT_FALSE(document.tableViewAcceptDrop(PortList::Initializations, pasteboard, 0, DropOperation::Above));
    ASSERT_TRUE(document.tableViewAcceptDrop(PortList::Steppers, pasteboard, 0, DropOperation::Above));
    EXPECT_EQ(document.controller(PortList::Steppers).selection(), (std::vector<std::size_t>{0}));
    document.addOrRemoveStepper(1);
    EXPECT_EQ(document.theDictionary().entries(setup_key::steppers), dropped);
}

TEST_F(MyDocumentTest, TheCameraFollowsItsProperties) {
    show(document);
    document.awakeFromNib();
    EXPECT_EQ(plot.camera().viewPos, (Vector3{0, 1, 4}));
    EXPECT_EQ(plot.camera().viewDir, (Vector3{0, -2, -10}));
    EXPECT_EQ(plot.camera().viewUp, (Vector3{0, 1, 0}));
    EXPECT_EQ(plot.camera().aperture, 40);
    EXPECT_EQ(plot.lightHeight(), 1);
    EXPECT_EQ(plot.projectionUpdates(), 2U); // eye z and look-at z
    const unsigned redraws = plot.displayRequests();
    document.setEyeXPos(2.5F);
    EXPECT_EQ(document.eyeXPos(), 2.5F);
    EXPECT_EQ(plot.projectionUpdates(), 2U);
    EXPECT_EQ(plot.displayRequests(), redraws + 1);
}

TEST_F(MyDocumentTest, TheRotationGoesTheShortWayRoundAndTheAnimationTurnsIt) {
    show(document);
    document.awakeFromNib();
    document.setYRotation(170);
    document.setYRotation(350);
    document.setYRotation(10); // across the slider's end
    EXPECT_EQ(plot.yRotation(), 370);
    EXPECT_EQ(document.yRotation(), 10);
    loop.tick();
    EXPECT_EQ(plot.yRotation(), 370);
    EXPECT_TRUE(loop.lastRests) << "costs nothing while nothing turns";
    document.toggleAnimatedRotation();
    EXPECT_FALSE(loop.lastRests);
    loop.tick();
    EXPECT_EQ(plot.yRotation(), 370.5F);
    EXPECT_EQ(loop.intervals.at(0), std::chrono::nanoseconds(16666667));
    document.toggleAnimatedRotation();
    loop.tick();
    EXPECT_EQ(plot.yRotation(), 370.5F);
}

using PlotTest = ResultsTest;

TEST_F(PlotTest, NothingIsDrawnWithoutAnAxisOrAResponse) {
    document.setupPlotView();
    EXPECT_TRUE(plot.ranges().empty());
    document.independentVariables()[1].setFunction(PlotRole::Axis1);
    document.setupPlotView();
    EXPECT_TRUE(plot.ranges().empty());
    document.dependentVariables()[1].setValue("includep", true);
    document.setupPlotView();
    EXPECT_EQ(plot.dimensions(), 2U);
    EXPECT_EQ(plot.labels(), (std::vector<std::string>{"day"}));
    EXPECT_EQ(plot.ranges(), (std::vector<VertexRange>{{0, 3}}));
    // The stepper is held at the middle of 0 … 1, index 0; column 1 counts although column 0 is left out.
    EXPECT_FLOAT_EQ(plot.vertices().at(7), 2.0F * 40 / 40 - 1);
    EXPECT_FLOAT_EQ(plot.vertices().at(1), 2.0F * 10 / 40 - 1);
    EXPECT_EQ(plot.colors().at(0).alpha, 0.9F);
    document.independentVariables()[1].setFunction(PlotRole::Held);
    document.updateScale();
    EXPECT_TRUE(plot.ranges().empty());
}

TEST_F(PlotTest, AnAxisRoleIsHeldByOneVariable) {
    document.dependentVariables()[0].setValue("includep", true);
    document.independentVariables()[0].setFunction(PlotRole::Axis1);
    document.updatePlot({SettingsTag::RoleChooser, 0});
    document.independentVariables()[1].setFunction(PlotRole::Axis1);
    window.controls.clear();
    document.updatePlot({SettingsTag::RoleChooser, 1});
    EXPECT_EQ(document.independentVariables()[0].function(), PlotRole::Held);
    std::ranges::sort(window.controls);
    EXPECT_EQ(window.controls, (std::vector<std::string>{"0.1 on", "0.2 on", "1.1 off", "1.2 off"}));
    document.independentVariables()[0].setFunction(PlotRole::Axis2);
    document.updatePlot({SettingsTag::RoleChooser, 0});
    EXPECT_EQ(plot.dimensions(), 3U);
    EXPECT_EQ(plot.ranges(), (std::vector<VertexRange>{{0, 12}}));
    EXPECT_EQ(plot.labels(), (std::vector<std::string>{"/Field/Crop/rain", "day"}));
}

TEST_F(PlotTest, ACancelledPlotIsEmptyAndComesWithTheNextChange) {
    CancellablePanel panel;
    show(document, &panel);
    document.dependentVariables()[0].setValue("includep", true);
    document.independentVariables()[0].setFunction(PlotRole::Axis1);
    document.independentVariables()[1].setFunction(PlotRole::Axis2);
    float scale = 0;
    for (const std::size_t ranges : {1U, 0U, 1U}) {
        document.dependentVariables()[0].setValue("scale", ++scale);
        panel.cancels = ranges == 0;
        document.setupPlotView();
        EXPECT_EQ(plot.ranges().size(), ranges);
    }
    EXPECT_EQ(plot.vertices().size(), 2 * 36U);
    EXPECT_FLOAT_EQ(plot.vertices().at(4), 3.0F * 1 / 4) << "the scale of the third time";
    EXPECT_EQ(panel.open, 0);
    const std::vector<float> shown = plot.vertices();
    document.makePlotForDimensions(3, {5, 4, 3, 2, 1, 0});
    EXPECT_NE(plot.vertices(), shown);
    document.setupPlotView();
    EXPECT_EQ(plot.vertices(), shown) << "the view's memory held other rows";
}

/// A companion that keeps what it is sent.
struct FakeCompanion : NamedServices, RemoteObject, std::enable_shared_from_this<FakeCompanion> {
    bool running = true;
    std::vector<std::string> received;
    std::function<void(std::string_view)> answer;
    void findRootProxy(const std::string& name, Found found) override {
        found(running && name == "Dorado Server" ? shared_from_this() : nullptr);
    }
    void importWaves(const std::vector<std::string>& paths, std::function<void(std::string_view)> done) override {
        received = paths;
        answer = std::move(done);
    }
};

TEST_F(MyDocumentTest, TheFilesOfARunAreHandedToTheCompanion) {
    const auto companion = std::make_shared<FakeCompanion>();
    DocumentServices all = services();
    all.namedServices = companion.get();
    MyDocument sender(all);
    sender.initWithType("setup");
    show(sender);
    sender.saveToDorado();
    EXPECT_EQ(companion->received, (std::vector<std::string>{temporary.path() + "Zephyr.txt"}));
    companion->answer("no answer within 5 s");
    EXPECT_EQ(window.sheets.size(), 1U);

    sender.theDictionary().setText(setup_key::dimensions, "{ 10, 10 }");
    sender.theDictionary().setList(setup_key::outputs, {{{"portPath", "/Field/Crop/x"}}});
    companion->received.clear();
    sender.saveToDorado();
    EXPECT_TRUE(companion->received.empty());
    EXPECT_NE(window.sheets.back().informative.find("/Field/Crop/x"), std::string::npos);

    companion->running = false;
    sender.saveToDorado();
    EXPECT_EQ(window.sheets.back().message, "Could not open communication with Dorado.");
}

} // namespace
} // namespace orrery::test

#pragma once

#include "document/DocumentModel.h"
#include "document/DocumentOutlets.h"
#include "document/SetupEditing.h"
#include "document/StartedSetup.h"
#include "document/Toolbar.h"
#include "platform/KnownFile.h"
#include "platform/Pasteboard.h"
#include "platform/Services.h"
#include "platform/UserDefaults.h"
#include "platform/XmlDocument.h"
#include "plot/data/PlotSession.h"
#include "plot/data/PlotState.h"
#include "run/PlotChoices.h"
#include "run/RunControl.h"
#include "run/RunResults.h"
#include "run/SetupProblem.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace orrery {

/// What a document needs of the platform; nothing is owned, and all of it outlives the document.
struct DocumentServices {
    RunServices run;
    UserDefaults* userDefaults = nullptr;
    NamedServices* namedServices = nullptr; // absent: no companion can be reached
    const Calendar* calendar = nullptr;     // absent: the user's current calendar
    TableReadOptions tableReading;
    bool writesOverOutputs = false; // of setups that were not written here, without asking
};

/// The control that sends an action from a row of settings.
struct SettingsSender {
    SettingsTag tag = SettingsTag::RoleChooser;
    std::size_t row = 0; // position of the variable in its list
};

/// One simulation setup and everything derived from it: the hub between window, model, run and plot.
///
/// It owns the setup dictionary (all that is saved), the model tree, the last run's variables and data, and the
/// engine's wrapper. It reaches its window through outlets that may be absent. Most operations are short calls into
/// the folders model/, run/ and plot/. Main thread only.
class MyDocument : private RunHost {
public:
    /// A document without a setup, as opening a file starts with.
    explicit MyDocument(DocumentServices services);
    MyDocument(const MyDocument&) = delete;
    MyDocument& operator=(const MyDocument&) = delete;
    ~MyDocument() override;

    // -- The setup and its changes --------------------------------------------------------------------------------
    /// Makes this a new, untitled setup: the defaults unless a setup is present, and its observation.
    void initWithType(std::string_view typeName);
    [[nodiscard]] SetupDictionary& theDictionary() { return m_setup.dictionary(); }
    [[nodiscard]] const SetupDictionary& theDictionary() const { return m_setup.dictionary(); }
    void setTheDictionary(SetupDictionary dictionary) { m_setup.setDictionary(std::move(dictionary)); }
    void observeValueForKeyPath(std::string_view /*key*/) { updateChangeCount(ChangeKind::Done); }
    void updateChangeCount(ChangeKind kind) { m_setup.updateChangeCount(kind); }
    [[nodiscard]] bool isDocumentEdited() const { return m_setup.isEdited(); } // since the last save
    [[nodiscard]] bool hasUnsavedChanges() const override { return m_setup.hasUnsavedChanges(); }
    /// The setup as it is edited, with its undo.
    [[nodiscard]] SetupEditing& setup() { return m_setup; }
    [[nodiscard]] const SetupEditing& setup() const { return m_setup; }
    [[nodiscard]] static std::string_view windowNibName() { return "MyDocument"; }
    void windowControllerDidLoadNib() {} // the base behaviour suffices

    // -- The setup file -------------------------------------------------------------------------------------------
    [[nodiscard]] XmlDocument convertToXML() const;
    void convertFromXML(const XmlDocument& document);
    /// Takes over a setup file's bytes. @throws OrreryError when required elements are missing; the document is then
    /// unchanged. Bytes that do not parse are logged and give an empty setup.
    bool loadDataRepresentation(std::string_view bytes, std::string_view typeName);
    /// Reads the file and takes its path. By value: the caller's may be this document's own. @throws OrreryError
    void readFromFile(std::string path);
    /// Reads the file as a copy that has no file yet and names the same model. It has nothing unsaved, since it can be
    /// had again, but a run has it saved first. @throws OrreryError
    void readCopyOf(const std::string& path);
    [[nodiscard]] bool isUnsavedCopy() const override { return m_isUnsavedCopy; }
    /// Why the file that was opened is no setup, with the place; empty when it is one, and after the next save.
    [[nodiscard]] const std::string& unparsedFault() const { return m_unparsedFault; }
    /// Writes the setup file whole, or throws OrreryError and leaves the old file. Stores the user default "lastPath".
    void writeToURL(const std::string& path, std::string_view typeName);
    /// Writes as writeToURL, then the document is at that path and unedited. In another directory a relative model path
    /// becomes absolute, in the file as in the document, also for what can be undone.
    void saveToFile(const std::string& path);
    /// Reads the document's file again; edits since the last save and their undo are gone. @throws OrreryError
    void revertToFile();
    [[nodiscard]] std::optional<std::string> filePath() const override { return m_filePath; }
    /// The document's file as it was when the document last read or wrote it.
    [[nodiscard]] KnownFile& knownFile() { return m_knownFile; }
    void setFilePath(std::optional<std::string> path) { m_filePath = std::move(path); }
    /// How a save that a run asks for is done (a window may have to ask for a name); by default saveToFile.
    void setSaveHandler(std::function<void(std::function<void(bool)>)> handler) { m_saveHandler = std::move(handler); }

    // -- The window -----------------------------------------------------------------------------------------------
    void setOutlets(const DocumentOutlets& outlets);
    [[nodiscard]] const DocumentOutlets& outlets() const { return m_outlets; }
    /// The window has been loaded: imports the model, starts the animation timer, resets camera and light bounds. A
    /// model that cannot be imported is reported in a sheet, and the rest is set up all the same.
    void awakeFromNib();
    /// The window closes: nothing calls the document any more.
    void close();
    bool validateTag(CommandTag tag);
    /// Why there can be neither a run nor results; empty: there can.
    [[nodiscard]] const std::string& runFault() const { return m_services.run.temporaryDirectoryFault; }
    [[nodiscard]] bool validateMenuItem(std::int32_t tag);
    void tabViewDidSelectTabViewItem(std::string_view identifier);

    // -- The model ------------------------------------------------------------------------------------------------
    /// The model file's path as the setup has it, made absolute from the setup file's directory; empty without one.
    [[nodiscard]] std::string modelFilePath() const;
    void makeModelTree(const std::string& path) { m_model.makeTree(path); }
    void updateModelTree() { m_model.update(modelFilePath()); }
    void refreshModel() { m_model.refresh(modelFilePath()); } // updateModelTree, a failure shown in a sheet
    void selectModel();
    [[nodiscard]] const ModelTree& modelTree() const { return m_model.tree(); }
    void setModelTree(ModelTree tree) { m_model.setTree(std::move(tree)); } // for one that was read already
    [[nodiscard]] const std::optional<Date>& modelModification() const { return m_model.modification(); }
    void setModelModification(std::optional<Date> date) { m_model.setModification(date); }

    // -- The port lists -------------------------------------------------------------------------------------------
    [[nodiscard]] ListController& controller(PortList list) { return m_setup.controller(list); }
    bool outlineViewWriteItems(const std::vector<const ModelNode*>& items, Pasteboard& pasteboard) const;
    bool tableViewWriteRows(PortList table, const std::vector<std::size_t>& rows, Pasteboard& pasteboard) const;
    [[nodiscard]] static DropDecision tableViewValidateDrop(PortList table, const Pasteboard& pasteboard);
    bool tableViewAcceptDrop(PortList table, const Pasteboard& pasteboard, std::size_t row, DropOperation operation);
    void addOrRemoveOutput(int segment) { m_setup.addOrRemove(PortList::Outputs, segment); }
    void addOrRemoveInitialization(int segment) { m_setup.addOrRemove(PortList::Initializations, segment); }
    void addOrRemoveStepper(int segment) { m_setup.addOrRemove(PortList::Steppers, segment); }

    // -- The run --------------------------------------------------------------------------------------------------
    void runSimulation() { m_run.runSimulation(); }
    void simulationStartOrAbort() { m_run.simulationStartOrAbort(); }
    void abortSimulation() { m_run.abortSimulation(); }
    void checkForDirtyModelDocument() { m_run.checkForDirtyModelDocument(); }
    void doRun() { m_run.doRun(); }
    [[nodiscard]] RunControl& runControl() { return m_run; }
    /// Called when a run was started, waits for its turn or has ended.
    void setRunObserver(std::function<void()> observer) { m_runObserver = std::move(observer); }

    // -- Results --------------------------------------------------------------------------------------------------
    /// Reads the last run's table by the grid that is chosen, in one go: a failure leaves the new grid and nothing else
    /// behind. @throws ResultTableMissing after its alert, OrreryError
    const RunResults& buildResults() override;
    [[nodiscard]] const RunResults& results() const { return m_results; }
    /// By which grid the results are read, and how that differs from the setup which ran.
    [[nodiscard]] const GridChoice& gridChoice() const { return m_gridChoice; }
    /// Reads the last run's table again by the other grid: that of the setup which ran, or the document's. Nothing
    /// while a run is under way or where the two agree.
    void readByOtherGrid();
    [[nodiscard]] std::string resultTablePath() const;
    // Each step and part of the results alone.
    void constructIndependentVariables();
    void constructDependentVariables(); // @throws as buildResults
    void getSimulationData();           // @throws OrreryError
    [[nodiscard]] std::vector<IndependentVariable>& independentVariables() { return m_results.grid.variables; }
    [[nodiscard]] const std::vector<IndependentVariable>& independentVariables() const {
        return m_results.grid.variables;
    }
    void setIndependentVariables(std::vector<IndependentVariable> variables);
    [[nodiscard]] std::vector<ResponseVariable>& dependentVariables() { return m_results.responses.variables; }
    [[nodiscard]] const std::vector<ResponseVariable>& dependentVariables() const {
        return m_results.responses.variables;
    }
    void setDependentVariables(std::vector<ResponseVariable> variables);
    [[nodiscard]] const std::vector<std::string>& responseVariableLabels() const { return m_results.responses.labels; }
    void setResponseVariableLabels(std::vector<std::string> labels) { m_results.responses.labels = std::move(labels); }
    [[nodiscard]] const CellBlock& simulationData() const { return m_results.table.cells; }
    void setSimulationData(CellBlock data);
    [[nodiscard]] const std::vector<float>& yMax() const { return m_results.table.maxima; }
    void setYMax(std::vector<float> maxima) { m_results.table.maxima = std::move(maxima); }
    [[nodiscard]] std::uint32_t nRowsOfData() const { return m_results.grid.nRowsOfData; }
    [[nodiscard]] std::string sweepSummary() const; // of the setup as it stands now
    [[nodiscard]] SetupProblems setupProblems();    // as it stands now
    [[nodiscard]] PortFaults& portFaults() { return m_model.portFaults(); }
    [[nodiscard]] std::vector<std::uint32_t> makeCurrentIndexSet() const;
    [[nodiscard]] std::vector<std::string> usedFiles() const; // by commands and problems: absolute, some empty
    void saveToDorado(); // returns at once, and does nothing while the last one still looks for Dorado
    /// Whether the plot shows an earlier run than the present results.
    [[nodiscard]] bool plotIsOutdated() const { return m_plotIsOutdated; }

    // -- The plot -------------------------------------------------------------------------------------------------
    /// Shows what is chosen of the results. A plot of millions of cells is built behind the wait panel; where the user
    /// cancels it, the plot is cleared. @throws as showPlot
    void setupPlotView();
    void updateScale() { setupPlotView(); }
    void updatePlot(const SettingsSender& sender);
    // Each part of the plot's building alone, for those rows of the layout that was last set up.
    void makePlotForDimensions(std::uint32_t dimensions, const std::vector<std::uint32_t>& indices);
    [[nodiscard]] std::vector<float> make2DVertexData(const std::vector<std::uint32_t>& indices); // resets the camera
    [[nodiscard]] std::vector<float> make3DVertexData(const std::vector<std::uint32_t>& indices) const;
    /// What a person does at a control of the plot tab: a step of undo, which goes on while the control moves. It never
    /// marks the document edited.
    void changePlot(PlotControl control, const std::function<void()>& change);
    // Each of these is such a step, and draws the plot anew. @throws as setupPlotView, with the choice made
    void chooseRole(std::size_t row, PlotRole role); // taken from the variable that has the axis
    void hold(std::size_t row, float constant, PlotAct act);
    /// Sets what the act is about of the responses, which may be records of earlier results.
    void changeResponses(std::vector<ResponseVariable> records, PlotAct act, const ResponseVariable::Value& value);
    void resetCameraByHand();
    void endPlotMove() { m_setup.history().endMove(); } // the control was let go
    [[nodiscard]] PlotState plotState() const;
    /// nSurfaces, xEdges, zEdges, xQuads and zQuads.
    [[nodiscard]] const PlotLayout& plotLayout() const { return m_plot.layout(); }

    // -- Camera, light, rotation: they read and write the plot view, and are 0 without one --------------------------
    [[nodiscard]] float eyeXPos() const;
    [[nodiscard]] float eyeYPos() const;
    [[nodiscard]] float eyeZPos() const;
    void setEyeXPos(float x);
    void setEyeYPos(float y);
    void setEyeZPos(float z);
    [[nodiscard]] float eyeXDir() const;
    [[nodiscard]] float eyeYDir() const;
    [[nodiscard]] float eyeZDir() const;
    void setEyeXDir(float x);
    void setEyeYDir(float y);
    void setEyeZDir(float z);
    [[nodiscard]] float lightHeight() const;
    void setLightHeight(float height);
    [[nodiscard]] float lightSliderMax() const { return m_lightSliderMax; }
    [[nodiscard]] float lightSliderMin() const { return m_lightSliderMin; }
    void setLightSliderMax(float max) { m_lightSliderMax = max; }
    void setLightSliderMin(float min) { m_lightSliderMin = min; }
    void resetCamera();
    [[nodiscard]] float yRotation() const;
    void setYRotation(float sliderValue);
    void incYRotation(float step);
    void animationTimer(); // one tick
    void toggleAnimatedRotation();
    [[nodiscard]] bool isAnimated() const { return m_isAnimated; }
    [[nodiscard]] float yRotationSliderValue() const { return m_yRotationSliderValue; }

private:
    void saveDocument(std::function<void(bool)> didSave) override;
    bool mayRun() override;
    void keepStartedSetup() override;
    void clearSweepForRun() override;
    void runStateChanged() override;

    void putPlotChange(const PlotChange& change);
    void putViewChange(const PlotChange& change);
    void importModelOrLeaveIt(bool treeIsOfSameModel);
    KnownFile writeSetup(const SetupDictionary& setup, const std::string& path);
    void keepUnparsedFile(const std::string& path);
    void showSheet(const AlertText& text);
    void sendTo(RemoteObject* companion);
    void setResults(RunResults results);
    void reloadSettings();
    void readTable(const std::function<void(const TableReadOptions&)>& read);
    void readWhileWaiting(const std::function<void(const TableReadOptions&)>& read);
    [[nodiscard]] std::string absoluteSetupPath() const; // empty without a file
    [[nodiscard]] bool asksToWriteOver(const std::vector<std::string>& files);
    void keepPlotChoices();
    [[nodiscard]] std::vector<std::string> layOutGrid();
    void restorePlotChoices();
    void clearPlot();
    void whileDrawing(const std::function<void(PlotView&, const BuildOptions&)>& draw);
    void redrawPlot();

    DocumentServices m_services;
    DocumentOutlets m_outlets;
    std::function<void()> m_runObserver;
    std::function<void(std::function<void(bool)>)> m_saveHandler;

    SetupEditing m_setup;
    DocumentModel m_model;
    std::optional<std::string> m_filePath;
    KnownFile m_knownFile; // at that path
    bool m_isUnsavedCopy = false;
    bool m_isOurs = true; // the setup was written here, or the user has allowed its run
    std::string m_unparsedFault;
    std::string m_unparsedBytes; // of the file that was opened, when it was no setup; kept beside the first save

    StartedSetup m_startedSetup; // of the present or last run
    GridChoice m_gridChoice;
    RunResults m_results;
    PlotChoices m_earlierChoices; // of the last run that had any
    bool m_plotIsOutdated = false;
    bool m_looksForCompanion = false;

    PlotSession m_plot;
    std::unique_ptr<RunLoop::Source> m_timer;
    bool m_isAnimated = false;
    float m_yRotationSliderValue = 0;
    float m_lightSliderMax = 0;
    float m_lightSliderMin = 0;

    RunControl m_run;
    std::shared_ptr<int> m_alive = std::make_shared<int>(0); // expires with this document: panels answer later
};

/// The application came to the front: refreshes the model of every document whose model file has changed, in order. A
/// document whose import fails says so in its own window, and the others go on.
void applicationDidBecomeActive(const std::vector<MyDocument*>& documents);

} // namespace orrery

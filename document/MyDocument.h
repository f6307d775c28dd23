#pragma once

#include "document/DocumentCamera.h"
#include "document/DocumentFile.h"
#include "document/DocumentMessages.h"
#include "document/DocumentModel.h"
#include "document/DocumentOutlets.h"
#include "document/DocumentPlot.h"
#include "document/DocumentServices.h"
#include "document/ResultHandover.h"
#include "document/ResultReading.h"
#include "document/RunKeeping.h"
#include "document/SetupEditing.h"
#include "document/Toolbar.h"
#include "platform/Pasteboard.h"
#include "platform/xml/XmlDocument.h"
#include "run/RunControl.h"
#include "run/SetupProblem.h"
#include "run/results/ResultsFile.h"

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

/// One simulation setup and everything derived from it: the hub between window, model, run and plot.
///
/// It introduces to each other the rooms that do the work (file, setup, model, results, plot, camera, run) and keeps
/// the names by which a window's controls know their actions, as short calls into them. It reaches its window through
/// outlets that may be absent. Main thread only.
class MyDocument : private RunHost {
public:
    /// A document without a setup, as opening a file starts with.
    explicit MyDocument(DocumentServices services);
    MyDocument(const MyDocument&) = delete;
    MyDocument& operator=(const MyDocument&) = delete;
    ~MyDocument() override;

    // -- The rooms ------------------------------------------------------------------------------------------------
    [[nodiscard]] SetupEditing& setup() { return m_setup; }
    [[nodiscard]] const SetupEditing& setup() const { return m_setup; }
    [[nodiscard]] DocumentFile& file() { return m_file; }
    [[nodiscard]] const DocumentFile& file() const { return m_file; }
    [[nodiscard]] DocumentModel& model() { return m_model; }
    [[nodiscard]] const DocumentModel& model() const { return m_model; }
    [[nodiscard]] RunControl& runControl() { return m_run; }
    [[nodiscard]] const RunKeeping& keeping() const { return m_keeping; }
    [[nodiscard]] ResultReading& reading() { return m_reading; }
    [[nodiscard]] const ResultReading& reading() const { return m_reading; }
    [[nodiscard]] const RunResults& results() const { return m_reading.results(); } // of the last run
    [[nodiscard]] DocumentPlot& plot() { return m_plot; }
    [[nodiscard]] const DocumentPlot& plot() const { return m_plot; }

    // -- The setup and its file -----------------------------------------------------------------------------------
    /// Makes this a new, untitled setup: the defaults unless a setup is present, and its observation.
    void initWithType(std::string_view typeName);
    [[nodiscard]] SetupDictionary& theDictionary() { return m_setup.dictionary(); }
    [[nodiscard]] const SetupDictionary& theDictionary() const { return m_setup.dictionary(); }
    void setTheDictionary(SetupDictionary dictionary) { m_setup.setDictionary(std::move(dictionary)); }
    void observeValueForKeyPath(std::string_view /*key*/) { updateChangeCount(ChangeKind::Done); }
    void updateChangeCount(ChangeKind kind) { m_setup.updateChangeCount(kind); }
    [[nodiscard]] XmlDocument convertToXML() const;
    void convertFromXML(const XmlDocument& document);
    bool loadDataRepresentation(std::string_view bytes, std::string_view typeName); // @throws as DocumentFile::load
    /// By value: the caller's may be this document's own. @throws as DocumentFile::read
    void readFromFile(std::string path) { m_file.read(std::move(path)); }
    void writeToURL(const std::string& path, std::string_view /*typeName*/) { m_file.write(path); }
    /// Writes as writeToURL, then the document is at that path and unedited. In another directory a relative model path
    /// becomes absolute, in the file as in the document, also for what can be undone.
    void saveToFile(const std::string& path);
    /// Reads the document's file again; edits since the last save and their undo are gone. @throws OrreryError
    void revertToFile();
    /// How a save that a run asks for is done (a window may have to ask for a name); by default saveToFile.
    void setSaveHandler(std::function<void(std::function<void(bool)>)> handler) { m_saveHandler = std::move(handler); }

    // -- The window -----------------------------------------------------------------------------------------------
    [[nodiscard]] static std::string_view windowNibName() { return "MyDocument"; }
    void windowControllerDidLoadNib() {} // the base behaviour suffices
    void setOutlets(const DocumentOutlets& outlets);
    [[nodiscard]] const DocumentOutlets& outlets() const { return m_outlets; }
    /// The window has been loaded: imports the model, starts the animation timer, resets camera and light bounds. A
    /// model that cannot be imported is reported in a sheet, and the rest is set up all the same.
    void awakeFromNib();
    /// The window closes: nothing calls the document any more.
    void close();
    bool validateTag(CommandTag tag);
    [[nodiscard]] bool validateMenuItem(std::int32_t tag);
    void tabViewDidSelectTabViewItem(std::string_view identifier);

    // -- The model ------------------------------------------------------------------------------------------------
    void makeModelTree(const std::string& path) { m_model.makeTree(path); }
    void updateModelTree() { m_model.update(m_file.modelPath()); }
    void refreshModel() { m_model.refresh(m_file.modelPath()); } // updateModelTree, a failure shown in a sheet
    void selectModel();
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
    [[nodiscard]] std::string sweepSummary() const; // of the setup as it stands now
    [[nodiscard]] SetupProblems setupProblems();    // as it stands now

    // -- The run --------------------------------------------------------------------------------------------------
    void runSimulation() { m_run.runSimulation(); }
    void simulationStartOrAbort() { m_run.simulationStartOrAbort(); }
    void abortSimulation() { m_run.abortSimulation(); }
    void checkForDirtyModelDocument() { m_run.checkForDirtyModelDocument(); }
    void doRun() { m_run.doRun(); }
    /// Called when a run was started, waits for its turn or has ended.
    void setRunObserver(std::function<void()> observer) { m_runObserver = std::move(observer); }

    // -- Results --------------------------------------------------------------------------------------------------
    /// Reads the last run's table again by the other grid: that of the setup which ran, or the document's. Nothing
    /// while a run is under way or where the two agree.
    void readByOtherGrid();
    void constructIndependentVariables() { m_reading.constructIndependentVariables(); }
    void constructDependentVariables() { m_reading.constructDependentVariables(); }
    void getSimulationData() { m_reading.getSimulationData(); }
    [[nodiscard]] std::vector<IndependentVariable>& independentVariables() { return last().grid.variables; }
    [[nodiscard]] const std::vector<IndependentVariable>& independentVariables() const {
        return results().grid.variables;
    }
    void setIndependentVariables(std::vector<IndependentVariable> variables) {
        m_reading.setIndependentVariables(std::move(variables));
    }
    [[nodiscard]] std::vector<ResponseVariable>& dependentVariables() { return last().responses.variables; }
    [[nodiscard]] const std::vector<ResponseVariable>& dependentVariables() const {
        return results().responses.variables;
    }
    void setDependentVariables(std::vector<ResponseVariable> variables) {
        m_reading.setDependentVariables(std::move(variables));
    }
    [[nodiscard]] const std::vector<std::string>& responseVariableLabels() const { return results().responses.labels; }
    void setResponseVariableLabels(std::vector<std::string> labels) { last().responses.labels = std::move(labels); }
    [[nodiscard]] const CellBlock& simulationData() const { return results().table.cells; }
    void setSimulationData(CellBlock data) { m_reading.setSimulationData(std::move(data)); }
    [[nodiscard]] const std::vector<float>& yMax() const { return results().table.maxima; }
    void setYMax(std::vector<float> maxima) { last().table.maxima = std::move(maxima); }
    [[nodiscard]] std::uint32_t nRowsOfData() const { return results().grid.nRowsOfData; }
    [[nodiscard]] std::vector<std::uint32_t> makeCurrentIndexSet() const;
    void saveToDorado() { m_handover.start(); }
    /// Takes the results of a run that was kept, in place of those that there are; setupPlotView draws them.
    /// @throws OrreryError as openResultsFile, and while a run is under way, with nothing changed
    void openResults(const std::string& path);
    [[nodiscard]] bool hasResultsToKeep() const; // of no run that is under way
    bool keepResultsAs(const std::string& path) const { return m_keeping.keepAs(results(), path); } // @throws as that
    /// Looks whether a run of this setup was kept, when there are no results to see; keeping() tells of it.
    void lookForLastRun();
    /// Makes this a new, untitled setup: the one that a kept run was of, which need not be in place any more; the
    /// default one where the file does not hold it. openRun shows its results, too. @throws as openResultsFile
    void openSetupOf(const std::string& resultsPath) { readSetupOf(openResultsFile(resultsPath)); }
    void openRun(const std::string& resultsPath);
    [[nodiscard]] std::vector<std::string> usedFiles() const; // by commands and problems: absolute, some empty

    // -- The plot -------------------------------------------------------------------------------------------------
    void setupPlotView() { m_plot.draw(); } // @throws as showPlot
    void updateScale() { setupPlotView(); }
    void updatePlot(const SettingsSender& sender) { m_plot.update(sender); }
    void makePlotForDimensions(std::uint32_t dimensions, const std::vector<std::uint32_t>& indices) {
        m_plot.makePlotForDimensions(dimensions, indices);
    }
    [[nodiscard]] std::vector<float> make2DVertexData(const std::vector<std::uint32_t>& indices) {
        return m_plot.make2DVertexData(indices);
    }
    [[nodiscard]] std::vector<float> make3DVertexData(const std::vector<std::uint32_t>& indices) const {
        return m_plot.make3DVertexData(indices);
    }

    // -- Camera, light, rotation: they read and write the plot view, and are 0 without one --------------------------
    [[nodiscard]] float eyeXPos() const { return m_camera.coordinate(&CameraRecord::viewPos, &Vector3::x); }
    [[nodiscard]] float eyeYPos() const { return m_camera.coordinate(&CameraRecord::viewPos, &Vector3::y); }
    [[nodiscard]] float eyeZPos() const { return m_camera.coordinate(&CameraRecord::viewPos, &Vector3::z); }
    void setEyeXPos(float x) { m_camera.setCoordinate(&CameraRecord::viewPos, &Vector3::x, x); }
    void setEyeYPos(float y) { m_camera.setCoordinate(&CameraRecord::viewPos, &Vector3::y, y); }
    void setEyeZPos(float z) { m_camera.setCoordinate(&CameraRecord::viewPos, &Vector3::z, z); }
    [[nodiscard]] float eyeXDir() const { return m_camera.coordinate(&CameraRecord::viewDir, &Vector3::x); }
    [[nodiscard]] float eyeYDir() const { return m_camera.coordinate(&CameraRecord::viewDir, &Vector3::y); }
    [[nodiscard]] float eyeZDir() const { return m_camera.coordinate(&CameraRecord::viewDir, &Vector3::z); }
    void setEyeXDir(float x) { m_camera.setCoordinate(&CameraRecord::viewDir, &Vector3::x, x); }
    void setEyeYDir(float y) { m_camera.setCoordinate(&CameraRecord::viewDir, &Vector3::y, y); }
    void setEyeZDir(float z) { m_camera.setCoordinate(&CameraRecord::viewDir, &Vector3::z, z); }
    [[nodiscard]] float lightHeight() const { return m_camera.lightHeight(); }
    void setLightHeight(float height) { m_camera.setLightHeight(height); }
    [[nodiscard]] float lightSliderMax() const { return m_lightSliderMax; }
    [[nodiscard]] float lightSliderMin() const { return m_lightSliderMin; }
    void setLightSliderMax(float max) { m_lightSliderMax = max; }
    void setLightSliderMin(float min) { m_lightSliderMin = min; }
    void resetCamera() { m_camera.reset(); }
    [[nodiscard]] float yRotation() const { return m_camera.yRotation(); }
    void setYRotation(float sliderValue) { m_camera.setYRotation(sliderValue); }
    void incYRotation(float step) { m_camera.incYRotation(step); }
    void animationTimer() { m_camera.tick(); }
    void toggleAnimatedRotation() { m_camera.toggleAnimation(); }
    [[nodiscard]] bool isAnimated() const { return m_camera.isAnimated(); }
    [[nodiscard]] float yRotationSliderValue() const { return m_camera.sliderValue(); }

private:
    [[nodiscard]] bool hasUnsavedChanges() const override { return m_setup.hasUnsavedChanges(); }
    void saveDocument(std::function<void(bool)> didSave) override;
    [[nodiscard]] std::optional<std::string> filePath() const override { return m_file.path(); }
    [[nodiscard]] bool isUnsavedCopy() const override { return m_file.isUnsavedCopy(); }
    bool mayRun() override { return m_file.mayRun(); }
    void keepStartedSetup() override;
    void engineWrote(std::string_view text) override { m_keeping.hear(text); }
    void clearSweepForRun() override;
    const RunResults& buildResults() override;
    void runStateChanged() override;

    void readSetupOf(const KeptRun& kept);
    void showRun(const std::string& path, KeptRun kept);
    void importModelOrLeaveIt(bool treeIsOfSameModel);
    [[nodiscard]] RunResults& last() { return m_reading.results(); }

    DocumentServices m_services;
    DocumentOutlets m_outlets;
    std::function<void()> m_runObserver;
    std::function<void(std::function<void(bool)>)> m_saveHandler;
    float m_lightSliderMax = 0;
    float m_lightSliderMin = 0;

    DocumentMessages m_messages{m_outlets, m_services};
    SetupEditing m_setup;
    DocumentFile m_file{m_setup, m_messages, m_services};
    DocumentModel m_model;
    RunKeeping m_keeping{m_services, m_outlets};
    ResultReading m_reading;
    DocumentCamera m_camera{m_outlets};
    DocumentPlot m_plot{m_reading, m_camera, m_setup, m_outlets};
    ResultHandover m_handover;
    RunControl m_run;
    std::shared_ptr<int> m_alive = std::make_shared<int>(0); // expires with this document: panels answer later
};

/// The application came to the front: refreshes the model of every document whose model file has changed, in order. A
/// document whose import fails says so in its own window, and the others go on.
void applicationDidBecomeActive(const std::vector<MyDocument*>& documents);

} // namespace orrery

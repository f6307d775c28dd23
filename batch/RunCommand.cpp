#include "batch/Command.h"
#include "batch/JsonWriter.h"
#include "batch/Output.h"
#include "batch/Report.h"
#include "batch/ResultJson.h"
#include "batch/SetupFiles.h"
#include "document/MyDocument.h"
#include "platform/Files.h"
#include "platform/OrreryError.h"
#include "platform/TemporaryDirectory.h"
#include "platform/native/PosixChildProcess.h"
#include "platform/qt/QtEventLoop.h"

#include <CLI/CLI.hpp>
#include <unistd.h>

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace orrery {

namespace {

struct RunOptions {
    std::string setup;
    std::string engine;
    bool noResults = false;
    bool report = false;
    bool wait = false;
};

bool isExecutable(const std::string& path) {
    std::error_code failure;
    return std::filesystem::is_regular_file(path, failure) && ::access(path.c_str(), X_OK) == 0;
}

/// Shows the engine's text on standard error as it comes.
class StatusOnStandardError final : public StatusView {
public:
    ~StatusOnStandardError() override { endLine(); }

    void setString(std::string_view text) override { appendString(text); }
    void setNeedsDisplay() override {}
    void appendString(std::string_view text) override {
        if (text.empty()) return;
        writeToStandardError(text);
        m_lineIsOpen = text.back() != '\n';
    }
    void endLine() {
        if (m_lineIsOpen) appendString("\n");
    }

private:
    bool m_lineIsOpen = false;
};

/// One run of one document in a program without a window.
class HeadlessRun {
public:
    explicit HeadlessRun(const RunOptions& options)
        : m_engine(options.engine), m_launcher(m_loop.runLoop()), m_document(services()) {
        openDocument(absolutePath(options.setup));
        m_document.runControl().setWaitsForTurn(options.wait);
        DocumentOutlets outlets;
        outlets.statusView = &m_status;
        m_document.setOutlets(outlets);
    }

    /// Runs to the end or to an interrupt. @return exitDone when there are results
    int run() {
        m_document.setRunObserver([this] {
            if (m_document.runControl().state() == RunControl::State::Idle) m_loop.quit(0);
        });
        m_loop.onTerminationSignal([this](int) {
            m_interrupted = true;
            m_document.abortSimulation(); // which ends the loop, as every end of a run does
        });
        m_document.runSimulation();
        if (m_document.runControl().state() != RunControl::State::Idle) m_loop.run();
        m_status.endLine();
        if (m_interrupted) return exitInterrupted;
        return m_document.runControl().resultsBuilt() ? exitDone : exitFailed;
    }

    [[nodiscard]] const MyDocument& document() const { return m_document; }

private:
    [[nodiscard]] DocumentServices services() {
        DocumentServices services;
        services.run.launcher = &m_launcher;
        services.run.runLoop = &m_loop.runLoop();
        services.run.enginePath = [this] { return enginePath(); };
        services.run.temporaryDirectory = temporaryDirectory();
        services.run.message = [this](const std::string& message) {
            m_status.endLine();
            printMessage(message);
        };
        return services;
    }

    [[nodiscard]] std::optional<std::string> enginePath() const {
        return m_engine.empty() ? pathForAuxiliaryExecutable("Zephyr") : absolutePath(m_engine);
    }

    /// Everything that can be wrong before the run is told before it, on one line.
    void openDocument(const std::string& setupPath) {
        ModelTree tree = loadModel(loadSetup(setupPath), setupPath);
        m_document.readFromFile(setupPath);
        m_document.setModelTree(std::move(tree));
        if (!m_engine.empty() && !isExecutable(m_engine)) {
            throw OrreryError("is no program that can be run.", {.file = m_engine},
                              "Name the engine's executable file with --engine.");
        }
    }

    std::string m_engine;
    StatusOnStandardError m_status;
    QtEventLoop m_loop{"orrery-batch"};
    PosixChildProcessLauncher m_launcher;
    MyDocument m_document;
    bool m_interrupted = false;
};

void printSummary(const MyDocument& document) {
    Output output("-");
    JsonWriter json(output);
    writeResults(json,
                 {.labels = document.responseVariableLabels(),
                  .responses = document.dependentVariables(),
                  .nRowsOfData = document.nRowsOfData(),
                  .maxima = document.yMax(),
                  .cells = document.simulationData()},
                 true);
    output.write("\n");
    output.finish();
}

void printReport(const MyDocument& document) {
    Output output("-");
    output.write(reportText({.variables = document.independentVariables(),
                             .responses = document.dependentVariables(),
                             .nRowsOfData = document.nRowsOfData(),
                             .cells = document.simulationData(),
                             .files = {*document.filePath(), document.resultTablePath()}}));
    output.finish();
}

int runSetup(const RunOptions& options) {
    HeadlessRun run(options);
    const int code = run.run();
    if (code == exitDone && options.report) {
        printReport(run.document());
    } else if (code == exitDone && !options.noResults) {
        printSummary(run.document());
    }
    return code;
}

} // namespace

Action buildRunCommand(CLI::App& parser) {
    const auto options = std::make_shared<RunOptions>();
    parser.add_option("SETUP", options->setup, "The setup file")->required();
    parser.add_option("--engine", options->engine, "The engine's executable (default: Zephyr beside this program)");
    auto* noResults = parser.add_flag("--no-results", options->noResults, "Print nothing of the results");
    parser.add_flag("--report", options->report, "Print the results for people")->excludes(noResults);
    parser.add_flag("--wait", options->wait, "Wait while another run uses the temporary directory");
    return [options] { return runSetup(*options); };
}

} // namespace orrery

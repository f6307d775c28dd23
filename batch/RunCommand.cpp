#include "batch/Command.h"
#include "batch/JsonWriter.h"
#include "batch/Output.h"
#include "batch/Report.h"
#include "batch/ResultJson.h"
#include "batch/SetupFiles.h"
#include "document/MyDocument.h"
#include "platform/Calendar.h"
#include "platform/Files.h"
#include "platform/Log.h"
#include "platform/TemporaryDirectory.h"
#include "platform/UserDefaults.h"
#include "platform/native/PosixChildProcess.h"
#include "platform/qt/QtEventLoop.h"
#include "platform/qt/TerminationSignals.h"
#include "platform/values/OrreryError.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>
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
    std::string keep;
    bool noResults = false;
    bool report = false;
    bool wait = false;
    bool acceptStale = false;
    bool acceptPartial = false;
    bool overwriteOutputs = false;
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

/// Lets a signal end the reading of a large table, which the loop cannot pass on meanwhile.
class CancelBySignal final : public WaitPanel {
public:
    void begin(std::string_view /*what*/) override {}
    [[nodiscard]] bool update(double /*fractionDone*/) override { return !terminationAsked(); }
    void end() override {}
};

/// One run of one document in a program without a window.
class HeadlessRun {
public:
    explicit HeadlessRun(const RunOptions& options)
        : m_engine(options.engine), m_launcher(m_loop.runLoop()), m_document(services(options.overwriteOutputs)) {
        openDocument(absolutePath(options.setup));
        m_document.runControl().setWaitsForTurn(options.wait);
        DocumentOutlets outlets;
        outlets.statusView = &m_status;
        outlets.waitPanel = &m_cancel;
        m_document.setOutlets(outlets);
    }

    /// Runs to the end or to an interrupt. @return exitDone when the whole table of this run was read
    int run() {
        m_document.setRunObserver([this] {
            if (m_document.runControl().state() == RunControl::State::Idle) m_loop.quit(0);
        });
        m_loop.onTerminationSignal([this](int) {
            m_interrupted = true;
            m_document.abortSimulation(); // which ends the loop, as every end of a run does
        });
        giveUpWritesWhen(terminationAsked); // nobody may read what the engine writes
        setLogSink([](std::string_view line) { writeToStandardError(std::string(line) + '\n'); });
        m_document.runSimulation();
        if (m_document.runControl().state() != RunControl::State::Idle) m_loop.run();
        m_status.endLine();
        if (m_interrupted || terminationAsked()) return exitInterrupted;
        return outcome().isWhole() ? exitDone : exitFailed;
    }

    [[nodiscard]] const MyDocument& document() const { return m_document; }
    [[nodiscard]] const RunOutcome& outcome() { return m_document.runControl().outcome(); }

private:
    [[nodiscard]] DocumentServices services(bool writesOverOutputs) {
        DocumentServices services;
        services.userDefaults = &m_defaults; // they know which setups were written here
        services.writesOverOutputs = writesOverOutputs;
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

    /// Everything that can be wrong before the run is reported before it, on one line.
    void openDocument(const std::string& setupPath) {
        ModelTree tree = loadModel(loadSetup(setupPath), setupPath);
        m_document.readFromFile(setupPath);
        m_document.model().setTree(std::move(tree));
        printProblems(m_document.setupProblems(), setupPath);
        if (!m_engine.empty() && !isExecutable(m_engine)) {
            throw OrreryError("This is not a program that can be run.", {.file = m_engine},
                              "Name the engine's executable file with --engine.");
        }
    }

    std::string m_engine;
    FileUserDefaults m_defaults{FileUserDefaults::standardPath()};
    StatusOnStandardError m_status;
    CancelBySignal m_cancel;
    QtEventLoop m_loop{"orrery-batch"};
    PosixChildProcessLauncher m_launcher;
    MyDocument m_document;
    bool m_interrupted = false;
};

void printSummary(const MyDocument& document) {
    Output output("-");
    JsonWriter json(output);
    writeResults(json, document.results(), true);
    output.write("\n");
    output.finish();
}

void printReport(const MyDocument& document) {
    Output output("-");
    output.write(reportText(document.results(), {*document.file().path(), document.reading().tablePath()}));
    output.finish();
}

/// The options that are missing for results which are not this run's own and whole; empty when they may be printed.
std::string missingConsent(const RunOutcome& outcome, const RunOptions& options) {
    const char* const stale = outcome.staleSince && !options.acceptStale ? "--accept-stale" : "";
    const char* const partial = outcome.isPartial() && !options.acceptPartial ? "--accept-partial" : "";
    return fmt::format("{}{}{}", stale, *stale != 0 && *partial != 0 ? " and " : "", partial);
}

/// A run of an earlier date is not this one.
void keepRun(HeadlessRun& run, const std::string& path) {
    if (run.outcome().staleSince) {
        throw OrreryError("The results were not kept: the result table is not from this run.", {.file = path},
                          "Look why the engine left no table.");
    }
    (void)run.document().keepResultsAs(path); // there is no panel to cancel it by
}

int runSetup(const RunOptions& options) {
    if (!options.keep.empty()) (void)FileReplacement(options.keep); // what cannot be written is better known before
    HeadlessRun run(options);
    const int code = run.run();
    const RunOutcome& outcome = run.outcome();
    if (code == exitInterrupted || outcome.kind != RunOutcome::Kind::Results) return code; // the rest has been reported
    if (!options.keep.empty()) keepRun(run, options.keep);
    const std::string missing = missingConsent(outcome, options);
    if (!outcome.isWhole()) {
        printMessage(outcomeText(outcome, currentDate()) +
                     (missing.empty() ? "." : fmt::format("; not printed without {}.", missing)));
    }
    if (!missing.empty()) return code;
    try {
        if (options.report) {
            printReport(run.document());
        } else if (!options.noResults) {
            printSummary(run.document());
        }
    } catch (const OrreryError&) {
        if (terminationAsked()) return exitInterrupted; // the write was given up
        throw;
    }
    return code;
}

} // namespace

Action buildRunCommand(CLI::App& parser) {
    const auto options = std::make_shared<RunOptions>();
    parser.add_option("SETUP", options->setup, "The setup file")->required();
    parser.add_option("--engine", options->engine, "The engine's executable (default: Zephyr beside this program)");
    parser.add_option("--keep", options->keep, "Keep the results in this file (NetCDF)");
    auto* noResults = parser.add_flag("--no-results", options->noResults, "Print nothing of the results");
    parser.add_flag("--report", options->report, "Print the results for people")->excludes(noResults);
    parser.add_flag("--wait", options->wait, "Wait while another run uses the temporary directory");
    parser.add_flag("--accept-stale", options->acceptStale,
                    "Print the results even where the table is that of an earlier run");
    parser.add_flag("--accept-partial", options->acceptPartial, "Print the results even where rows are missing");
    parser.add_flag("--overwrite-outputs", options->overwriteOutputs,
                    "Let a setup from elsewhere overwrite files outside its folder");
    parser.footer("Exit code: 0 when this run left its whole table, 1 otherwise, even with --accept-…; 130 "
                  "after an interrupt.\nHow the engine ended is reported, but does not decide the code.");
    return [options] { return runSetup(*options); };
}

} // namespace orrery

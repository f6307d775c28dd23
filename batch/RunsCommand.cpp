#include "batch/Command.h"
#include "batch/JsonWriter.h"
#include "batch/Output.h"
#include "platform/values/Numbers.h"
#include "platform/values/Utf8.h"
#include "run/results/RunHistory.h"
#include "run/results/RunStore.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace orrery {
namespace {

struct RunsOptions {
    std::optional<std::string> setup;
    std::string store;
    bool json = false;
    std::vector<std::string> pins;
    std::vector<std::string> unpins;
    std::vector<std::pair<std::string, std::string>> notes;
    std::vector<std::string> removals;

    [[nodiscard]] bool changes() const {
        return !pins.empty() || !unpins.empty() || !notes.empty() || !removals.empty();
    }
};

RunStore storeOf(const RunsOptions& options) {
    return RunStore(options.store.empty() ? RunStore::defaultDirectory() : options.store);
}

/// The path of a run that is named by its file's name alone, or as it is.
std::string pathOf(const RunStore& store, const std::string& name) {
    return name.find('/') == std::string::npos ? store.directory() + '/' + name : name;
}

void change(const RunStore& store, const RunsOptions& options) {
    for (const std::string& name : options.unpins) {
        store.setPinned(pathOf(store, name), false);
    }
    for (const std::string& name : options.pins) {
        store.setPinned(pathOf(store, name), true);
    }
    for (const auto& [name, note] : options.notes) {
        store.setNote(pathOf(store, name), note);
    }
    for (const std::string& name : options.removals) {
        store.remove(pathOf(store, name));
    }
}

using Changes = std::vector<std::optional<std::string>>;

void writeJson(Output& output, const std::vector<KeptRunInfo>& runs, const Changes& changes) {
    JsonWriter json(output);
    json.beginArray();
    for (std::size_t i = 0; i < runs.size(); ++i) {
        const KeptRunInfo& run = runs[i];
        json.beginObject();
        json.member("path", run.path);
        json.member("setupPath", run.setupPath);
        json.member("started", run.started);
        json.member("ended", run.ended);
        json.member("engineEnd", run.engineEnd);
        json.member("rows", std::uint64_t{run.rows});
        json.member("rowsFound", std::uint64_t{run.rowsFound});
        json.member("bytes", run.bytes);
        json.member("pinned", run.pinned);
        json.member("note", run.note);
        if (changes[i]) json.member("changes", *changes[i]); // of the first run of a setup there are none to tell
        json.endObject();
    }
    json.endArray();
    output.write("\n");
}

std::string dateText(const KeptRunInfo& run) {
    constexpr std::string_view utc = " +0000";
    if (!run.started.ends_with(utc)) return run.started.empty() ? "unknown" : run.started;
    return run.started.substr(0, run.started.size() - utc.size());
}

/// A line below the run's own, when there is something to say.
std::string detail(std::string_view what, std::string_view text) {
    return text.empty() ? "" : fmt::format("    {}: {}\n", what, escapedForLine(text));
}

std::string changesText(const std::optional<std::string>& changes) {
    if (!changes) return "";
    return changes->empty() ? "nothing" : *changes;
}

/// The file's name ends a line, since nothing bounds its length.
void writeTable(Output& output, const RunStore& store, const std::vector<KeptRunInfo>& runs, const Changes& changes) {
    output.write(fmt::format("{:<19}  {:>17}  {:>8}  {:<6}  file in {}\n", "started (UTC)", "rows", "size", "",
                             escapedForLine(store.directory())));
    std::uint64_t bytes = 0;
    for (std::size_t i = 0; i < runs.size(); ++i) {
        const KeptRunInfo& run = runs[i];
        bytes += run.bytes;
        output.write(fmt::format("{:<19}  {:>17}  {:>8}  {:<6}  {}\n", dateText(run), rowsText(run),
                                 sizeText(run.bytes), run.pinned ? "pinned" : "",
                                 escapedForLine(std::string_view(run.path).substr(store.directory().size() + 1))));
        output.write(detail("setup", run.setupPath) + detail("changed since the run before", changesText(changes[i])));
        output.write(detail("end", badEnd(run)) + detail("note", run.note));
    }
    output.write(fmt::format("{} {}, {}\n", runs.size(), runs.size() == 1 ? "run" : "runs", sizeText(bytes)));
}

void list(const RunStore& store, const RunsOptions& options) {
    const std::vector<KeptRunInfo> runs = store.runs(options.setup);
    const Changes changes = changesSinceRunBefore(runs);
    Output output("-");
    if (options.json) {
        writeJson(output, runs, changes);
    } else if (runs.empty()) {
        output.write(fmt::format("No runs {}are kept in {}.\n", options.setup ? "of this setup " : "",
                                 escapedForLine(store.directory())));
    } else {
        writeTable(output, store, runs, changes);
    }
    output.finish();
}

int listOrChange(const RunsOptions& options) {
    const RunStore store = storeOf(options);
    if (options.changes()) {
        change(store, options);
    } else {
        list(store, options);
    }
    return exitDone;
}

} // namespace

Action buildRunsCommand(CLI::App& parser) {
    const auto options = std::make_shared<RunsOptions>();
    auto* const setup = parser.add_option("SETUP", options->setup, "List the runs of this setup alone");
    auto* const json = parser.add_flag("--json", options->json, "Print the list as JSON");
    const auto add = [&](const char* name, const char* what, auto& files, const char* help) {
        parser.add_option(name, files, help)->type_name(what)->allow_extra_args(false)->excludes(setup)->excludes(json);
    };
    add("--pin", "FILE", options->pins, "Keep this run whatever the limits are");
    add("--unpin", "FILE", options->unpins, "Let it go as others do");
    add("--note", "FILE TEXT", options->notes, "Put a note beside it; an empty text takes the note away");
    add("--remove", "FILE", options->removals, "Remove it for good");
    parser.add_option("--store", options->store, "The folder of the runs (default: the one in your data directory)");
    return [options] { return listOrChange(*options); };
}

} // namespace orrery

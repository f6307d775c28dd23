#include "run/results/RunStore.h"

#include "platform/FileUse.h"
#include "platform/Files.h"
#include "platform/SystemReason.h"
#include "platform/values/Date.h"
#include "platform/values/OrreryError.h"
#include "run/ResultsMark.h"
#include "run/results/ResultsFile.h"
#include "run/results/RunIndex.h"
#include "run/results/RunNotes.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <string_view>
#include <system_error>
#include <tuple>

namespace orrery {

namespace {

namespace fs = std::filesystem;

std::string environment(const char* name) {
    const char* const value = std::getenv(name);
    return value == nullptr ? "" : value;
}

[[noreturn]] void throwUnusable(const std::string& directory, const std::string& what, const std::error_code& error) {
    throw OrreryError(fmt::format("The folder of kept runs cannot be {}: {}.", what, systemReason(error.value())),
                      {.file = directory}, "Check its permissions, or set XDG_DATA_HOME to a folder of your own.");
}

/// For this user alone: runs hold models and setups.
void makeDirectory(const std::string& directory) {
    std::error_code error;
    if (fs::is_directory(directory, error)) return;
    fs::create_directories(directory, error);
    if (!error) fs::permissions(directory, fs::perms::owner_all, error);
    if (error) throwUnusable(directory, "made", error);
}

/// The setup's name without its ending, short enough to leave room in a file's name, and not a hidden one.
std::string nameOf(const std::string& setupPath) {
    constexpr std::size_t longest = 150; // bytes
    std::string name = fs::path(setupPath).stem().string();
    name.erase(0, std::min(name.find_first_not_of('.'), name.size()));
    if (name.size() > longest) {
        name.resize(longest);
        while (!name.empty() && static_cast<unsigned char>(name.back()) >= 0x80) {
            name.pop_back(); // the cut may have split one
        }
    }
    return name.empty() ? "run" : name;
}

/// " 2026-11-26 09.30.00": without the colons that other systems do not take in a name.
std::string dateInName(const std::string& started) {
    const auto date = dateWithString(started);
    if (!date) return "";
    std::string text = ' ' + dateDescription(*date).substr(0, std::string_view("yyyy-mm-dd hh:mm:ss").size());
    std::ranges::replace(text, ':', '.');
    return text;
}

/// A run and what it is ordered by.
struct ListedRun {
    KeptRunInfo info;
    Date date; // when it started, or else was written
};

/// What the index says of the file, or else the file, for the index, too; std::nullopt when that is none of ours.
std::optional<ResultsHeader> knownHeader(const std::string& path, const FileIdentity& identity, RunIndex& index) {
    const std::string name = fs::path(path).filename().string();
    std::optional<ResultsHeader> header = index.find(name, identity);
    if (header || !looksLikeResultsFile(path)) return header;
    header = readResultsHeader(path);
    index.add(name, identity, *header);
    return header;
}

/// The run in the file; std::nullopt for one that is not ours or cannot be read.
std::optional<ListedRun> listedRun(const std::string& path, RunIndex& index) {
    const auto identity = fileIdentity(path);
    if (!identity) return std::nullopt;
    try {
        auto known = knownHeader(path, *identity, index);
        if (!known) return std::nullopt;
        ResultsHeader& header = *known;
        RunNotes notes = readRunNotes(path);
        const Date date = dateWithString(header.record.started).value_or(identity->modified);
        return ListedRun{
            .info = {.path = path,
                     .setupPath = std::move(header.record.setup.path),
                     .setup = std::move(header.record.setup.bytes).value_or(""),
                     .started = std::move(header.record.started),
                     .ended = std::move(header.record.ended),
                     .engineEnd = std::move(header.record.engineEnd),
                     .rows = header.rows,
                     .rowsFound = header.rowsFound,
                     .bytes = identity->size,
                     .pinned = notes.pinned,
                     .note = notes.note ? *std::move(notes.note) : fmt::format("{}", fmt::join(header.notes, " "))},
            .date = date};
    } catch (const OrreryError&) {
        return std::nullopt;
    }
}

/// Regular files of a results file's name; links are others' affair.
std::vector<std::string> resultsFiles(const std::string& directory) {
    std::vector<std::string> paths;
    std::error_code error;
    fs::directory_iterator entry(directory, error);
    for (; !error && entry != fs::directory_iterator(); entry.increment(error)) {
        std::error_code gone; // meanwhile
        if (entry->path().extension() == resultsFileEnding && fs::is_regular_file(entry->symlink_status(gone))) {
            paths.push_back(entry->path().string());
        }
    }
    if (error && error != std::errc::no_such_file_or_directory) throwUnusable(directory, "read", error);
    return paths;
}

void removeFiles(const std::string& path) {
    std::error_code error;
    fs::remove(path, error);
    if (error) {
        throw OrreryError("The run cannot be removed: " + systemReason(error.value()) + ".", {.file = path},
                          "Check the permissions of its folder.");
    }
    fs::remove(runNotesPath(path), error); // without its run it does no harm
}

enum class Removal { Done, Pinned, InUse };

/// Asks for the pin once nobody else can set it any more.
Removal tryRemove(const std::string& path) {
    const auto use = FileUse::tryBegin(path, FileUse::Kind::Alone);
    if (!use) return Removal::InUse;
    if (readRunNotes(path).pinned) return Removal::Pinned;
    removeFiles(path);
    return Removal::Done;
}

/// Changes what is said of the run, while nobody can remove it.
template <class Change>
void changeNotes(const std::string& path, Change change) {
    const auto use = FileUse::tryBegin(path, FileUse::Kind::Shared);
    if (!use) {
        throw OrreryError("Another Orrery is removing this run.", {.file = path}, "List the runs again.");
    }
    RunNotes notes = readRunNotes(path);
    change(notes);
    writeRunNotes(path, notes);
}

bool isSamePlace(const fs::path& one, const fs::path& other) {
    std::error_code error;
    return one == other || fs::equivalent(one, other, error);
}

} // namespace

RunStore::RunStore(std::string directory) : m_directory(absolutePath(directory)) {}

std::string RunStore::defaultDirectory() {
    const std::string data = environment("XDG_DATA_HOME");
    if (data.starts_with('/')) return absolutePath(data + "/orrery/runs");
    const std::string home = environment("HOME");
    if (!home.starts_with('/')) {
        throw OrreryError("There is no place to keep runs in: the home directory is not known.", {},
                          "Set HOME or XDG_DATA_HOME.");
    }
    return absolutePath(home + "/.local/share/orrery/runs");
}

std::string RunStore::newPath(const std::string& setupPath, const std::string& started) const {
    makeDirectory(m_directory);
    const std::string stem = fmt::format("{}/{}{}", m_directory, nameOf(setupPath), dateInName(started));
    std::string path = stem + resultsFileEnding;
    for (int number = 2; fileExists(path) || fileExists(runNotesPath(path)); ++number) {
        path = fmt::format("{} ({}){}", stem, number, resultsFileEnding);
    }
    return path;
}

std::vector<KeptRunInfo> RunStore::runs(const std::optional<std::string>& setupPath) const {
    RunIndex index(m_directory);
    std::vector<ListedRun> listed;
    for (const std::string& path : resultsFiles(m_directory)) {
        std::optional<ListedRun> run = listedRun(path, index);
        const bool isWanted =
            run && (!setupPath || run->info.setupPath == *setupPath || run->info.setupPath == absolutePath(*setupPath));
        if (isWanted) listed.push_back(*std::move(run));
    }
    index.save();
    // Those of one second by the numbers after their names.
    std::ranges::sort(listed, std::greater(), [](const ListedRun& each) {
        return std::tuple(each.date, each.info.path.size(), std::string_view(each.info.path));
    });
    std::vector<KeptRunInfo> infos;
    infos.reserve(listed.size());
    for (ListedRun& run : listed) {
        infos.push_back(std::move(run.info));
    }
    return infos;
}

void RunStore::setPinned(const std::string& path, bool pinned) const {
    requireKept(path);
    changeNotes(path, [pinned](RunNotes& notes) { notes.pinned = pinned; });
}

void RunStore::setNote(const std::string& path, const std::string& note) const {
    requireKept(path);
    changeNotes(path, [&note](RunNotes& notes) { notes.note = note; });
}

void RunStore::remove(const std::string& path) const {
    requireKept(path);
    switch (tryRemove(path)) {
    case Removal::Done:
        return;
    case Removal::Pinned:
        throw OrreryError("This run is pinned.", {.file = path}, "Unpin it, then remove it.");
    case Removal::InUse:
        throw OrreryError("This run is open, here or in another Orrery.", {.file = path}, "Close it, then remove it.");
    }
}

std::vector<std::string> RunStore::applyLimits(const StoreLimits& limits, const std::string& keep) const {
    std::vector<KeptRunInfo> all = runs();
    std::erase_if(all, [](const KeptRunInfo& run) { return run.pinned; });
    std::size_t count = all.size();
    std::uint64_t bytes = 0;
    for (const KeptRunInfo& run : all) {
        bytes += run.bytes;
    }
    std::vector<std::string> removed;
    for (auto oldest = all.rbegin(); oldest != all.rend() && (count > limits.runs || bytes > limits.bytes); ++oldest) {
        if (isSamePlace(oldest->path, keep)) continue;
        if (tryRemove(oldest->path) == Removal::Done) removed.push_back(oldest->path);
        --count;
        bytes -= oldest->bytes;
    }
    removeSaveLitter(m_directory);
    return removed;
}

void RunStore::requireKept(const std::string& path) const {
    const fs::path file(absolutePath(path));
    std::error_code error;
    if (!isSamePlace(file.parent_path(), m_directory) || file.extension() != resultsFileEnding ||
        !fs::is_regular_file(fs::symlink_status(file, error))) {
        throw OrreryError(fmt::format("This is no run that is kept in {}.", m_directory), {.file = path},
                          "Choose one of the list of kept runs.");
    }
    (void)readResultsHeader(path);
}

} // namespace orrery

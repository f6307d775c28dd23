#include "run/results/RunNotes.h"

#include "platform/Files.h"
#include "platform/values/OrreryError.h"

#include <fmt/format.h>
#include <nlohmann/json.hpp>

namespace orrery {

namespace {

constexpr std::size_t longestNote = 64U << 10U;  // bytes
constexpr std::uint64_t largestFile = 1U << 20U; // a note of that length, every byte of it escaped
constexpr const char* pinnedKey = "pinned";
constexpr const char* noteKey = "note";

RunNotes parse(const std::string& text) {
    const auto json = nlohmann::json::parse(text);
    RunNotes notes{.pinned = json.at(pinnedKey).get<bool>(), .note = {}};
    if (json.contains(noteKey)) notes.note = json.at(noteKey).get<std::string>();
    return notes;
}

} // namespace

std::string runNotesPath(const std::string& resultsPath) {
    return resultsPath + ".json";
}

RunNotes readRunNotes(const std::string& resultsPath) {
    const std::string path = runNotesPath(resultsPath);
    if (!fileExists(path)) return {};
    try {
        return parse(readWholeFile(path, largestFile));
    } catch (const nlohmann::json::exception&) {
    } catch (const OrreryError&) {
        if (!fileExists(path)) return {}; // it went with its run, meanwhile
    }
    return {.pinned = true, .note = {}};
}

void writeRunNotes(const std::string& resultsPath, const RunNotes& notes) {
    if (notes.note && notes.note->size() > longestNote) {
        throw OrreryError(fmt::format("The note is longer than {} bytes.", longestNote), {.file = resultsPath},
                          "Shorten it, and keep the rest in a file of its own.");
    }
    nlohmann::json json{{pinnedKey, notes.pinned}};
    if (notes.note) json[noteKey] = *notes.note;
    const auto replaceMalformed = nlohmann::json::error_handler_t::replace;
    replaceFile(runNotesPath(resultsPath), json.dump(2, ' ', false, replaceMalformed) + '\n');
}

} // namespace orrery

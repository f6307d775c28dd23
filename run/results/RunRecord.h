#pragma once

#include "document/setup/SetupDictionary.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace orrery {

/// A file that took part in a run, as it was then.
struct RecordedFile {
    std::string path;
    std::string sha256;               // 64 hexadecimal digits; empty when the file could not be read
    std::uint64_t size = 0;           // bytes
    std::optional<std::string> bytes; // none where it is larger than is kept
};

/// A model up to this size is kept in a results file, byte by byte.
inline constexpr std::uint64_t largestKeptModel = 16U << 20U;

/// The hexadecimal SHA-256 of the bytes.
[[nodiscard]] std::string sha256Of(std::string_view bytes);

/// Reads the file for a record; of one that cannot be read there is only the path. @param limit of the bytes kept
[[nodiscard]] RecordedFile recordFile(const std::string& path, std::uint64_t limit = UINT64_MAX);

/// Where results come from: all that is needed to tell what ran and to run it again. Texts are empty where something is
/// not known.
struct RunRecord {
    RecordedFile setup;
    RecordedFile model;
    std::string enginePath;
    std::string engineEnd;  // "the engine ended with exit code 3"
    std::string engineText; // what it printed, UTF-8
    std::string started;    // "2026-11-26 09:30:00 +0000"
    std::string ended;
    std::string version; // of Orrery
};

/// What the files say of a run of the setup, as they are now: nothing of the engine, and no times.
[[nodiscard]] RunRecord recordOfSetup(const SetupDictionary& setup, const std::string& setupPath);

/// The texts of a record (const or not) but for the engine's, with the name of each in a file.
template <class Record>
[[nodiscard]] auto recordTexts(Record& record) {
    using Text = decltype(&record.enginePath);
    return std::array<std::pair<const char*, Text>, 5>{{{"engine_path", &record.enginePath},
                                                        {"engine_end", &record.engineEnd},
                                                        {"started", &record.started},
                                                        {"ended", &record.ended},
                                                        {"orrery_version", &record.version}}};
}

} // namespace orrery

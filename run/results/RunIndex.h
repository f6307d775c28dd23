#pragma once

#include "platform/Files.h"
#include "run/results/ResultsFile.h"

#include <map>
#include <optional>
#include <string>

namespace orrery {

/// What the results files of a directory say of themselves, in one file there, since to open each of many takes long
/// where the disk has to look for it. A file that is another one than it was is not found. Nothing is lost with it.
class RunIndex {
public:
    /// Reads it; one that is missing or damaged is an empty one.
    explicit RunIndex(const std::string& directory);

    /// @param name of the file in the directory
    [[nodiscard]] std::optional<ResultsHeader> find(const std::string& name, const FileIdentity& identity) const;
    void add(const std::string& name, const FileIdentity& identity, const ResultsHeader& header);
    /// Writes it where something was added and it can be written; of files that are gone nothing stays.
    void save() const;

private:
    struct Entry {
        FileIdentity identity;
        ResultsHeader header; // of the record's files only the setup
    };
    void read();

    std::string m_directory;
    std::map<std::string, Entry> m_entries; // per file name
    bool m_isChanged = false;
};

} // namespace orrery

#include "run/results/RunIndex.h"

#include "platform/values/OrreryError.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstdint>
#include <string_view>
#include <vector>

namespace orrery {

namespace {

using nlohmann::json;

constexpr int formatNumber = 1;
constexpr std::size_t hashLength = 64;
constexpr std::size_t largestSetup = 64U << 10U; // bytes; with larger ones the index would be slower than the files

std::string indexPath(const std::string& directory) {
    return directory + "/.orrery-runs";
}

json jsonOf(const Date& date) {
    return {date.seconds, date.nanoseconds};
}

Date dateOf(const json& value) {
    return {.seconds = value.at(0).get<std::int64_t>(), .nanoseconds = value.at(1).get<std::int32_t>()};
}

json jsonOf(const FileIdentity& identity) {
    return {identity.device, identity.inode, identity.size, jsonOf(identity.modified), jsonOf(identity.changed)};
}

FileIdentity identityOf(const json& value) {
    return {.device = value.at(0).get<std::uint64_t>(),
            .inode = value.at(1).get<std::uint64_t>(),
            .size = value.at(2).get<std::uint64_t>(),
            .modified = dateOf(value.at(3)),
            .changed = dateOf(value.at(4))};
}

json jsonOf(const ResultsHeader& header) {
    const RunRecord& record = header.record;
    return {record.setup.path, record.setup.bytes.value_or(""),
            record.started,    record.ended,
            record.engineEnd,  header.rows,
            header.rowsFound,  header.notes};
}

ResultsHeader headerOf(const json& value) {
    ResultsHeader header;
    header.record.setup.path = value.at(0).get<std::string>();
    header.record.setup.bytes = value.at(1).get<std::string>();
    header.record.started = value.at(2).get<std::string>();
    header.record.ended = value.at(3).get<std::string>();
    header.record.engineEnd = value.at(4).get<std::string>();
    header.rows = value.at(5).get<std::uint32_t>();
    header.rowsFound = value.at(6).get<std::uint32_t>();
    header.notes = value.at(7).get<std::vector<std::string>>();
    return header;
}

} // namespace

RunIndex::RunIndex(const std::string& directory) : m_directory(directory) {
    try {
        if (fileExists(indexPath(directory))) read();
    } catch (const json::exception&) {
        m_entries.clear();
    } catch (const OrreryError&) {
        m_entries.clear();
    }
}

/// Not JSON's own text, since setups and paths need not be UTF-8. The hash in front tells a damaged one, which could
/// be nested or long without bounds.
void RunIndex::read() {
    const std::string bytes = readWholeFile(indexPath(m_directory));
    const std::string_view packed = std::string_view(bytes).substr(std::min(hashLength, bytes.size()));
    if (!bytes.starts_with(sha256Of(packed))) return;
    const json index = json::from_msgpack(packed);
    if (index.at(0) != formatNumber) return;
    for (const json& entry : index.at(1)) {
        m_entries[entry.at(0).get<std::string>()] = {.identity = identityOf(entry.at(1)),
                                                     .header = headerOf(entry.at(2))};
    }
}

std::optional<ResultsHeader> RunIndex::find(const std::string& name, const FileIdentity& identity) const {
    const auto found = m_entries.find(name);
    if (found == m_entries.end() || found->second.identity != identity) return std::nullopt;
    return found->second.header;
}

void RunIndex::add(const std::string& name, const FileIdentity& identity, const ResultsHeader& header) {
    if (header.record.setup.bytes.value_or("").size() > largestSetup) return;
    m_entries[name] = {.identity = identity, .header = header};
    m_isChanged = true;
}

void RunIndex::save() const {
    if (!m_isChanged) return;
    json entries = json::array();
    for (const auto& [name, entry] : m_entries) {
        if (!fileExists(m_directory + '/' + name)) continue;
        entries.push_back({name, jsonOf(entry.identity), jsonOf(entry.header)});
    }
    std::string packed;
    json::to_msgpack({formatNumber, std::move(entries)}, packed);
    try {
        replaceFile(indexPath(m_directory), sha256Of(packed) + packed);
    } catch (const OrreryError&) { // in a folder that can only be read the next list takes as long as this one
    }
}

} // namespace orrery

#include "model/PortLists.h"

#include "platform/values/OrreryError.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <utility>

namespace orrery {

namespace {

constexpr const char* newCoordinates = "{ 0, 0 }";

struct ListTraits {
    std::string_view key;
    std::string_view portType;
    std::string_view rowType;
    std::string_view word;
};

const ListTraits& traitsOf(PortList list) {
    static constexpr std::array<ListTraits, 3> traits = {{
        {setup_key::outputs, outputPathPboardType, outputPboardType, "Output"},
        {setup_key::initializations, inputPathPboardType, initializationPboardType, "Initialization"},
        {setup_key::steppers, inputPathPboardType, stepperPboardType, "Stepper"},
    }};
    return traits.at(static_cast<std::size_t>(list));
}

bool holds(const std::vector<std::string>& types, std::string_view type) {
    return std::find(types.begin(), types.end(), type) != types.end();
}

EntryList::iterator position(EntryList& entries, std::size_t row) {
    return entries.begin() + static_cast<std::ptrdiff_t>(row);
}

/// Takes the rows (ascending) out of the list and returns their entries; rows outside the list are passed over.
EntryList extractRows(EntryList& entries, const std::vector<std::size_t>& rows) {
    EntryList taken;
    EntryList left;
    auto next = rows.begin();
    for (std::size_t row = 0; row < entries.size(); ++row) {
        const bool isTaken = next != rows.end() && *next == row;
        if (isTaken) ++next;
        (isTaken ? taken : left).push_back(std::move(entries[row]));
    }
    entries = std::move(left);
    return taken;
}

} // namespace

std::string_view listWord(PortList list) {
    return traitsOf(list).word;
}

std::string_view listKey(PortList list) {
    return traitsOf(list).key;
}

std::string_view portPboardType(PortList list) {
    return traitsOf(list).portType;
}

PortDirection portDirection(PortList list) {
    return list == PortList::Outputs ? PortDirection::Output : PortDirection::Input;
}

std::string_view rowPboardType(PortList list) {
    return traitsOf(list).rowType;
}

DropDecision validateDrop(PortList list, const std::vector<std::string>& pasteboardTypes) {
    if (holds(pasteboardTypes, rowPboardType(list))) return {DragOperation::Move, true};
    if (holds(pasteboardTypes, portPboardType(list))) return {DragOperation::Copy, false};
    return {};
}

Entry entryForPort(std::string portPath) {
    return Entry{{"coordinates", newCoordinates}, {"portPath", std::move(portPath)}};
}

Entry newEntry(PortList list) {
    return list == PortList::Initializations ? Entry{{"coordinates", newCoordinates}} : Entry{};
}

void dropPort(EntryList& entries, std::string portPath, std::size_t row, DropOperation operation) {
    if (operation == DropOperation::On && row < entries.size()) {
        entries[row].set("portPath", std::move(portPath));
    } else {
        entries.insert(position(entries, std::min(row, entries.size())), entryForPort(std::move(portPath)));
    }
}

std::vector<std::size_t> moveRows(EntryList& entries, const std::vector<std::size_t>& rows, std::size_t row) {
    const std::size_t target = std::min(row, entries.size());
    const auto above = std::lower_bound(rows.begin(), rows.end(), target) - rows.begin(); // moved from above the target
    const std::size_t first = target - static_cast<std::size_t>(above);

    EntryList block = extractRows(entries, rows);
    std::vector<std::size_t> newRows(block.size());
    for (std::size_t index = 0; index < block.size(); ++index) {
        newRows[index] = first + index;
    }
    entries.insert(position(entries, first), std::make_move_iterator(block.begin()),
                   std::make_move_iterator(block.end()));
    return newRows;
}

void removeRows(EntryList& entries, const std::vector<std::size_t>& rows) {
    extractRows(entries, rows);
}

std::string archiveRows(const std::vector<std::size_t>& rows) {
    return fmt::format("rows {}", fmt::join(rows, " "));
}

std::optional<std::vector<std::size_t>> unarchiveRows(std::string_view payload) {
    constexpr std::string_view mark = "rows ";
    if (!payload.starts_with(mark)) return std::nullopt;
    std::vector<std::size_t> rows;
    const char* next = payload.data() + mark.size();
    const char* const end = payload.data() + payload.size();
    while (next != end) {
        std::size_t row = 0;
        const auto [behind, error] = std::from_chars(next, end, row);
        const bool ascends = rows.empty() || row > rows.back();
        if (error != std::errc() || !ascends || (behind != end && *behind != ' ')) return std::nullopt;
        rows.push_back(row);
        next = behind == end ? end : behind + 1;
    }
    return rows;
}

std::string archivePortPath(std::string_view portPath) {
    return std::string(portPath);
}

std::optional<std::string> unarchivePortPath(std::string_view payload) {
    if (payload.empty()) return std::nullopt;
    return std::string(payload);
}

} // namespace orrery

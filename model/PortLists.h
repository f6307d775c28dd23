#pragma once

#include "document/setup/SetupDictionary.h"
#include "model/PortPaths.h"
#include "platform/Pasteboard.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orrery {

/// The three lists of a setup that name ports.
enum class PortList { Outputs, Initializations, Steppers };

// Pasteboard types, private to the application.
inline constexpr std::string_view inputPathPboardType = "InputPathPboardType";
inline constexpr std::string_view outputPathPboardType = "OutputPathPboardType";
inline constexpr std::string_view initializationPboardType = "InitializationPboardType";
inline constexpr std::string_view outputPboardType = "OutputPboardType";
inline constexpr std::string_view stepperPboardType = "StepperPboardType";

/// The key of the list in the setup dictionary.
[[nodiscard]] std::string_view listKey(PortList list);
/// The type of ports that may be dropped on the list.
[[nodiscard]] std::string_view portPboardType(PortList list);
/// Which way the list's ports face.
[[nodiscard]] PortDirection portDirection(PortList list);
/// The type of the list's own rows while they are dragged.
[[nodiscard]] std::string_view rowPboardType(PortList list);

/// What undo and the tables call the list: "Output", "Initialization", "Stepper".
[[nodiscard]] std::string_view listWord(PortList list);

enum class DropOperation { On = 0, Above = 1 };
enum class DragOperation { None = 0, Copy = 1, Move = 16 };

/// What may be done with a drop proposed on a list.
struct DropDecision {
    DragOperation operation = DragOperation::None;
    bool retargetAbove = false; // the drop goes above the proposed row, whatever was proposed
};
[[nodiscard]] DropDecision validateDrop(PortList list, const std::vector<std::string>& pasteboardTypes);

/// A new entry for a dropped port: coordinates "{ 0, 0 }" and the port path.
[[nodiscard]] Entry entryForPort(std::string portPath);
/// The entry that the add control makes: coordinates "{ 0, 0 }" for initializations, else empty.
[[nodiscard]] Entry newEntry(PortList list);

/// Puts a dropped port into the list: on a row it becomes that entry's port path, above a row a new entry is inserted
/// there, after the last one it is appended.
void dropPort(EntryList& entries, std::string portPath, std::size_t row, DropOperation operation);

/// Moves the rows (ascending, each once, within the list) to just above `row`, as one block in their old order.
/// Returns the block's new rows.
std::vector<std::size_t> moveRows(EntryList& entries, const std::vector<std::size_t>& rows, std::size_t row);

/// Removes the rows (ascending, each once; rows outside the list are passed over).
void removeRows(EntryList& entries, const std::vector<std::size_t>& rows);

/// A set of row numbers as a pasteboard payload, and back; std::nullopt when the payload is none.
[[nodiscard]] std::string archiveRows(const std::vector<std::size_t>& rows);
[[nodiscard]] std::optional<std::vector<std::size_t>> unarchiveRows(std::string_view payload);

/// A list of one port path as a pasteboard payload, and its first element back.
[[nodiscard]] std::string archivePortPath(std::string_view portPath);
[[nodiscard]] std::optional<std::string> unarchivePortPath(std::string_view payload);

} // namespace orrery

#pragma once

#include "document/SetupEditing.h"
#include "model/ModelTree.h"
#include "model/PortLists.h"
#include "platform/Pasteboard.h"

#include <cstddef>
#include <vector>

namespace orrery {

/// Puts the first item's path on the pasteboard, by which a list takes the port; false when it is not a port.
bool writePort(const std::vector<const ModelNode*>& items, Pasteboard& pasteboard);

/// Puts the list's rows on the pasteboard, to be moved within it.
void writeRows(PortList list, const std::vector<std::size_t>& rows, Pasteboard& pasteboard);

/// Adds the port, or moves the rows, that the pasteboard holds for the list; false when it holds neither.
bool acceptDrop(SetupEditing& setup, PortList list, const Pasteboard& pasteboard, std::size_t row,
                DropOperation operation);

} // namespace orrery

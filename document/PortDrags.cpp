#include "document/PortDrags.h"

#include "model/PortPaths.h"

#include <algorithm>
#include <optional>
#include <string>

namespace orrery {

bool writePort(const std::vector<const ModelNode*>& items, Pasteboard& pasteboard) {
    if (items.empty()) return false;
    const std::optional<PortReference> port = portReference(*items.front());
    if (!port) return false;
    const std::string type(port->direction == PortDirection::Input ? inputPathPboardType : outputPathPboardType);
    pasteboard.declareTypes({type});
    pasteboard.setData(archivePortPath(port->path), type);
    return true;
}

void writeRows(PortList list, const std::vector<std::size_t>& rows, Pasteboard& pasteboard) {
    const std::string type(rowPboardType(list));
    pasteboard.declareTypes({type});
    pasteboard.setData(archiveRows(rows), type);
}

bool acceptDrop(SetupEditing& setup, PortList list, const Pasteboard& pasteboard, std::size_t row,
                DropOperation operation) {
    const std::vector<std::string> types = pasteboard.types();
    const auto holds = [&types](std::string_view type) { return std::ranges::find(types, type) != types.end(); };
    if (holds(inputPathPboardType) || holds(outputPathPboardType)) {
        if (!holds(portPboardType(list))) return false;
        const auto path = unarchivePortPath(pasteboard.dataForType(std::string(portPboardType(list))));
        if (!path) return false;
        setup.drop(list, *path, row, operation);
    } else {
        if (!holds(rowPboardType(list))) return false;
        const auto rows = unarchiveRows(pasteboard.dataForType(std::string(rowPboardType(list))));
        if (!rows) return false;
        setup.moveRowsTo(list, *rows, row);
    }
    return true;
}

} // namespace orrery

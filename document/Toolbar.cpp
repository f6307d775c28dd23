#include "document/Toolbar.h"

#include <array>

namespace orrery {

namespace {

const std::array<ToolbarItem, 2>& items() {
    static const std::array<ToolbarItem, 2> all{
        ToolbarItem{"Run Simulation", "gimbal.jpg", "Run", ToolbarAction::RunSimulation, CommandTag::Run},
        ToolbarItem{"To Dorado", "Wren.tif", "Send To Dorado", ToolbarAction::SaveToDorado, CommandTag::Send}};
    return all;
}

} // namespace

const std::vector<std::string>& toolbarItemIdentifiers() {
    static const std::vector<std::string> identifiers{items()[0].identifier, items()[1].identifier};
    return identifiers;
}

ToolbarItem toolbarItem(std::string_view identifier) {
    for (const ToolbarItem& item : items()) {
        if (item.identifier == identifier) return item;
    }
    return {std::string(identifier), {}, {}, {}, {}};
}

} // namespace orrery

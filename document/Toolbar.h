#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orrery {

/// Commands that a tag ties to their enabling rule, on the toolbar and in menus.
enum class CommandTag : std::int32_t { Run = 1, Send = 2 };

/// The document commands that the toolbar offers.
enum class ToolbarAction { RunSimulation, SaveToDorado };

/// One item of the window's toolbar, shown with icon and label. An identifier that the toolbar does not know gives an
/// item with nothing but the identifier.
struct ToolbarItem {
    std::string identifier;
    std::string image; // name of the image resource
    std::string label;
    std::optional<ToolbarAction> action; // sent to the document
    std::optional<CommandTag> tag;
};

inline constexpr std::string_view toolbarIdentifier = "standard";

/// The identifiers of the items, in order: the allowed ones and the default set alike.
[[nodiscard]] const std::vector<std::string>& toolbarItemIdentifiers();
[[nodiscard]] ToolbarItem toolbarItem(std::string_view identifier);

} // namespace orrery

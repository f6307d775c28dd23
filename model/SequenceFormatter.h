#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <variant>

namespace orrery {

/// Formats value cells: shows a stored value unchanged, offers it for editing without its braces, accepts one number.
class SequenceFormatter {
public:
    /// What a cell holds: nothing, text, or a number that the formatter made.
    using ObjectValue = std::variant<std::monostate, std::string, float>;

    /// The text to show: the value itself; a number as its shortest decimal text that reads back the same.
    [[nodiscard]] static std::string stringForObjectValue(const ObjectValue& value);

    /// The text to edit: trimmed of blanks and tabs, without one leading "{" and one trailing "}".
    [[nodiscard]] static std::string editingStringForObjectValue(const ObjectValue& value);

    struct Parsed {
        std::optional<float> value;   // the number, or
        std::string errorDescription; // why there is none
    };
    /// Accepts exactly one number, white space and line breaks around it allowed.
    [[nodiscard]] static Parsed getObjectValue(std::string_view text);
};

} // namespace orrery

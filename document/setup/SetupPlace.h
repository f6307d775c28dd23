#pragma once

#include <cstddef>
#include <optional>
#include <string>

namespace orrery {

/// Where in a setup something stands: a setting, or in a port list a row and one of its fields.
struct SetupPlace {
    std::string key;                               // of the setting or of the list in the dictionary
    std::optional<std::size_t> row = std::nullopt; // in a list; without it the list as a whole
    std::string field = {};                        // of the row's entry; empty: the row as a whole

    friend bool operator==(const SetupPlace&, const SetupPlace&) = default;
};

} // namespace orrery

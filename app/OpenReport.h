#pragma once

#include "platform/Outlets.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace orrery {

/// What became of files that were opened in one go, for one message about all of them.
struct OpenReport {
    struct Failure {
        std::string name; // as it is shown
        std::string reason;
    };

    /// Windows that one go may open: a folder dropped by mistake must not cover the desktop.
    static constexpr std::size_t mostWindows = 20;

    std::vector<Failure> failures;
    std::size_t leftOut = 0; // files that were not tried, since too many windows were opened

    /// std::nullopt when all were opened.
    [[nodiscard]] std::optional<AlertText> alert() const;
};

} // namespace orrery

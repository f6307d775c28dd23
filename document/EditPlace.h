#pragma once

#include "document/UndoHistory.h"
#include "document/setup/SetupPlace.h"

#include <cstddef>
#include <vector>

namespace orrery {

/// Where an edit that was undone or redone is to be seen.
struct EditPlace {
    SetupPlace setup;              // without a key it is on the plot tab
    std::vector<std::size_t> rows; // of the list: those that came or changed
    PlotChange plot;
};

enum class Step { Undone, Redone };

[[nodiscard]] EditPlace placeOf(const UndoHistory::Edit& edit, Step step);

} // namespace orrery

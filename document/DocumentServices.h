#pragma once

#include "platform/Calendar.h"
#include "platform/Services.h"
#include "platform/UserDefaults.h"
#include "run/RunControl.h"
#include "run/table/ResultTable.h"

#include <cstdint>
#include <string>

namespace orrery {

/// What a document needs of the platform; nothing is owned, and all of it outlives the document.
struct DocumentServices {
    RunServices run;
    UserDefaults* userDefaults = nullptr;
    NamedServices* namedServices = nullptr; // absent: no companion can be reached
    const Calendar* calendar = nullptr;     // absent: the user's current calendar
    TableReadOptions tableReading;
    std::string storeDirectory;         // where runs are kept; empty: they are not
    std::uint64_t largestHeldTable = 0; // bytes of a table that is read into memory; 0: half of what is free
    bool writesOverOutputs = false;     // of setups that were not written here, without asking
};

} // namespace orrery

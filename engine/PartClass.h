#pragma once

#include "engine/PortNetwork.h"

namespace orrery::engine {

/// What the sample engine makes of a part, by its class.
enum class PartClass {
    Formula,    ///< KSEXPRESSION
    Delay,      ///< KSTVDD, KS2DTVDD
    Lookup,     ///< KSHTL, KSLOOKUP
    Random,     ///< KSRANDOM
    Weather,    ///< KSWEATHER
    FileColumn, ///< KSFILE
    Level,      ///< KSLEVEL
    Passing,    ///< anything else: passes its inputs through
};

[[nodiscard]] PartClass partClass(const NetworkPart& part);

/// Whether the output is computed by a rule or a rate; otherwise it passes an input of its part on.
[[nodiscard]] bool isComputed(const NetworkPart& part, const NetworkPort& output);

/// What an output or part is called in messages: port "/Field/Crop/biomass", or with the attribute after it.
[[nodiscard]] std::string portLabel(const NetworkPort& port, std::string_view attribute = {});
[[nodiscard]] std::string partLabel(const NetworkPart& part, std::string_view attribute = {});

} // namespace orrery::engine

#pragma once

namespace orrery {

/// Names of attributes, groups and variables that a results file is read by again.
namespace results_key {
inline constexpr const char* format = "orrery_format"; // of the root, the number of the version
inline constexpr long formatNumber = 1;
inline constexpr const char* longName = "long_name"; // a port's path
inline constexpr const char* units = "units";
// Of a coordinate, beside its values: what the sweep counts with.
inline constexpr const char* start = "sweep_start";
inline constexpr const char* step = "sweep_step";
inline constexpr const char* stop = "sweep_stop";
inline constexpr const char* heldAt = "held_at";
// Of a response.
inline constexpr const char* column = "column";
inline constexpr const char* port = "port_id";
inline constexpr const char* range = "actual_range";       // least and greatest value
inline constexpr const char* finiteRange = "finite_range"; // the same of the finite ones, where some are not
// Of the mask.
inline constexpr const char* rowsFound = "rows";
// The group of the run's record.
inline constexpr const char* run = "run";
inline constexpr const char* labels = "table_labels";
inline constexpr const char* notes = "notes";
} // namespace results_key

} // namespace orrery

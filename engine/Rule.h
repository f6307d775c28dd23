#pragma once

#include <cstdint>
#include <vector>

namespace orrery::engine {

/// Where in the run a value is asked for.
struct Moment {
    double time = 0;             // days since the start of the run
    double dayOfYear = 1;        // 1 up to 366, with a fraction
    std::uint64_t gridPoint = 0; // tells the combinations of stepper values and the cells apart
};

/// How one output gets its value from values that stand elsewhere, without a memory of its own.
class Rule {
public:
    virtual ~Rule() = default;
    [[nodiscard]] virtual double value(const Moment& moment) const = 0;
    /// The values that must be up to date before.
    [[nodiscard]] virtual std::vector<const double*> uses() const = 0;
};

} // namespace orrery::engine

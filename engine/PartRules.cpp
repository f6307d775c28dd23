#include "engine/PartRules.h"

#include <cmath>
#include <initializer_list>
#include <numbers>

namespace orrery::engine {

namespace {

/// A well mixed 64-bit number from a counter (the finaliser of splitmix64).
std::uint64_t mixed(std::uint64_t counter) {
    std::uint64_t bits = counter + 0x9E3779B97F4A7C15ULL;
    bits = (bits ^ (bits >> 30U)) * 0xBF58476D1CE4E5B9ULL;
    bits = (bits ^ (bits >> 27U)) * 0x94D049BB133111EBULL;
    return bits ^ (bits >> 31U);
}

/// In (0, 1), both ends excluded.
double unitInterval(std::uint64_t bits) {
    return (static_cast<double>(bits >> 11U) + 0.5) * 0x1p-53;
}

std::vector<const double*> usesOf(std::initializer_list<const Expression*> expressions) {
    std::vector<const double*> uses;
    for (const Expression* expression : expressions) {
        if (expression != nullptr) {
            uses.insert(uses.end(), expression->uses().begin(), expression->uses().end());
        }
    }
    return uses;
}

} // namespace

double FollowRule::value(const Moment&) const {
    return std::isnan(*m_fixed) ? *m_source : *m_fixed;
}

double TableRule::value(const Moment& moment) const {
    return m_table.valueAt(m_input == nullptr ? moment.dayOfYear : *m_input);
}

std::vector<const double*> TableRule::uses() const {
    return m_input == nullptr ? std::vector<const double*>() : std::vector<const double*>{m_input};
}

double YearlyCurveRule::value(const Moment& moment) const {
    const double phase = 2 * std::numbers::pi * (moment.dayOfYear - m_curve.peakDay.value()) / 365;
    const double height = m_curve.mean.value() + m_curve.amplitude.value() * std::cos(phase);
    return m_curve.minimum ? std::fmax(height, m_curve.minimum->value()) : height;
}

std::vector<const double*> YearlyCurveRule::uses() const {
    return usesOf({&m_curve.mean, &m_curve.amplitude, &m_curve.peakDay, m_curve.minimum ? &*m_curve.minimum : nullptr});
}

double RandomRule::value(const Moment& moment) const {
    const double low = m_draw.low.value();
    const double high = m_draw.high.value();
    // The small addition keeps a time that rounding left just below its interval's start inside it.
    const auto interval = static_cast<std::uint64_t>(moment.time / m_draw.intervalDays + 1e-6);
    const std::uint64_t stream = mixed(mixed(mixed(m_draw.seed) ^ moment.gridPoint) ^ interval);
    const double first = unitInterval(stream);
    if (!m_draw.normal) {
        return low + (high - low) * first;
    }
    const double second = unitInterval(mixed(stream));
    return low + high * std::sqrt(-2 * std::log(first)) * std::cos(2 * std::numbers::pi * second);
}

std::vector<const double*> RandomRule::uses() const {
    return usesOf({&m_draw.low, &m_draw.high});
}

} // namespace orrery::engine

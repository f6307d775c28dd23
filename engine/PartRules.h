#pragma once

#include "engine/Expression.h"
#include "engine/LookupTable.h"
#include "engine/Rule.h"

#include <cstdint>
#include <optional>
#include <utility>
#include <vector>

namespace orrery::engine {

/// The value of a formula over a part's ports.
class FormulaRule : public Rule {
public:
    explicit FormulaRule(Expression formula) : m_formula(std::move(formula)) {}
    [[nodiscard]] double value(const Moment&) const override { return m_formula.value(); }
    [[nodiscard]] std::vector<const double*> uses() const override { return m_formula.uses(); }

private:
    Expression m_formula;
};

/// The value of a port elsewhere, unless the setup fixed one in this cell (NaN: it did not).
class FollowRule : public Rule {
public:
    FollowRule(const double* fixed, const double* source) : m_fixed(fixed), m_source(source) {}
    [[nodiscard]] double value(const Moment& moment) const override;
    [[nodiscard]] std::vector<const double*> uses() const override { return {m_source}; }

private:
    const double* m_fixed;
    const double* m_source;
};

/// A table's value at an input, or at the day of the year when the part has no input.
class TableRule : public Rule {
public:
    TableRule(LookupTable table, const double* input) : m_table(std::move(table)), m_input(input) {}
    [[nodiscard]] double value(const Moment& moment) const override;
    [[nodiscard]] std::vector<const double*> uses() const override;

private:
    LookupTable m_table;
    const double* m_input;
};

/// A yearly curve: mean + amplitude × cos(2π (day − peak day) / 365), not below a least value.
class YearlyCurveRule : public Rule {
public:
    struct Curve {
        Expression mean;
        Expression amplitude;
        Expression peakDay;
        std::optional<Expression> minimum;
    };
    explicit YearlyCurveRule(Curve curve) : m_curve(std::move(curve)) {}
    [[nodiscard]] double value(const Moment& moment) const override;
    [[nodiscard]] std::vector<const double*> uses() const override;

private:
    Curve m_curve;
};

/// A random number, drawn anew after each interval. The same seed, grid point and interval give the same number in
/// every run.
class RandomRule : public Rule {
public:
    struct Draw {
        std::uint64_t seed = 0;
        double intervalDays = 1;
        bool normal = false; // else uniform
        Expression low;      // uniform: lower bound; normal: mean
        Expression high;     // uniform: upper bound; normal: standard deviation
    };
    explicit RandomRule(Draw draw) : m_draw(std::move(draw)) {}
    [[nodiscard]] double value(const Moment& moment) const override;
    [[nodiscard]] std::vector<const double*> uses() const override;

private:
    Draw m_draw;
};

} // namespace orrery::engine

#pragma once

#include "platform/values/OrreryError.h"

#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace mu {
class Parser;
}

namespace orrery::engine {

/// What a formula may name, and where the values stand.
using Variables = std::map<std::string, double*, std::less<>>;

/// A formula compiled once. Its variables are read in place at each evaluation and must outlive it.
class Expression {
public:
    /// @param owner what the formula belongs to, for messages: port "/Field/Crop/biomass": "rate"
    /// @throws OrreryError naming the place, the owner and the fault in the formula
    Expression(const std::string& formula, const Variables& variables, const Place& place, const std::string& owner);
    Expression(Expression&&) noexcept;
    Expression& operator=(Expression&&) noexcept;
    Expression(const Expression&) = delete;
    Expression& operator=(const Expression&) = delete;
    ~Expression();

    [[nodiscard]] double value() const;
    /// The variables that the formula really uses.
    [[nodiscard]] const std::vector<const double*>& uses() const { return m_uses; }

private:
    std::unique_ptr<mu::Parser> m_parser; // none: a constant
    double m_constant = 0;
    std::vector<const double*> m_uses;
};

/// The name under which a formula knows a port: characters other than letters, digits and "_" become "_".
[[nodiscard]] std::string variableName(std::string_view portName);

} // namespace orrery::engine

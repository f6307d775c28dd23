#include "engine/Expression.h"

#include "platform/values/Quoted.h"

#include <muParser.h>

#include <cstddef>

namespace orrery::engine {

namespace {

/// muparser would assign to a port where the author meant a comparison.
bool assigns(std::string_view formula) {
    for (std::size_t at = formula.find('='); at != std::string_view::npos; at = formula.find('=', at + 1)) {
        const bool twoCharacters = at > 0 && std::string_view("<>!=").find(formula[at - 1]) != std::string_view::npos;
        if (twoCharacters) {
            continue;
        }
        if (at + 1 >= formula.size() || formula[at + 1] != '=') {
            return true;
        }
    }
    return false;
}

std::string namesOf(const Variables& variables) {
    std::string names;
    for (const auto& [name, value] : variables) {
        names += (names.empty() ? "" : ", ") + name;
    }
    return names;
}

} // namespace

Expression::Expression(const std::string& formula, const Variables& variables, const Place& place,
                       const std::string& owner)
    : m_parser(std::make_unique<mu::Parser>()) {
    const auto fail = [&](const std::string& reason) {
        throw OrreryError(owner + ": " + quoted(formula) + ": " + messageText(reason), place,
                          "Correct the formula; it may use " + namesOf(variables) + ".");
    };
    if (assigns(formula)) {
        fail("a single “=” compares nothing; write “==”.");
    }
    try {
        for (const auto& [name, value] : variables) {
            m_parser->DefineVar(name, value);
        }
        m_parser->SetExpr(formula);
        for (const auto& [name, value] : m_parser->GetUsedVar()) {
            m_uses.push_back(value);
        }
        m_constant = m_parser->Eval();
        if (m_parser->GetNumResults() != 1) {
            fail("a comma separates values here; write numbers with a point.");
        }
    } catch (const mu::ParserError& error) {
        fail(error.GetMsg());
    }
    if (m_uses.empty()) {
        m_parser.reset();
    }
}

Expression::Expression(Expression&&) noexcept = default;
Expression& Expression::operator=(Expression&&) noexcept = default;
Expression::~Expression() = default;

double Expression::value() const {
    return m_parser ? m_parser->Eval() : m_constant;
}

std::string variableName(std::string_view portName) {
    std::string name(portName);
    for (char& character : name) {
        const bool letter = (character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z');
        const bool digit = character >= '0' && character <= '9';
        if (!letter && !digit) {
            character = '_';
        }
    }
    if (name.empty() || (name.front() >= '0' && name.front() <= '9')) {
        name.insert(name.begin(), '_');
    }
    return name;
}

} // namespace orrery::engine

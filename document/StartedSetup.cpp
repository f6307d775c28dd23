#include "document/StartedSetup.h"

#include "document/setup/SetupReader.h"
#include "document/setup/SetupWriter.h"
#include "platform/Files.h"
#include "platform/values/Numbers.h"
#include "platform/values/OrreryError.h"
#include "platform/values/Quoted.h"
#include "run/SweepSummary.h"

#include <fmt/format.h>

#include <algorithm>
#include <bit>
#include <cstdint>
#include <exception>

namespace orrery {

namespace {

/// As bits, since a step may not be a number.
bool isSameAxis(const IndependentVariable& one, const IndependentVariable& other) {
    const auto bits = [](float value) { return std::bit_cast<std::uint32_t>(value); };
    return one.name() == other.name() && bits(one.start()) == bits(other.start()) &&
           bits(one.step()) == bits(other.step()) && one.stridesPerCycle() == other.stridesPerCycle();
}

std::string axisText(const IndependentVariable& variable) {
    return fmt::format("{} from {} by {}", quoted(variable.name()), shortestText(variable.start()),
                       shortestText(variable.step()));
}

/// Whether both say the same to an engine.
bool isSameSetup(const SetupDictionary& one, const SetupDictionary& other) {
    const auto asWritten = [](const SetupDictionary& setup) {
        return setupFileBytes(readSetup(setupFileBytes(setup, ""), "").dictionary, "");
    };
    try {
        return asWritten(one) == asWritten(other);
    } catch (const OrreryError&) {
        return false; // one that cannot be written never was
    }
}

} // namespace

StartedSetup::StartedSetup(const std::string& path) {
    try {
        LoadedSetup loaded = readSetup(readWholeFile(path), path);
        if (loaded.parsed) m_setup = std::move(loaded.dictionary);
        m_fault = loaded.fault;
    } catch (const std::exception& failure) {
        m_fault = failure.what();
    }
}

std::optional<SweepGrid> StartedSetup::grid(const Calendar& calendar) const {
    try {
        if (m_setup) return constructIndependentVariables(*m_setup, calendar);
    } catch (const OrreryError&) { // more rows than can be counted
    }
    return std::nullopt;
}

std::string StartedSetup::note(const SetupDictionary& documentsSetup) const {
    if (!m_fault.empty()) return "It is not known which setup ran: " + m_fault;
    if (!m_setup || isSameSetup(*m_setup, documentsSetup)) return {};
    return "The document's setup is not the one that ran: the results are those of its file as it was when the "
           "engine started.";
}

std::string GridChoice::text() const {
    if (difference.empty()) return {};
    const char* const what =
        ofStarted ? "The results are read by the grid of the setup that ran, which is not the document's"
                  : "The setup that ran has another grid than the document's, by which the results are read";
    return fmt::format("{}: {}.", what, difference);
}

std::string gridDifference(const SweepGrid& ran, const SweepGrid& documents) {
    if (std::ranges::equal(ran.variables, documents.variables, isSameAxis)) return {};
    std::string first = gridSizeText(ran);
    std::string second = gridSizeText(documents);
    if (first == second) {
        const auto [one, other] = std::ranges::mismatch(ran.variables, documents.variables, isSameAxis);
        first = axisText(*one);
        second = axisText(*other);
    }
    return fmt::format("{}, not {}", first, second);
}

} // namespace orrery

#include "run/SweepVariables.h"

#include "platform/values/Numbers.h"
#include "platform/values/OrreryError.h"
#include "platform/values/Quoted.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace orrery {

namespace {

/// A variable and its count as computed, which may lie beyond 32 bits.
struct Axis {
    IndependentVariable variable;
    double count = 0;
};

float setupFloat(const SetupDictionary& setup, std::string_view key) {
    return floatValue(setup.textOrEmpty(key));
}

double wholeCount(double count) {
    return std::isfinite(count) && count > 0 ? std::trunc(count) : 0.0;
}

float reportDays(const SetupDictionary& setup) {
    return setupFloat(setup, setup_key::reportStep) / setupFloat(setup, setup_key::stepsPerDay);
}

float runDays(const SetupDictionary& setup) {
    const float days = setupFloat(setup, setup_key::runLength);
    return days == 0.0F ? 1.0F : days;
}

Axis timeAxis(const SetupDictionary& setup, const Calendar& calendar) {
    const float days = runDays(setup);
    const auto startDay = setup.startDay();
    const float firstDay = startDay ? static_cast<float>(calendar.ordinalDayInYear(*startDay)) : 1.0F;

    Axis axis;
    axis.variable.setName("day");
    axis.variable.setStart(firstDay);
    axis.variable.setStop((days + firstDay) - 1.0F);
    axis.variable.setStep(reportDays(setup));
    axis.variable.setConstant(0.5F * days + firstDay);
    axis.count = dayCount(setup);
    return axis;
}

Axis stepperAxis(const Entry& stepper) {
    const float start = floatValue(stepper.text("start"));
    const float stop = floatValue(stepper.text("stop"));
    const float step = floatValue(stepper.text("step"));

    Axis axis;
    axis.variable.setName(std::string(stepper.text("portPath")));
    axis.variable.setStart(start);
    axis.variable.setStop(stop);
    axis.variable.setConstant((start + stop) * 0.5F);
    axis.variable.setStep(step);
    axis.count = stepperCount(start, stop, step);
    return axis;
}

std::string rowsText(double rows) {
    return rows < 1e15 ? fmt::format("{:.0f}", rows) : fmt::format("{:.3g}", rows);
}

/// Every count, stride and the number of rows must fit 32 bits. Products up to there are exact in double precision.
void requireGridFits(const std::vector<Axis>& axes) {
    constexpr double limit = std::numeric_limits<std::uint32_t>::max();
    double rows = 1;    // what the message names: a count of 0 does not hide how large the others are
    double product = 1; // the stride of the next variable, at last the number of rows
    bool fits = true;
    for (auto axis = axes.rbegin(); axis != axes.rend(); ++axis) {
        rows *= std::max(axis->count, 1.0);
        product *= axis->count;
        fits = fits && axis->count <= limit && product <= limit;
    }
    if (!fits) {
        throw OrreryError(
            fmt::format("The sweep would have {} rows; at most {:.0f} are possible.", rowsText(rows), limit), {},
            "Give the steppers fewer values or report less often.");
    }
}

} // namespace

double stepperCount(float start, float stop, float step) {
    return wholeCount(static_cast<double>(std::truncf((stop - start) / step)) + 1.0);
}

double dayCount(const SetupDictionary& setup) {
    return wholeCount(runDays(setup) / reportDays(setup)); // no + 1: the run ends where the next would be reported
}

SweepGrid constructIndependentVariables(const SetupDictionary& setup, const Calendar& calendar) {
    std::vector<Axis> axes;
    for (const Entry& stepper : setup.entries(setup_key::steppers)) {
        axes.push_back(stepperAxis(stepper));
    }
    axes.push_back(timeAxis(setup, calendar));
    requireGridFits(axes);

    SweepGrid grid;
    std::uint32_t stride = 1;
    for (auto axis = axes.rbegin(); axis != axes.rend(); ++axis) {
        const auto count = static_cast<std::uint32_t>(axis->count);
        axis->variable.setStride(stride);
        axis->variable.setStridesPerCycle(count);
        stride *= count;
    }
    grid.nRowsOfData = stride;
    for (Axis& axis : axes) {
        grid.variables.push_back(std::move(axis.variable));
    }
    return grid;
}

float valueAtIndex(const IndependentVariable& variable, std::uint32_t index) {
    return variable.start() + static_cast<float>(index) * variable.step();
}

std::string noValuesWords(float start, float stop, float step) {
    if (step == 0.0F) return "its step is 0, so it has no values and the run no rows.";
    return fmt::format("steps of {} do not lead from {} to {}, so it has no values and the run no rows.",
                       shortestText(step), shortestText(start), shortestText(stop));
}

SettingWarning noDaysWarning(const SetupDictionary& setup) {
    for (const auto& [key, word] :
         {std::pair(setup_key::stepsPerDay, "Steps per day is"), std::pair(setup_key::reportStep, "Report step is"),
          std::pair(setup_key::runLength, "Run length is")}) {
        const float value = setupFloat(setup, key);
        if (value < 0.0F || (value == 0.0F && key != setup_key::runLength)) {
            return {key, fmt::format("{} {}, so the run has no rows.", word, shortestText(value))};
        }
    }
    return {setup_key::reportStep,
            fmt::format("The run of {} days is shorter than one report interval ({} time steps at {} a day), so it has "
                        "no rows.",
                        shortestText(runDays(setup)), shortestText(setupFloat(setup, setup_key::reportStep)),
                        shortestText(setupFloat(setup, setup_key::stepsPerDay)))};
}

std::vector<std::string> sweepWarnings(const SetupDictionary& setup, const SweepGrid& grid) {
    std::vector<std::string> warnings;
    for (const IndependentVariable& variable : grid.variables) {
        if (variable.stridesPerCycle() > 0) continue;
        const bool isTime = &variable == &grid.variables.back();
        warnings.push_back(isTime ? noDaysWarning(setup).words
                                  : fmt::format("Stepper {}: {}", messageText(variable.name()),
                                                noValuesWords(variable.start(), variable.stop(), variable.step())));
    }
    return warnings;
}

} // namespace orrery

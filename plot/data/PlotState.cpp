#include "plot/data/PlotState.h"

#include "plot/data/PlotLayout.h"

#include <algorithm>
#include <utility>

namespace orrery {

namespace {

template <typename Choice>
std::vector<Changed<Choice>> differingRows(const std::vector<Choice>& before, const std::vector<Choice>& after) {
    std::vector<Changed<Choice>> rows;
    for (std::size_t row = 0; row < std::min(before.size(), after.size()); ++row) {
        if (before[row] != after[row]) rows.push_back({before[row], after[row], row});
    }
    return rows;
}

template <typename Choice>
std::optional<Changed<Choice>> differing(const Choice& before, const Choice& after) {
    if (before == after) return std::nullopt;
    return Changed<Choice>{before, after};
}

template <typename Choice>
void appendRows(std::vector<Changed<Choice>>& rows, const std::vector<Changed<Choice>>& later) {
    for (const Changed<Choice>& change : later) {
        const auto known = std::ranges::find(rows, change.row, &Changed<Choice>::row);
        if (known == rows.end()) {
            rows.push_back(change);
        } else {
            known->after = change.after;
        }
    }
    std::erase_if(rows, [](const Changed<Choice>& change) { return change.before == change.after; });
}

template <typename Choice>
void appendChange(std::optional<Changed<Choice>>& change, const std::optional<Changed<Choice>>& later) {
    if (!later) return;
    change = change ? Changed<Choice>{change->before, later->after} : *later;
    if (change->before == change->after) change.reset();
}

template <typename Variable, typename Choice>
bool areThere(const std::vector<Changed<Choice>>& changes, const std::vector<Variable>& present) {
    return std::ranges::all_of(changes, [&present](const Changed<Choice>& change) {
        return change.row < present.size() && present[change.row].name() == change.after.name;
    });
}

/// What the change left alone stays as it is: it may have become something else in another way since.
template <typename Value>
void put(const Value& before, const Value& after, Value& present) {
    if (before != after) present = after;
}

void put(const Vector3& before, const Vector3& after, Vector3& present) {
    put(before.x, after.x, present.x);
    put(before.y, after.y, present.y);
    put(before.z, after.z, present.z);
}

void makeChange(const Changed<AxisChoice>& change, std::vector<IndependentVariable>& variables) {
    IndependentVariable& variable = variables[change.row];
    if (change.before.constant != change.after.constant) variable.setConstant(change.after.constant);
    if (change.before.function == change.after.function) return;
    variable.setFunction(change.after.function);
    claimAxisRole(variables, change.row);
}

void makeChange(const Changed<ResponseChoice>& change, ResponseVariable& response) {
    const auto& [before, after, row] = change;
    if (before.includep != after.includep) response.setValue("includep", after.includep);
    if (before.scale != after.scale) response.setValue("scale", after.scale);
    if (before.color != after.color) response.setValue("color", after.color);
}

} // namespace

bool PlotChange::empty() const {
    return !ofResults() && !camera && !rotation;
}

void PlotChange::append(const PlotChange& later) {
    appendRows(variables, later.variables);
    appendRows(responses, later.responses);
    appendChange(camera, later.camera);
    appendChange(rotation, later.rotation);
}

PlotChange PlotChange::reversed() const {
    PlotChange back = *this;
    const auto swap = [](auto& change) { std::swap(change.before, change.after); };
    std::ranges::for_each(back.variables, swap);
    std::ranges::for_each(back.responses, swap);
    if (back.camera) swap(*back.camera);
    if (back.rotation) swap(*back.rotation);
    return back;
}

bool PlotChange::appliesTo(const std::vector<IndependentVariable>& present,
                           const std::vector<ResponseVariable>& presentResponses) const {
    return areThere(variables, present) && areThere(responses, presentResponses);
}

PlotChange difference(const PlotState& before, const PlotState& after) {
    return {differingRows(before.variables, after.variables), differingRows(before.responses, after.responses),
            differing(before.camera, after.camera), differing(before.rotation, after.rotation)};
}

void makeChange(const PlotChange& change, std::vector<IndependentVariable>& variables,
                std::vector<ResponseVariable>& responses) {
    for (const Changed<AxisChoice>& each : change.variables) {
        makeChange(each, variables);
    }
    for (const Changed<ResponseChoice>& each : change.responses) {
        makeChange(each, responses[each.row]);
    }
}

CameraChoice changed(CameraChoice present, const Changed<CameraChoice>& change) {
    put(change.before.viewPos, change.after.viewPos, present.viewPos);
    put(change.before.viewDir, change.after.viewDir, present.viewDir);
    put(change.before.lightHeight, change.after.lightHeight, present.lightHeight);
    return present;
}

} // namespace orrery

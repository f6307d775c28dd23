#include "engine/EvaluationOrder.h"

#include <algorithm>

namespace orrery::engine {

namespace {

enum class Mark { New, Open, Done };

/// An item whose needs are being visited. The stack is ours, so a long chain of ports needs no deep stack.
struct Visit {
    std::size_t item = 0;
    std::size_t next = 0; // the need to visit next
};

[[noreturn]] void throwCycle(const std::vector<Visit>& stack, std::size_t item) {
    const auto first = std::ranges::find(stack, item, &Visit::item);
    std::vector<std::size_t> cycle;
    std::ranges::transform(first, stack.end(), std::back_inserter(cycle), &Visit::item);
    std::ranges::reverse(cycle);
    throw DependencyCycle(std::move(cycle));
}

void visit(std::size_t root, std::span<const std::vector<std::size_t>> needs, std::vector<Mark>& marks,
           std::vector<std::size_t>& order) {
    std::vector<Visit> stack{{root}};
    marks[root] = Mark::Open;
    while (!stack.empty()) {
        Visit& top = stack.back();
        if (top.next == needs[top.item].size()) {
            marks[top.item] = Mark::Done;
            order.push_back(top.item);
            stack.pop_back();
            continue;
        }
        const std::size_t need = needs[top.item][top.next++];
        if (marks[need] == Mark::Open) {
            throwCycle(stack, need);
        }
        if (marks[need] == Mark::New) {
            marks[need] = Mark::Open;
            stack.push_back({need});
        }
    }
}

} // namespace

std::vector<std::size_t> evaluationOrder(std::span<const std::vector<std::size_t>> needs) {
    std::vector<Mark> marks(needs.size(), Mark::New);
    std::vector<std::size_t> order;
    for (std::size_t item = 0; item < needs.size(); ++item) {
        if (marks[item] == Mark::New) {
            visit(item, needs, marks, order);
        }
    }
    return order;
}

} // namespace orrery::engine

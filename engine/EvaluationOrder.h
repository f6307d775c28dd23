#pragma once

#include <cstddef>
#include <span>
#include <stdexcept>
#include <vector>

namespace orrery::engine {

/// Items that need each other in a circle, each before the one that needs it; the first one needs the last.
class DependencyCycle : public std::runtime_error {
public:
    explicit DependencyCycle(std::vector<std::size_t> items)
        : std::runtime_error("dependency cycle"), m_items(std::move(items)) {}
    [[nodiscard]] const std::vector<std::size_t>& items() const { return m_items; }

private:
    std::vector<std::size_t> m_items;
};

/// An order in which every item comes after those that it needs; otherwise the items keep their order.
/// @param needs per item, the items that must come before it
/// @throws DependencyCycle when there is none
[[nodiscard]] std::vector<std::size_t> evaluationOrder(std::span<const std::vector<std::size_t>> needs);

} // namespace orrery::engine

#pragma once

#include <cstddef>
#include <cstdlib>
#include <memory>
#include <span>

namespace orrery {

/// The cells of a result table: one block of single-precision numbers, all 0 at first. Its memory comes from the system
/// as zeros and is touched only where it is written, so threads that fill it also share the cost of its pages.
class CellBlock {
public:
    using value_type = float;
    using const_iterator = const float*;

    CellBlock() = default;
    /// @throws std::bad_alloc
    explicit CellBlock(std::size_t size);
    explicit CellBlock(std::span<const float> cells);

    [[nodiscard]] std::size_t size() const { return m_size; }
    [[nodiscard]] bool empty() const { return m_size == 0; }
    [[nodiscard]] float* data() { return m_cells.get(); }
    [[nodiscard]] const float* data() const { return m_cells.get(); }
    [[nodiscard]] float* begin() { return data(); }
    [[nodiscard]] float* end() { return data() + size(); }
    [[nodiscard]] const float* begin() const { return data(); }
    [[nodiscard]] const float* end() const { return data() + size(); }
    [[nodiscard]] float operator[](std::size_t cell) const { return m_cells.get()[cell]; }

private:
    struct Free {
        void operator()(float* cells) const { std::free(cells); }
    };
    std::unique_ptr<float, Free> m_cells;
    std::size_t m_size = 0;
};

} // namespace orrery

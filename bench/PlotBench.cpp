// How long the rows of a choice and the vertices of a plot take.

#include "plot/data/PlotLayout.h"
#include "plot/data/VertexData.h"
#include "run/IndexSet.h"
#include "run/table/CellBlock.h"

#include <benchmark/benchmark.h>
#include <sys/mman.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <span>
#include <vector>

namespace orrery {
namespace {

/// A grid of two axes and one held variable, which varies fastest (2), in the middle (1) or slowest (0).
std::vector<IndependentVariable> gridWithHeld(std::size_t held, std::uint32_t axisCount, std::uint32_t heldCount) {
    std::vector<IndependentVariable> variables(3);
    std::uint32_t role = 1;
    for (std::size_t n = 0; n < variables.size(); ++n) {
        variables[n].setStridesPerCycle(n == held ? heldCount : axisCount);
        variables[n].setStep(1);
        variables[n].setConstant(0.5F * static_cast<float>(heldCount));
        variables[n].setFunction(n == held ? PlotRole::Held : static_cast<PlotRole>(role++));
    }
    std::uint32_t stride = 1;
    for (auto variable = variables.rbegin(); variable != variables.rend(); ++variable) {
        variable->setStride(stride);
        stride *= variable->stridesPerCycle();
    }
    return variables;
}

void chooseRows(benchmark::State& state) {
    const auto variables = gridWithHeld(static_cast<std::size_t>(state.range(0)), 1000, 20);
    constexpr std::size_t columns = 8;
    CellBlock cells(std::size_t{20'000'000} * columns); // in the pages that a table's reading gets
    std::ranges::fill(cells, 1.0F);
    std::vector<float> chosen(1'000'000);
    while (state.KeepRunning()) {
        const auto rows = currentIndexSet(variables);
        for (std::size_t n = 0; n < rows.size(); ++n) {
            chosen[n] = cells[rows[n] * columns + 5];
        }
        benchmark::DoNotOptimize(chosen.data());
        benchmark::ClobberMemory();
    }
}

BENCHMARK(chooseRows)
    ->Name("1,000,000 of 20,000,000 rows, one column; held axis is slowest (0) to fastest (2)")
    ->DenseRange(0, 2)
    ->Unit(benchmark::kMillisecond);

/// A rippled surface of `cells` × `cells` cells.
struct Surface {
    explicit Surface(std::uint32_t cells)
        : variables(gridWithHeld(0, cells + 1, 1)), responses(1), maxima{2.0F}, rows(currentIndexSet(variables)) {
        responses[0].setValue("includep", true);
        layout = plotLayout(variables, responses);
        for (const std::uint32_t row : rows) {
            const std::uint32_t line = row / (cells + 1);
            values.push_back(1.0F + std::sin(0.007F * static_cast<float>(line)) *
                                        std::cos(0.005F * static_cast<float>(row - line * (cells + 1))));
        }
    }
    [[nodiscard]] PlotSource source() const { return {values, maxima, responses, rows}; }

    std::vector<IndependentVariable> variables;
    std::vector<ResponseVariable> responses;
    std::array<float, 1> maxima;
    std::vector<std::uint32_t> rows;
    std::vector<float> values;
    PlotLayout layout;
};

/// Memory that has its pages, of 2 MB where they are wanted and the system gives them.
class TouchedMemory {
public:
    TouchedMemory(std::size_t floats, bool largePages)
        : m_size((floats * sizeof(float) + pageSize - 1) / pageSize * pageSize),
          m_floats(static_cast<float*>(std::aligned_alloc(pageSize, m_size)), floats) {
        madvise(m_floats.data(), m_size, largePages ? MADV_HUGEPAGE : MADV_NOHUGEPAGE);
        std::ranges::fill(m_floats, 1.0F);
    }
    TouchedMemory(const TouchedMemory&) = delete;
    TouchedMemory& operator=(const TouchedMemory&) = delete;
    ~TouchedMemory() { std::free(m_floats.data()); }
    [[nodiscard]] std::span<float> floats() const { return m_floats; }

private:
    static constexpr std::size_t pageSize = 2U << 20U;
    std::size_t m_size;
    std::span<float> m_floats;
};

void countCells(benchmark::State& state) {
    const auto cells = static_cast<double>(state.range(0) * state.range(0));
    state.counters["per cell"] =
        benchmark::Counter(cells, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

void writeMesh(benchmark::State& state) {
    const Surface surface(static_cast<std::uint32_t>(state.range(0)));
    const TouchedMemory memory(static_cast<std::size_t>(state.range(0) * state.range(0)) * 36, state.range(2) != 0);
    while (state.KeepRunning()) {
        const VertexPiece whole{0, memory.floats()};
        write3DVertexData(surface.layout, surface.source(), {&whole, 1},
                          {.threads = static_cast<unsigned>(state.range(1))});
        benchmark::ClobberMemory();
    }
    countCells(state);
}

/// What the memory allows: as many bytes as a surface has, written and nothing else.
void fillMemory(benchmark::State& state) {
    std::vector<float> vertices(static_cast<std::size_t>(state.range(0) * state.range(0)) * 36);
    while (state.KeepRunning()) {
        std::memset(vertices.data(), 1, vertices.size() * sizeof(float));
        benchmark::ClobberMemory();
    }
    countCells(state);
}

void makeMesh(benchmark::State& state) {
    const Surface surface(static_cast<std::uint32_t>(state.range(0)));
    while (state.KeepRunning()) {
        benchmark::DoNotOptimize(make3DVertexData(surface.layout, surface.source()));
    }
    countCells(state);
}

BENCHMARK(writeMesh)
    ->Name("surface into touched memory")
    ->ArgNames({"side", "threads", "largePages"})
    ->ArgsProduct({{100, 300, 1000, 3000}, {1, 2}, {0, 1}})
    ->UseRealTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK(fillMemory)
    ->Name("a surface's memory filled, cells a side")
    ->Arg(300)
    ->Arg(1000)
    ->UseRealTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK(makeMesh)
    ->Name("surface into fresh memory, cells a side")
    ->Arg(300)
    ->Arg(1000)
    ->UseRealTime()
    ->Unit(benchmark::kMillisecond);

} // namespace
} // namespace orrery

// How fast a result table becomes cells. The table is made once in the build folder and kept there.

#include "bench/BenchData.h"
#include "run/table/ResultTable.h"
#include "run/table/TableKernels.h"

#include <benchmark/benchmark.h>

#include <filesystem>
#include <string>

namespace orrery {
namespace {

std::string madeTable(const TableShape& shape) {
    std::string path = std::string(ORRERY_BENCH_DATA) + "/" + std::to_string(shape.rows) + "x" +
                       std::to_string(shape.columns) + ".txt";
    bench::makeOnce(path, [&](std::ostream& file) { bench::writeTable(file, shape); });
    return path;
}

void readTable(benchmark::State& state) {
    const TableShape shape{static_cast<std::uint32_t>(state.range(0)), 4, static_cast<std::size_t>(state.range(1))};
    const std::string path = madeTable(shape);
    const auto bytes = static_cast<double>(std::filesystem::file_size(path));
    TableReadOptions options;
    options.threads = static_cast<unsigned>(state.range(2));
    options.kernels = state.range(3) != 0 ? &bestTableKernels() : &portableTableKernels();
    while (state.KeepRunning()) {
        benchmark::DoNotOptimize(readResultTable(path, shape, options));
    }
    state.counters["MB"] = bytes / 1e6;
    state.counters["MB/s"] = benchmark::Counter(bytes / 1e6, benchmark::Counter::kIsIterationInvariantRate);
}

BENCHMARK(readTable)
    ->Name("result table, 4 leading fields")
    ->ArgNames({"rows", "values", "threads", "avx2"})
    ->ArgsProduct({{100'000, 2'000'000}, {8}, {1, 2}, {0, 1}})
    ->ArgsProduct({{100'000, 200'000}, {80}, {1, 2}, {0, 1}})
    ->UseRealTime()
    ->Unit(benchmark::kMillisecond);

} // namespace
} // namespace orrery

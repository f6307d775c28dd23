// How fast a result table becomes cells. The table is made once in the build folder and kept there.

#include "run/ResultTable.h"
#include "run/TableKernels.h"

#include <benchmark/benchmark.h>

#include <array>
#include <charconv>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>

namespace orrery {
namespace {

void append(std::string& text, double value, int digits) {
    std::array<char, 32> number{};
    const auto end =
        std::to_chars(number.data(), number.data() + number.size(), value, std::chars_format::general, digits);
    text.append(number.data(), end.ptr);
}

/// A value as engines write them: nearly all between 0.001 and 10,000, a few whole or tiny, some negative.
double randomValue(std::mt19937_64& random) {
    const auto uniform = [&](double low, double high) { return std::uniform_real_distribution(low, high)(random); };
    const double kind = uniform(0, 1);
    if (kind < 0.02) {
        return std::floor(uniform(0, 3));
    }
    const double magnitude = kind < 0.05 ? uniform(-9, -4) : uniform(-3, 4);
    return std::pow(10.0, magnitude) * (uniform(0, 1) < 0.25 ? -1 : 1);
}

std::string randomRow(std::mt19937_64& random, const TableShape& shape) {
    std::string row;
    for (std::size_t field = 0; field < shape.leadingFields; ++field) {
        append(row, static_cast<double>(random() % 2000) / (field % 2 == 0 ? 1 : 10), 6);
        row += '\t';
    }
    for (std::size_t column = 0; column < shape.columns; ++column) {
        append(row, randomValue(random), 9);
        row += column + 1 < shape.columns ? '\t' : '\n';
    }
    return row;
}

std::string madeTable(const TableShape& shape) {
    namespace fs = std::filesystem;
    const fs::path path = fs::path(ORRERY_BENCH_DATA) / ("table-" + std::to_string(shape.columns) + ".txt");
    if (!fs::exists(path)) {
        fs::create_directories(path.parent_path());
        const fs::path unfinished = path.string() + ".part";
        std::ofstream file(unfinished, std::ios::binary);
        std::mt19937_64 random(1);
        file << "header\n";
        for (std::uint32_t row = 0; row < shape.rows; ++row) {
            file << randomRow(random, shape);
        }
        file.close();
        fs::rename(unfinished, path);
    }
    return path.string();
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
    ->ArgNames({"rows", "values", "threads", "fast"})
    ->ArgsProduct({{2'000'000}, {8}, {1, 2}, {0, 1}})
    ->ArgsProduct({{200'000}, {80}, {1, 2}, {0, 1}})
    ->UseRealTime()
    ->Unit(benchmark::kMillisecond);

} // namespace
} // namespace orrery

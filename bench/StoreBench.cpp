// The list of 500 kept runs, whose cells it does not read: by their index (1), and as it is made (0), each file read
// anew.
#include "platform/Files.h"
#include "run/results/ResultsFile.h"
#include "run/results/RunStore.h"

#include <benchmark/benchmark.h>
#include <fmt/format.h>

#include <cstddef>
#include <filesystem>
#include <string>

namespace orrery {
namespace {

constexpr int runCount = 500;
constexpr std::uint32_t rowCount = 1'000;

/// A store of that many copies of one run, made once.
std::string storeDirectory() {
    std::string directory = ORRERY_BENCH_DATA "/store";
    const auto pathOf = [&](int run) { return fmt::format("{}/{}.nc", directory, run); };
    if (fileExists(pathOf(runCount - 1))) return directory;
    std::filesystem::create_directories(directory);
    RunResults results;
    IndependentVariable day;
    day.setName("day");
    day.setStep(1);
    day.setStride(1);
    day.setStridesPerCycle(rowCount);
    results.grid = {.variables = {day}, .nRowsOfData = rowCount};
    results.responses.variables.assign(9, ResponseVariable("Field/Crop/biomass", "z1"));
    results.table.cells = CellBlock(std::size_t{rowCount} * 9);
    RunRecord record;
    record.setup.path = "/home/a/wheat.orrery";
    record.setup.bytes = std::string(2000, 's');
    record.model.bytes = std::string(50'000, 'm');
    writeResultsFile(pathOf(0), results, record);
    for (int run = 1; run < runCount; ++run) {
        std::filesystem::copy_file(pathOf(0), pathOf(run), std::filesystem::copy_options::overwrite_existing);
    }
    return directory;
}

void listKeptRuns(benchmark::State& state) {
    const RunStore store(storeDirectory());
    while (state.KeepRunning()) {
        if (state.range(0) == 0) std::filesystem::remove(store.directory() + "/.orrery-runs");
        if (store.runs().size() != runCount) state.SkipWithError("not all runs are there");
    }
}
BENCHMARK(listKeptRuns)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

} // namespace
} // namespace orrery

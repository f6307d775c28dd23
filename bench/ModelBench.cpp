// How fast a model file becomes its tree, beside a bare pass of the parser over the same file.

#include "bench/BenchData.h"
#include "model/ModelTree.h"
#include "platform/Files.h"

#include <benchmark/benchmark.h>
#include <expat.h>

#include <string>

namespace orrery {
namespace {

std::string modelOf(const benchmark::State& state) {
    const auto parts = static_cast<std::size_t>(state.range(0));
    std::string path = std::string(ORRERY_BENCH_DATA) + "/model-" + std::to_string(parts) + ".xml";
    bench::makeOnce(path, [&](std::ostream& file) { bench::writeModel(file, parts, 5); });
    return path;
}

void countBytes(benchmark::State& state, const std::string& path) {
    const auto megabytes = static_cast<double>(ReadableFile(path).size()) / 1e6;
    state.counters["MB"] = megabytes;
    state.counters["MB/s"] = benchmark::Counter(megabytes, benchmark::Counter::kIsIterationInvariantRate);
}

void passOfTheParser(benchmark::State& state) {
    const std::string path = modelOf(state);
    while (state.KeepRunning()) {
        const ReadableFile file(path);
        XML_Parser parser = XML_ParserCreate(nullptr);
        XML_SetElementHandler(
            parser, [](void*, const char*, const char**) {}, [](void*, const char*) {});
        XML_SetCharacterDataHandler(parser, [](void*, const char*, int) {});
        std::uint64_t position = 0;
        for (std::size_t got = 1; got > 0; position += got) {
            constexpr int capacity = 64 << 10;
            got = file.readAt(static_cast<char*>(XML_GetBuffer(parser, capacity)), capacity, position);
            XML_ParseBuffer(parser, static_cast<int>(got), got == 0 ? 1 : 0);
        }
        XML_ParserFree(parser);
    }
    countBytes(state, path);
}

void tree(benchmark::State& state) {
    const std::string path = modelOf(state);
    while (state.KeepRunning()) {
        benchmark::DoNotOptimize(readModelTree(path));
    }
    countBytes(state, path);
}

BENCHMARK(passOfTheParser)
    ->Name("model, bare pass of the parser")
    ->ArgName("parts")
    ->Arg(1000)
    ->Arg(70'000)
    ->Unit(benchmark::kMillisecond);
BENCHMARK(tree)->Name("model, file to tree")->ArgName("parts")->Arg(1000)->Arg(70'000)->Unit(benchmark::kMillisecond);

} // namespace
} // namespace orrery

// One of the program's inner loops on a fixed input, for bench/check-instructions: kernels NAME, or no name for the
// list.

#include "bench/BenchData.h"
#include "model/ModelTree.h"
#include "plot/data/PlotLayout.h"
#include "plot/data/VertexData.h"
#include "run/IndexSet.h"
#include "run/table/TableKernels.h"
#include "run/table/TableReading.h"

#include <sys/mman.h>
#include <unistd.h>

#include <array>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

/// Counting begins where this is entered and ends where it is left.
extern "C" [[gnu::noinline]] void countedKernel(const std::function<void()>& kernel) {
    kernel();
}

namespace orrery {
namespace {

/// 2,000 rows of 4 leading fields and 8 values of all lengths; every 64th row has a group, every 32nd an exponent.
std::string tableText() {
    std::string text = "header\n";
    std::uint32_t state = 1;
    const auto next = [&state] { return state = state * 1'664'525U + 1'013'904'223U; };
    for (int row = 0; row < 2000; ++row) {
        text += std::to_string(row) + "\t7.25\t12\t-3.5";
        for (int column = 0; column < 8; ++column) {
            text += (next() >> 31U) != 0 ? "\t-" : "\t";
            text += std::to_string(next() >> 20U) + "." + std::to_string(next() >> 12U);
        }
        text += row % 64 == 5 ? "{1, 2}\n" : row % 32 == 7 ? "e-05\n" : "\n";
    }
    return text;
}

std::function<void()> tableReader(const TableKernels* kernels) {
    return [kernels, text = tableText()] {
        const TableShape shape{2000, 4, 8};
        ResultTable empty;
        empty.cells = CellBlock(16'000);
        empty.maxima.assign(8, noMaximum);
        const auto bytes = [&text](char* buffer, std::size_t capacity, std::uint64_t offset) {
            return text.copy(buffer, capacity, offset);
        };
        TableReadOptions options;
        options.kernels = kernels;
        (void)TableReading(bytes, shape, std::move(empty), {}, options).read(1);
    };
}

/// Two axes of 101 values, and one in front of them that is held at the fourth of 5.
std::vector<IndependentVariable> grid() {
    std::vector<IndependentVariable> variables(3);
    std::uint32_t stride = 1;
    for (std::size_t n = 3; n-- > 0;) {
        variables[n].setStridesPerCycle(n == 0 ? 5 : 101);
        variables[n].setStep(1);
        variables[n].setConstant(3);
        variables[n].setFunction(static_cast<PlotRole>(n));
        variables[n].setStride(stride);
        stride *= variables[n].stridesPerCycle();
    }
    return variables;
}

std::function<void()> plotBuilder(bool surface) {
    auto variables = grid();
    std::vector<ResponseVariable> responses(1);
    responses[0].setValue("includep", true);
    std::vector<float> cells(std::size_t{5} * 101 * 101);
    for (std::size_t n = 0; n < cells.size(); ++n) {
        cells[n] = 1.0F + std::sin(0.01F * static_cast<float>(n));
    }
    variables[1].setFunction(surface ? PlotRole::Axis1 : PlotRole::Held);
    return [variables, responses, cells, surface] {
        const std::vector<std::uint32_t> rows = currentIndexSet(variables);
        const std::array<float, 1> maxima = {2};
        const PlotLayout layout = plotLayout(variables, responses);
        const PlotSource source{cells, maxima, responses, rows};
        (void)(surface ? make3DVertexData(layout, source) : make2DVertexData(layout, source));
    };
}

/// A model of one level with 100 parts, as a file in memory.
std::string modelFile() {
    std::ostringstream model;
    bench::writeModel(model, 100, 2);
    const std::string text = model.str();
    const int descriptor = memfd_create("model", MFD_CLOEXEC);
    if (write(descriptor, text.data(), text.size()) != static_cast<ssize_t>(text.size())) {
        std::perror("a file in memory");
        std::exit(2);
    }
    return "/proc/self/fd/" + std::to_string(descriptor);
}

struct Kernel {
    const char* name;
    std::function<std::function<void()>()> make; // the input is made before counting begins
};

std::vector<Kernel> allKernels() {
    std::vector<Kernel> kernels = {
        {"table-portable", [] { return tableReader(&portableTableKernels()); }},
        {"row-choice", [] { return [variables = grid()] { (void)currentIndexSet(variables); }; }},
        {"curve", [] { return plotBuilder(false); }},
        {"surface", [] { return plotBuilder(true); }},
        {"model", [] { return [path = modelFile()] { (void)readModelTree(path); }; }},
    };
    if (avx2TableKernels() != nullptr) {
        kernels.push_back({"table-avx2", [] { return tableReader(avx2TableKernels()); }});
    }
    return kernels;
}

} // namespace
} // namespace orrery

int main(int count, char** arguments) {
    for (const orrery::Kernel& kernel : orrery::allKernels()) {
        if (count < 2) {
            std::puts(kernel.name);
        } else if (std::string_view(arguments[1]) == kernel.name) {
            countedKernel(kernel.make());
            return 0;
        }
    }
    return count < 2 ? 0 : 2;
}

// Any bytes are a table of the shape that was asked for, and a file read in small blocks gives the same as its bytes.
// The first three bytes of an input choose the shape.
#include "FuzzTarget.h"
#include "platform/values/OrreryError.h"
#include "run/table/ResultTable.h"
#include "run/table/TableKernels.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cstring>
#include <optional>
#include <span>

namespace {

using orrery::ResultTable;
using orrery::TableShape;

/// A file in memory that can be opened by its path.
class MemoryFile {
public:
    explicit MemoryFile(std::string_view bytes) : m_descriptor(memfd_create("table", MFD_CLOEXEC)) {
        const ssize_t count = write(m_descriptor, bytes.data(), bytes.size());
        orrery::fuzz::require(count == static_cast<ssize_t>(bytes.size()), "a file in memory can be written");
    }
    MemoryFile(const MemoryFile&) = delete;
    MemoryFile& operator=(const MemoryFile&) = delete;
    ~MemoryFile() { close(m_descriptor); }
    [[nodiscard]] std::string path() const { return "/proc/self/fd/" + std::to_string(m_descriptor); }

private:
    int m_descriptor;
};

template <class Read>
std::optional<ResultTable> tableOrError(Read read) {
    try {
        return read();
    } catch (const orrery::OrreryError&) {
        return std::nullopt;
    }
}

bool sameBits(std::span<const float> left, std::span<const float> right) {
    return left.size() == right.size() &&
           (left.empty() || std::memcmp(left.data(), right.data(), left.size() * sizeof(float)) == 0);
}

void requireSame(const ResultTable& left, const ResultTable& right) {
    orrery::fuzz::require(sameBits(left.cells, right.cells), "the cells are the same");
    orrery::fuzz::require(sameBits(left.maxima, right.maxima), "the maxima are the same");
    orrery::fuzz::require(left.rowsFound == right.rowsFound && left.cellsWithoutNumber == right.cellsWithoutNumber &&
                              left.firstRowWithout == right.firstRowWithout &&
                              left.lastLineUnterminated == right.lastLineUnterminated,
                          "the findings are the same");
}

} // namespace

int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    if (size < 3) return 0;
    const TableShape shape{data[0], data[1] % 5U, data[2] % 6U};
    const std::string_view bytes = orrery::fuzz::asText(data + 3, size - 3);
    const auto whole = tableOrError([&] { return orrery::parseResultTable(bytes, shape); });
    if (whole) orrery::fuzz::require(whole->cells.size() == shape.rows * shape.columns, "the block has its size");
    const MemoryFile file(bytes);
    for (const std::size_t blockSize : {1U, 7U, 64U, 4096U}) {
        orrery::TableReadOptions options;
        options.blockSize = blockSize;
        options.kernels = size % 2 == 0 ? &orrery::portableTableKernels() : &orrery::bestTableKernels();
        const auto read = tableOrError([&] { return orrery::readResultTable(file.path(), shape, options); });
        orrery::fuzz::require(read.has_value() == whole.has_value(), "both are tables or neither");
        if (read) requireSame(*whole, *read);
    }
    return 0;
}

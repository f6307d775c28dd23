#include "run/table/ResultTable.h"

#include "platform/Workers.h"
#include "platform/values/Numbers.h"
#include "platform/values/Quoted.h"
#include "run/table/TableReading.h"

#include <fmt/format.h>

#include <algorithm>
#include <limits>
#include <new>

namespace orrery {

namespace {

OrreryError doesNotFit(const TableShape& shape, std::uint64_t bytes, std::uint64_t available) {
    return OrreryError(fmt::format("The results, {} rows of {} values, would need {} of memory, but only {} are free.",
                                   shape.rows, shape.columns, sizeText(bytes), sizeText(available)),
                       {}, "Give the steppers fewer values, report less often or record fewer outputs.");
}

/// A table whose cells are all 0. Their memory is touched only as rows come in.
ResultTable emptyTable(const TableShape& shape) {
    requireBlockFits(shape);
    ResultTable table;
    table.maxima.assign(shape.columns, noMaximum);
    try {
        table.cells = CellBlock(shape.rows * shape.columns);
    } catch (const std::bad_alloc&) { // something else took what was free a moment ago
        throw doesNotFit(shape, shape.rows * shape.columns * sizeof(float), availableMemory());
    }
    return table;
}

} // namespace

std::string resultTablePath(const std::string& temporaryDirectory) {
    return temporaryDirectory + std::string(resultTableName);
}

ResultTableMissing::ResultTableMissing(const std::string& path, const std::string& reason)
    : OrreryError(fmt::format("The data file, {}, was not found: {}", messageText(path), reason), {},
                  "Run the simulation, and see its output if it left no data.") {}

ReadableFile openResultTable(const std::string& path) {
    try {
        return ReadableFile(path);
    } catch (const OrreryError& error) {
        throw ResultTableMissing(path, error.problem());
    }
}

std::optional<OrreryError> blockFault(const TableShape& shape, std::uint64_t available) {
    constexpr std::uint64_t largest = std::numeric_limits<std::ptrdiff_t>::max();
    const std::uint64_t bytesPerRow = std::min<std::uint64_t>(shape.columns, largest / sizeof(float)) * sizeof(float);
    const bool overflows = bytesPerRow > 0 && shape.rows > largest / bytesPerRow;
    const std::uint64_t bytes = overflows ? largest : shape.rows * bytesPerRow;
    if (overflows || bytes > available) return doesNotFit(shape, bytes, available);
    return std::nullopt;
}

void requireBlockFits(const TableShape& shape) {
    if (const auto fault = blockFault(shape, availableMemory())) throw OrreryError(*fault);
}

std::vector<std::string> ResultTable::notes(const TableShape& shape) const {
    std::vector<std::string> sentences;
    if (rowsFound < shape.rows) {
        sentences.push_back(fmt::format("The result table holds {} of {} rows; the values of the others are 0.",
                                        rowsFound, shape.rows));
    }
    if (lastLineUnterminated && rowsFound < shape.rows) {
        sentences.push_back(
            fmt::format("Row {} of the result table is cut off; a number at the cut counts as 0.", rowsFound + 1));
    }
    if (cellsWithoutNumber > 0) {
        sentences.push_back(fmt::format("{} cells of the result table hold no number and count as 0; the first is in "
                                        "row {}.",
                                        cellsWithoutNumber, firstRowWithout + 1));
    }
    if (infiniteCells > 0) {
        sentences.push_back(fmt::format("{} cells of the result table are beyond the range of a 32-bit number and "
                                        "count as infinite; the first is in row {}.",
                                        infiniteCells, firstInfiniteRow + 1));
    }
    if (rowsBeyond > 0) {
        sentences.push_back(fmt::format("The result table has {} more rows than the {} of the setup's sweep; they were "
                                        "not read.",
                                        rowsBeyond, shape.rows));
    }
    return sentences;
}

ResultTable parseResultTable(std::string_view bytes, const TableShape& shape) {
    const auto copy = [bytes](char* buffer, std::size_t capacity, std::uint64_t offset) {
        return bytes.copy(buffer, capacity, std::min<std::size_t>(offset, bytes.size()));
    };
    return TableReading(copy, shape, emptyTable(shape), {}, {}).read(1);
}

ResultTable readResultTable(const std::string& path, const TableShape& shape, const TableReadOptions& options) {
    constexpr std::uint64_t worthwhile = 1U << 20U; // bytes that pay for another thread
    const ReadableFile file = openResultTable(path);
    const auto read = [&file](char* buffer, std::size_t capacity, std::uint64_t offset) {
        return file.readAt(buffer, capacity, offset);
    };
    const unsigned threads = options.threads > 0 ? options.threads : workersFor(file.size() / worthwhile);
    return TableReading(read, shape, emptyTable(shape), path, options).read(threads);
}

ResultTable streamResultTable(const std::string& path, const TableShape& shape, const RowTaker& take,
                              const TableReadOptions& options) {
    const ReadableFile file = openResultTable(path);
    const auto read = [&file](char* buffer, std::size_t capacity, std::uint64_t offset) {
        return file.readAt(buffer, capacity, offset);
    };
    ResultTable empty;
    empty.maxima.assign(shape.columns, noMaximum);
    return TableReading(read, shape, std::move(empty), path, options).stream(take);
}

} // namespace orrery

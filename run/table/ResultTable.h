#pragma once

#include "platform/Files.h"
#include "platform/values/OrreryError.h"
#include "run/table/CellBlock.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace orrery {

/// The result table's name in the temporary directory.
inline constexpr std::string_view resultTableName = "Zephyr.txt";
/// `temporaryDirectory` ends in "/".
[[nodiscard]] std::string resultTablePath(const std::string& temporaryDirectory);

/// The table does not exist or cannot be opened: "FileNotFoundException", "Data file Not Found".
class ResultTableMissing : public OrreryError {
public:
    explicit ResultTableMissing(const std::string& path, const std::string& reason);
};

/// @throws ResultTableMissing
[[nodiscard]] ReadableFile openResultTable(const std::string& path);

/// What is taken from a table: `rows` rows of `leadingFields` fields that are passed over and `columns` values.
struct TableShape {
    std::uint32_t rows = 0;
    std::size_t leadingFields = 0; // number of sweep variables + 1
    std::size_t columns = 0;       // number of response variables
};

/// Greatest value of a column that has none above it: −2³¹.
inline constexpr float noMaximum = -2147483648.0F;

struct ResultTable {
    CellBlock cells;                      // row-major, rows × columns; 0 where there was not a number
    std::vector<float> maxima;            // per column, noMaximum at least
    std::uint32_t rowsFound = 0;          // rows of the table that were there, whole
    std::uint64_t cellsWithoutNumber = 0; // in the rows found
    std::uint32_t firstRowWithout = 0;    // the first such row, counted from 0
    std::uint64_t infiniteCells = 0;      // numbers beyond the range of a single
    std::uint32_t firstInfiniteRow = 0;   // the first row with one, counted from 0
    std::uint64_t rowsBeyond = 0;         // after the last that was taken; not read
    bool lastLineUnterminated = false;    // the last row taken has no line end

    /// What the user should know, one sentence each ("12 of 100 rows …"); empty when the table was as promised.
    [[nodiscard]] std::vector<std::string> notes(const TableShape& shape) const;
};

struct TableKernels;

struct TableReadOptions {
    std::size_t blockSize = 256U << 10U; // bytes read at a time
    /// Called now and then, on the calling thread, with the bytes read so far; false cancels the reading.
    std::function<bool(std::uint64_t bytesRead)> progress;
    unsigned threads = 0;                  // that read, the calling one included; 0 is as many as pay
    const TableKernels* kernels = nullptr; // none: the fastest for this processor
};

/// Why a block of that shape does not fit into that many bytes of memory; std::nullopt when it does.
[[nodiscard]] std::optional<OrreryError> blockFault(const TableShape& shape, std::uint64_t available);
/// Checks that it fits into the memory there is now. @throws OrreryError with the number of rows and the bytes
void requireBlockFits(const TableShape& shape);

/// Reads the table's bytes, header line first. A cell without a number is 0; a table that ends early leaves 0 in the
/// rest, and a number that the end of such a table may have cut is none: in the last row that is to be taken, one that
/// touches the end counts only where no other is missing.
/// A value is a plain number, or a group "{1, 2}" whose value is the sum of its numbers in single precision; other
/// characters before a number are passed over.
[[nodiscard]] ResultTable parseResultTable(std::string_view bytes, const TableShape& shape);

/// The same for the file at the path, in one pass over blocks of it; nothing is mapped, so its writer may still write.
/// The options change nothing in the result.
/// @throws ResultTableMissing, or OrreryError when the file cannot be read, is not text, or the block does not fit
[[nodiscard]] ResultTable readResultTable(const std::string& path, const TableShape& shape,
                                          const TableReadOptions& options = {});

/// Takes some of a table's rows, whole ones, row-major.
using RowTaker = std::function<void(std::span<const float> rows)>;

/// The same without holding the table, by one thread: all rows of the shape are handed on in their order, and what is
/// returned has no cells.
/// @throws as readResultTable
ResultTable streamResultTable(const std::string& path, const TableShape& shape, const RowTaker& take,
                              const TableReadOptions& options = {});

} // namespace orrery

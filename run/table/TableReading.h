#pragma once

#include "run/table/ResultTable.h"
#include "run/table/TableBlock.h"

#include <cstdint>
#include <mutex>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace orrery {

/// One reading of a result table, by one or more threads that take blocks of it in turn.
///
/// What depends on all that stands before it (where a block's lines end, which rows they are) is settled under a mutex;
/// the digits, which take the longest, are read outside. Every cell depends on its row's text alone and every row on
/// its place in the file, so any number of threads and any size of blocks give the same bits.
class TableReading {
public:
    /// Fills the table, whose cells are all 0. The file's name is for messages.
    TableReading(TableBytes bytes, const TableShape& shape, ResultTable empty, std::string fileName,
                 const TableReadOptions& options);

    /// Reads the table; legal once. @throws OrreryError, also when `progress` cancels
    [[nodiscard]] ResultTable read(unsigned threads);
    /// Reads it without holding it: the table that it was given has no cells. Legal once instead of read().
    [[nodiscard]] ResultTable stream(RowTaker take);

private:
    /// Cells beyond the range of a single.
    struct Infinite {
        std::uint64_t cells = 0;
        std::uint32_t firstRow = 0;

        void add(const Infinite& other);
    };
    /// What one thread works on, and what it found so far.
    struct Worker {
        Worker(std::size_t blockSize, std::size_t columns);

        TableBlock block;
        std::uint32_t firstRow = 0; // of the block
        std::span<float> cells;     // of its rows
        std::uint64_t position = 0; // after the block
        std::vector<float> maxima;
        std::uint64_t cellsWithout = 0;
        std::uint32_t firstRowWithout = 0;
        Infinite infinite;
    };

    void work(Worker& worker, bool reports);
    void report(std::uint64_t position) const;
    bool takeBlock(Worker& worker);
    std::size_t takeRows(Worker& worker, std::size_t begin);
    std::size_t takePlainly(std::string_view text);
    const char* takePlainRow(const char* begin, const char* end);
    [[nodiscard]] std::span<float> makeRows(std::size_t count);
    void fill(Worker& worker) const;
    void addFindings(std::uint64_t cellsWithout, std::uint32_t firstRowWithout);
    void addInfinite(const Infinite& found);
    void gather(const Worker& worker);
    void settleZeroMaxima();
    void finish(TableBlock& block);
    void handOn(std::span<const float> rows) const;
    void handOnMissingRows() const;
    [[nodiscard]] Infinite infiniteIn(std::span<const float> rows, std::uint32_t firstRow) const;
    void countRowsBeyond(TableBlock& block);
    [[noreturn]] void throwLineTooLong(std::string_view line) const;

    TableBytes m_bytes;
    TableShape m_shape;
    std::string m_fileName;
    TableReadOptions m_options;
    const TableKernels& m_kernels;
    RowTaker m_take;               // where rows are handed on: one thread reads
    std::vector<float> m_streamed; // then: the rows that are read next

    std::mutex m_mutex;           // for all below, until the threads have ended
    ResultTable m_table;          // maxima: of the rows that were taken plainly
    std::uint64_t m_position = 0; // of the first byte that belongs to no block taken so far
    std::uint64_t m_rowsEnd = 0;  // after the last row taken
    std::uint32_t m_row = 0;      // the row that is taken next
    std::size_t m_fieldsLeft;     // of its leading fields, which may stand on several lines
    bool m_headerPassed = false;
    bool m_done = false;
};

} // namespace orrery

#pragma once

#include "run/table/TableKernels.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string_view>
#include <vector>

namespace orrery {

/// Where a table's bytes come from: fills the buffer from the offset on, with less than asked for only at the end.
using TableBytes = std::function<std::size_t(char* buffer, std::size_t capacity, std::uint64_t offset)>;

/// A piece of a table in a small buffer that is used again and again: whole lines, and which rows are in them.
class TableBlock {
public:
    explicit TableBlock(std::size_t size) : m_blockSize(size == 0 ? 1 : size) {}

    /// Reads one block from the position on, and more until it holds a line feed, the table ends, or `longestLine`
    /// bytes and one more were read.
    void read(const TableBytes& bytes, std::uint64_t position, std::size_t longestLine);

    /// The whole lines at the front of what was read.
    [[nodiscard]] std::string_view lines() const { return {m_buffer.data() + tableSlack, m_linesSize}; }
    [[nodiscard]] std::string_view text() const { return {m_buffer.data() + tableSlack, m_size}; }
    [[nodiscard]] bool atEnd() const { return m_atEnd; }

    /// Finds the rows that end in the lines after their first `begin` bytes, at most `most`. A row has `leadingFields`
    /// fields, on as many lines as they take, and the values after the last one on its line. `fieldsLeft` tells how
    /// many of the first row's fields are still to come, and in the end how many of the row that was begun last.
    struct RowSearch {
        std::size_t leadingFields;
        std::size_t columns;
        std::size_t most;
    };
    void findRows(const TableKernels& kernels, std::size_t begin, const RowSearch& search, std::size_t& fieldsLeft);
    void clearRows() { m_rows.clear(); }
    [[nodiscard]] std::size_t rowCount() const { return m_rows.size(); }
    /// Where in the lines the last of the rows ends; 0 if there is none.
    [[nodiscard]] std::size_t rowsEnd() const {
        return m_rows.empty() ? 0 : m_borders[m_rows.back().last] + 1 - tableSlack;
    }

    /// Fills rowCount() rows of cells; see TableKernels::fillRows. The cells hold no row if there is none.
    std::size_t fill(const TableKernels& kernels, std::span<float> cells, std::size_t& firstWithout) const {
        return m_rows.empty() ? 0 : kernels.fillRows(m_text, m_borders.get(), m_rows, cells, firstWithout);
    }

private:
    BorderCounts indexBorders(const TableKernels& kernels);
    [[nodiscard]] bool isRegular(const BorderCounts& counts, std::size_t tokens) const;
    void addRegularRows(std::size_t count, const RowSearch& search);
    void addRows(std::size_t borders, const RowSearch& search, std::size_t& fieldsLeft);
    [[nodiscard]] bool isLineFeed(std::size_t border) const { return m_text.base[m_borders[border]] == '\n'; }

    std::size_t m_blockSize;
    std::vector<char> m_buffer; // the text, tableSlack bytes on either side of it
    std::size_t m_size = 0;
    std::size_t m_linesSize = 0;
    bool m_atEnd = false;
    TableText m_text;
    std::unique_ptr<std::uint32_t[]> m_borders; // [0] stands for one just before the text
    std::size_t m_borderCapacity = 0;
    std::vector<RowPlace> m_rows;
};

} // namespace orrery

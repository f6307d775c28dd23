#include "run/table/TableReading.h"

#include "platform/Workers.h"
#include "platform/values/Numbers.h"
#include "platform/values/Quoted.h"
#include "run/table/RowScanner.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <limits>
#include <utility>

namespace orrery {

namespace {

constexpr std::size_t longestLine = 64U << 20U;
constexpr std::size_t longestIndexed = 4U << 20U; // a block with a longer line would take too much for its index

void raise(float& maximum, float value) {
    maximum = value > maximum ? value : maximum;
}

/// Raises the maxima by rows of cells, eight columns at a time, which stay in registers.
void raiseMaxima(std::span<float> maxima, std::span<const float> cells) {
    constexpr std::size_t together = 8;
    std::size_t column = 0;
    for (; column + together <= maxima.size(); column += together) {
        std::array<float, together> greatest{};
        std::copy_n(maxima.data() + column, together, greatest.data());
        for (std::size_t row = 0; row < cells.size(); row += maxima.size()) {
            for (std::size_t n = 0; n < together; ++n) {
                raise(greatest[n], cells[row + column + n]);
            }
        }
        std::copy_n(greatest.data(), together, maxima.data() + column);
    }
    for (; column < maxima.size(); ++column) {
        for (std::size_t cell = column; cell < cells.size(); cell += maxima.size()) {
            raise(maxima[column], cells[cell]);
        }
    }
}

/// Whether a cell is not a finite number. Zero times a finite number is zero, and what is not stays in its sum; four
/// cells in one register, this is a hundredth of what reading them takes.
bool holdsInfinite(std::span<const float> cells) {
    using Four = float __attribute__((vector_size(16)));
    constexpr std::size_t together = 8;
    std::array<Four, 2> sums{};
    std::size_t cell = 0;
    for (; cell + together <= cells.size(); cell += together) {
        std::array<Four, 2> pieces;
        std::memcpy(pieces.data(), &cells[cell], sizeof pieces);
        sums[0] += pieces[0] * 0.0F;
        sums[1] += pieces[1] * 0.0F;
    }
    float sum = 0;
    for (; cell < cells.size(); ++cell) {
        sum += cells[cell] * 0.0F;
    }
    for (std::size_t n = 0; n < 4; ++n) {
        sum += sums[0][n] + sums[1][n];
    }
    return sum != 0; // infinite times zero is no number, which differs from all
}

/// Length of the first line, its line feed included.
std::size_t firstLine(std::string_view text) {
    const std::size_t lineFeed = text.find('\n');
    return lineFeed == std::string_view::npos ? text.size() : lineFeed + 1;
}

bool leavesGroupOpen(std::string_view row) {
    const std::size_t brace = row.find_last_of("{}");
    return brace != std::string_view::npos && row[brace] == '{';
}

/// The rows whose last line begins in the text.
std::uint64_t rowsIn(std::string_view text, std::size_t leadingFields, std::size_t& fieldsLeft) {
    std::uint64_t rows = 0;
    const char* const end = text.data() + text.size();
    for (const char* at = text.data(); at != end;) {
        at = passOverFields(at, end, fieldsLeft);
        if (fieldsLeft == 0) {
            const auto* const lineFeed =
                static_cast<const char*>(std::memchr(at, '\n', static_cast<std::size_t>(end - at)));
            at = lineFeed == nullptr ? end : lineFeed + 1;
            fieldsLeft = leadingFields;
            ++rows;
        }
    }
    return rows;
}

} // namespace

TableReading::Worker::Worker(std::size_t blockSize, std::size_t columns)
    : block(blockSize), maxima(columns, noMaximum), firstRowWithout(std::numeric_limits<std::uint32_t>::max()) {}

TableReading::TableReading(TableBytes bytes, const TableShape& shape, ResultTable empty, std::string fileName,
                           const TableReadOptions& options)
    : m_bytes(std::move(bytes)), m_shape(shape), m_fileName(std::move(fileName)), m_options(options),
      m_kernels(options.kernels != nullptr ? *options.kernels : bestTableKernels()), m_table(std::move(empty)),
      m_fieldsLeft(shape.leadingFields), m_done(shape.rows == 0) {}

ResultTable TableReading::read(unsigned threads) {
    std::vector<Worker> workers;
    workers.reserve(threads);
    for (unsigned n = 0; n < threads; ++n) {
        workers.emplace_back(m_options.blockSize, m_shape.columns);
    }
    runTogether(threads, [&](unsigned part) { work(workers[part], part == 0); });
    report(m_position); // the other threads may have read the last blocks, or all
    for (const Worker& worker : workers) {
        gather(worker);
    }
    if (threads > 1) {
        settleZeroMaxima();
    }
    finish(workers.front().block);
    return std::move(m_table);
}

ResultTable TableReading::stream(RowTaker take) {
    m_take = std::move(take);
    Worker worker(m_options.blockSize, m_shape.columns);
    while (takeBlock(worker)) {
        fill(worker);
        handOn(worker.cells);
        report(worker.position);
    }
    gather(worker);
    handOnMissingRows();
    finish(worker.block);
    return std::move(m_table);
}

void TableReading::handOn(std::span<const float> rows) const {
    if (!rows.empty()) m_take(rows);
}

void TableReading::handOnMissingRows() const {
    if (m_shape.columns == 0) return;
    const std::size_t together = std::max<std::size_t>((std::size_t{64} << 10U) / m_shape.columns, 1);
    const std::vector<float> zeros(together * m_shape.columns, 0.0F);
    for (std::size_t missing = m_shape.rows - m_row; missing > 0;) {
        const std::size_t rows = std::min(missing, together);
        m_take(std::span(zeros).first(rows * m_shape.columns));
        missing -= rows;
    }
}

void TableReading::finish(TableBlock& block) {
    countRowsBeyond(block);
    if (m_row < m_shape.rows) { // the rows that are missing are 0, and the maxima are those of all rows
        std::ranges::transform(m_table.maxima, m_table.maxima.begin(), [](float m) { return std::max(m, 0.0F); });
    }
}

void TableReading::work(Worker& worker, bool reports) {
    try {
        while (takeBlock(worker)) {
            fill(worker);
            if (reports) {
                report(worker.position);
            }
        }
    } catch (...) {
        const std::scoped_lock lock(m_mutex);
        m_done = true; // for the others
        throw;
    }
}

void TableReading::report(std::uint64_t position) const {
    if (m_options.progress && !m_options.progress(position)) {
        throw OrreryError("Reading the result table was cancelled.", {m_fileName, 0, 0});
    }
}

/// Takes the next block of the table and settles which rows are in it. Returns false when there is no more.
bool TableReading::takeBlock(Worker& worker) {
    const std::scoped_lock lock(m_mutex);
    if (m_done) {
        return false;
    }
    TableBlock& block = worker.block;
    block.read(m_bytes, m_position, longestLine);
    block.clearRows();
    worker.cells = {};
    const bool lastLine = block.lines().empty();
    const std::string_view text = lastLine ? block.text() : block.lines();
    if (lastLine && !block.atEnd()) {
        throwLineTooLong(text);
    }
    const std::size_t begin = m_headerPassed ? 0 : firstLine(text);
    m_headerPassed = true;
    if (lastLine || text.size() > longestIndexed) {
        m_rowsEnd = m_position + begin + takePlainly(text.substr(begin));
    } else {
        m_rowsEnd = m_position + takeRows(worker, begin);
    }
    m_position += text.size();
    m_done = lastLine || m_row == m_shape.rows;
    worker.position = m_position;
    return true;
}

/// Returns where in the block's lines the last of the rows ends.
std::size_t TableReading::takeRows(Worker& worker, std::size_t begin) {
    const TableBlock::RowSearch search{m_shape.leadingFields, m_shape.columns, m_shape.rows - m_row};
    worker.block.findRows(m_kernels, begin, search, m_fieldsLeft);
    const std::size_t count = worker.block.rowCount();
    worker.firstRow = m_row;
    worker.cells = makeRows(count);
    m_table.rowsFound += static_cast<std::uint32_t>(count);
    return worker.block.rowsEnd();
}

/// The next rows' cells, all 0.
std::span<float> TableReading::makeRows(std::size_t count) {
    const std::size_t before = std::size_t{m_row} * m_shape.columns;
    m_row += static_cast<std::uint32_t>(count);
    if (m_take) {
        m_streamed.assign(count * m_shape.columns, 0.0F);
        return m_streamed;
    }
    return {m_table.cells.data() + before, count * m_shape.columns};
}

void TableReading::fill(Worker& worker) const {
    std::size_t first = 0;
    const std::size_t without = worker.block.fill(m_kernels, worker.cells, first);
    if (without > 0) {
        worker.firstRowWithout = std::min(worker.firstRowWithout, worker.firstRow + static_cast<std::uint32_t>(first));
        worker.cellsWithout += without;
    }
    raiseMaxima(worker.maxima, worker.cells);
    worker.infinite.add(infiniteIn(worker.cells, worker.firstRow));
}

// ---- Row by row: what is not a whole line, and lines that are too long for an index

/// Takes rows of whole lines, or of the table's last line, which may lack its line feed. Returns where in the text it
/// stopped.
std::size_t TableReading::takePlainly(std::string_view text) {
    const char* const end = text.data() + text.size();
    const char* at = text.data();
    while (at != end && m_row < m_shape.rows) {
        at = passOverFields(at, end, m_fieldsLeft);
        if (m_fieldsLeft == 0) {
            at = takePlainRow(at, end);
            m_fieldsLeft = m_shape.leadingFields;
        }
    }
    return static_cast<std::size_t>(at - text.data());
}

/// The last row that is wanted may well lack its line feed. It was cut all the same where a number or a brace is
/// missing.
const char* TableReading::takePlainRow(const char* begin, const char* end) {
    const char* const lineFeed = std::find(begin, end, '\n');
    const bool terminated = lineFeed != end;
    bool isCut = !terminated && m_row + 1 < m_shape.rows;
    const std::span<float> cells = makeRows(1);
    std::size_t without = scanRow({begin, lineFeed, end, isCut}, cells);
    if (!terminated && !isCut && (without > 0 || leavesGroupOpen({begin, end}))) {
        isCut = true;
        without = scanRow({begin, lineFeed, end, isCut}, cells);
    }
    raiseMaxima(m_table.maxima, cells);
    addInfinite(infiniteIn(cells, m_row - 1));
    handOn(m_take ? cells : std::span<float>());
    m_table.lastLineUnterminated = !terminated;
    if (!isCut) {
        addFindings(without, m_row - 1);
        ++m_table.rowsFound;
    }
    return terminated ? lineFeed + 1 : end;
}

// ---- What was found

void TableReading::addFindings(std::uint64_t cellsWithout, std::uint32_t firstRowWithout) {
    if (cellsWithout > 0) {
        const bool first = m_table.cellsWithoutNumber == 0 || firstRowWithout < m_table.firstRowWithout;
        m_table.firstRowWithout = first ? firstRowWithout : m_table.firstRowWithout;
        m_table.cellsWithoutNumber += cellsWithout;
    }
}

void TableReading::gather(const Worker& worker) {
    addFindings(worker.cellsWithout, worker.firstRowWithout);
    addInfinite(worker.infinite);
    for (std::size_t column = 0; column < m_shape.columns; ++column) {
        raise(m_table.maxima[column], worker.maxima[column]);
    }
}

/// Of the zeros of both signs, which are equal, the first in the table is a column's maximum.
void TableReading::settleZeroMaxima() {
    for (std::size_t column = 0; column < m_shape.columns; ++column) {
        std::size_t cell = column;
        while (m_table.maxima[column] == 0 && m_table.cells[cell] != 0) {
            cell += m_shape.columns;
        }
        m_table.maxima[column] = m_table.maxima[column] == 0 ? m_table.cells[cell] : m_table.maxima[column];
    }
}

TableReading::Infinite TableReading::infiniteIn(std::span<const float> rows, std::uint32_t firstRow) const {
    if (!holdsInfinite(rows)) return {};
    const auto isInfinite = [](float cell) { return !std::isfinite(cell); };
    const auto first = std::ranges::find_if(rows, isInfinite);
    return {static_cast<std::uint64_t>(std::count_if(first, rows.end(), isInfinite)),
            firstRow + static_cast<std::uint32_t>(static_cast<std::size_t>(first - rows.begin()) / m_shape.columns)};
}

void TableReading::Infinite::add(const Infinite& other) {
    if (other.cells == 0) return;
    firstRow = cells == 0 ? other.firstRow : std::min(firstRow, other.firstRow);
    cells += other.cells;
}

void TableReading::addInfinite(const Infinite& found) {
    Infinite all{m_table.infiniteCells, m_table.firstInfiniteRow};
    all.add(found);
    m_table.infiniteCells = all.cells;
    m_table.firstInfiniteRow = all.firstRow;
}

/// Nothing of these rows is read but where they begin and end.
void TableReading::countRowsBeyond(TableBlock& block) {
    std::size_t fieldsLeft = m_shape.leadingFields;
    for (bool more = m_row == m_shape.rows; more;) {
        block.read(m_bytes, m_rowsEnd, longestLine);
        more = !block.lines().empty();
        if (!more && !block.atEnd()) return; // a line without an end is not a row
        std::string_view text = more ? block.lines() : block.text();
        m_rowsEnd += text.size();
        if (!m_headerPassed) {
            text.remove_prefix(firstLine(text));
            m_headerPassed = true;
        }
        m_table.rowsBeyond += rowsIn(text, m_shape.leadingFields, fieldsLeft);
        report(m_rowsEnd);
    }
}

void TableReading::throwLineTooLong(std::string_view line) const {
    throw OrreryError(fmt::format("This is not a result table: the line after its first {} rows is longer than {} "
                                  "and begins with {}.",
                                  m_row, sizeText(longestLine), quoted(line.substr(0, 40))),
                      {m_fileName, 0, 0}, "Run the simulation again.");
}

} // namespace orrery

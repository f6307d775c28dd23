#include "run/ResultTable.h"

#include "run/RowScanner.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <limits>
#include <new>
#include <span>

namespace orrery {

namespace {

constexpr std::size_t longestLine = 64U << 20U;

/// "51 GB", "1.2 MB", "12 bytes", rounded down.
std::string sizeText(std::uint64_t bytes) {
    constexpr std::array<const char*, 7> units = {"bytes", "kB", "MB", "GB", "TB", "PB", "EB"};
    auto amount = static_cast<double>(bytes);
    std::size_t unit = 0;
    for (; amount >= 1000; ++unit) {
        amount /= 1000;
    }
    const double steps = amount < 10 ? 10 : 1;
    return fmt::format("{} {}", std::floor(amount * steps) / steps, units.at(unit));
}

[[noreturn]] void throwDoesNotFit(const TableShape& shape, std::uint64_t bytes, std::uint64_t available) {
    throw OrreryError(fmt::format("The results, {} rows of {} values, would need {} of memory, but only {} are free.",
                                  shape.rows, shape.columns, sizeText(bytes), sizeText(available)),
                      {}, "Give the steppers fewer values, report less often or record fewer outputs.");
}

/// Fills a result table from the pieces of its text, in order.
class TableFiller {
public:
    TableFiller(const TableShape& shape, std::string fileName)
        : m_shape(shape), m_fileName(std::move(fileName)), m_fieldsLeft(shape.leadingFields) {
        requireBlockFits(shape);
        allocateCells();
        m_table.maxima.assign(shape.columns, noMaximum);
    }

    [[nodiscard]] bool isComplete() const { return m_row == m_shape.rows; }

    [[nodiscard]] ResultTable takeTable() {
        if (!isComplete()) { // the rows that are missing are 0, and the maxima are those of all rows
            std::ranges::transform(m_table.maxima, m_table.maxima.begin(), [](float m) { return std::max(m, 0.0F); });
        }
        return std::move(m_table);
    }

    /// Takes the whole lines at the front of the text; at the end of the table what follows the last line feed, too.
    /// Returns the bytes used: the caller offers the others again with more behind them.
    std::size_t take(std::string_view text, bool atEnd) {
        const std::size_t whole = atEnd ? text.size() : wholeLines(text);
        m_rest = text.size() - whole;
        if (m_rest > longestLine) {
            throwLineTooLong(text);
        }
        const char* const end = text.data() + whole;
        const char* at = m_headerPassed || whole == 0 ? text.data() : passOverHeader(text.data(), end);
        while (!isComplete() && at != end) {
            at = passOverFields(at, end, m_fieldsLeft);
            if (m_fieldsLeft == 0) {
                at = takeRow(at, end, text.data() + text.size());
                m_fieldsLeft = m_shape.leadingFields;
            }
        }
        return whole;
    }

private:
    void allocateCells() {
        try {
            m_table.cells.resize(m_shape.rows * m_shape.columns);
        } catch (const std::bad_alloc&) { // something else took what was free a moment ago
            throwDoesNotFit(m_shape, m_shape.rows * m_shape.columns * sizeof(float), availableMemory());
        }
    }

    /// Length of the whole lines at the front of the text, of which the rest of the last call holds no line feed.
    [[nodiscard]] std::size_t wholeLines(std::string_view text) const {
        const void* last = memrchr(text.data() + m_rest, '\n', text.size() - m_rest);
        return last == nullptr ? 0 : static_cast<std::size_t>(static_cast<const char*>(last) + 1 - text.data());
    }

    static const char* findLineFeed(const char* begin, const char* end) {
        return begin == end ? nullptr
                            : static_cast<const char*>(std::memchr(begin, '\n', static_cast<std::size_t>(end - begin)));
    }

    const char* passOverHeader(const char* begin, const char* end) {
        m_headerPassed = true;
        const char* lineFeed = findLineFeed(begin, end);
        return lineFeed == nullptr ? end : lineFeed + 1;
    }

    const char* takeRow(const char* begin, const char* end, const char* readableEnd) {
        const char* lineFeed = findLineFeed(begin, end);
        const bool terminated = lineFeed != nullptr;
        const bool isLast = m_row + 1 == m_shape.rows;
        const RowText text{begin, terminated ? lineFeed : end, readableEnd, !terminated && !isLast};
        const std::span<float> cells = std::span(m_table.cells).subspan(m_row * m_shape.columns, m_shape.columns);
        const std::size_t without = scanRow(text, cells);
        raiseMaxima(cells);
        m_table.lastLineUnterminated = !terminated;
        if (terminated || isLast) {
            countRow(without);
        }
        ++m_row;
        return terminated ? lineFeed + 1 : end;
    }

    void raiseMaxima(std::span<const float> cells) {
        float* maxima = m_table.maxima.data();
        for (std::size_t column = 0; column < cells.size(); ++column) {
            maxima[column] = cells[column] > maxima[column] ? cells[column] : maxima[column];
        }
    }

    void countRow(std::size_t cellsWithout) {
        if (cellsWithout > 0 && m_table.cellsWithoutNumber == 0) {
            m_table.firstRowWithout = static_cast<std::uint32_t>(m_row);
        }
        m_table.cellsWithoutNumber += cellsWithout;
        ++m_table.rowsFound;
    }

    [[noreturn]] void throwLineTooLong(std::string_view line) const {
        throw OrreryError(fmt::format("This is not a result table: the line behind its first {} rows is longer than {} "
                                      "MB and begins with {}.",
                                      m_row, longestLine >> 20U, quotedForMessage(std::string(line.substr(0, 40)))),
                          {m_fileName, 0, 0}, "Run the simulation again.");
    }

    TableShape m_shape;
    std::string m_fileName;
    ResultTable m_table;
    std::size_t m_row = 0;    // the row that is read next
    std::size_t m_fieldsLeft; // of its leading fields, which may stand on several lines
    std::size_t m_rest = 0;   // bytes not used by the last call
    bool m_headerPassed = false;
};

/// A buffer that a file is read into piece by piece: what was not used of one piece stands before the next.
class BlockReader {
public:
    BlockReader(const ReadableFile& file, std::size_t blockSize)
        : m_file(file), m_blockSize(std::max<std::size_t>(blockSize, 1)) {}

    /// Everything not yet used and one block more.
    std::string_view next() {
        if (m_buffer.size() - m_end < m_blockSize) {
            makeRoom();
        }
        const std::size_t got = m_file.readAt(m_buffer.data() + m_end, m_blockSize, m_position);
        m_end += got;
        m_position += got;
        m_atEnd = got < m_blockSize;
        return {m_buffer.data() + m_begin, m_end - m_begin};
    }

    void use(std::size_t bytes) { m_begin += bytes; }
    [[nodiscard]] bool atEnd() const { return m_atEnd; }
    [[nodiscard]] std::uint64_t position() const { return m_position; }

private:
    /// Moves the rest to the front; the buffer doubles when the rest fills half of it, so a long line costs its length.
    void makeRoom() {
        const std::size_t rest = m_end - m_begin;
        std::copy(m_buffer.begin() + static_cast<std::ptrdiff_t>(m_begin),
                  m_buffer.begin() + static_cast<std::ptrdiff_t>(m_end), m_buffer.begin());
        m_begin = 0;
        m_end = rest;
        if (m_buffer.size() < 2 * (rest + m_blockSize)) {
            m_buffer.resize(2 * (rest + m_blockSize));
        }
    }

    const ReadableFile& m_file;
    std::size_t m_blockSize;
    std::vector<char> m_buffer;
    std::size_t m_begin = 0;
    std::size_t m_end = 0;
    std::uint64_t m_position = 0;
    bool m_atEnd = false;
};

} // namespace

std::string resultTablePath(const std::string& temporaryDirectory) {
    return temporaryDirectory + std::string(resultTableName);
}

ResultTableMissing::ResultTableMissing(const std::string& path, const std::string& reason)
    : OrreryError(fmt::format("The data file, {}, was not found: {}", quotedForMessage(path), reason), {},
                  "Run the simulation, and see the engine's output if it left no data.") {}

ReadableFile openResultTable(const std::string& path) {
    try {
        return ReadableFile(path);
    } catch (const OrreryError& error) {
        throw ResultTableMissing(path, error.problem());
    }
}

void requireBlockFits(const TableShape& shape) {
    constexpr std::uint64_t largest = std::numeric_limits<std::ptrdiff_t>::max();
    const std::uint64_t bytesPerRow = std::min<std::uint64_t>(shape.columns, largest / sizeof(float)) * sizeof(float);
    const bool overflows = bytesPerRow > 0 && shape.rows > largest / bytesPerRow;
    const std::uint64_t bytes = overflows ? largest : shape.rows * bytesPerRow;
    const std::uint64_t available = availableMemory();
    if (overflows || bytes > available) {
        throwDoesNotFit(shape, bytes, available);
    }
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
    return sentences;
}

ResultTable parseResultTable(std::string_view bytes, const TableShape& shape) {
    TableFiller filler(shape, {});
    filler.take(bytes, true);
    return filler.takeTable();
}

ResultTable readResultTable(const std::string& path, const TableShape& shape, const TableReadOptions& options) {
    const ReadableFile file = openResultTable(path);
    TableFiller filler(shape, path);
    BlockReader blocks(file, options.blockSize);
    while (!filler.isComplete() && !blocks.atEnd()) {
        const std::string_view text = blocks.next();
        blocks.use(filler.take(text, blocks.atEnd()));
        if (options.progress && !options.progress(blocks.position())) {
            throw OrreryError("Reading the result table was cancelled.", {path, 0, 0});
        }
    }
    return filler.takeTable();
}

} // namespace orrery

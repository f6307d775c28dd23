#include "log/LogText.h"

#include "platform/values/Numbers.h"

#include <fmt/format.h>

#include <algorithm>
#include <span>
#include <utility>

namespace orrery {

LogText::LogText(LogStoreMaker makeStore, std::uint64_t memoryLimit)
    : m_makeStore(std::move(makeStore)), m_memoryLimit(memoryLimit), m_bytes(m_memoryLimit, m_makeStore) {}

void LogText::clear() {
    *this = LogText(std::move(m_makeStore), m_memoryLimit);
}

void LogText::append(std::string_view piece) {
    // Block by block, so that what is dropped has its rows counted.
    for (; !piece.empty(); piece = piece.substr(std::min<std::size_t>(LogBytes::blockSize, piece.size()))) {
        m_bytes.append(piece.substr(0, LogBytes::blockSize));
        indexRows();
        if (m_bytes.begin() > m_checkpoints.front().begin) forgetDroppedRows();
    }
}

void LogText::indexRows() {
    while (const auto found = breakOf(m_lastRow, m_searched)) {
        endLastRow(*found);
        endPlainRows();
    }
    m_searched = end();
    if (end() > m_lastRow && at(end() - 1) == '\r') --m_searched;
    m_widest = std::max(m_widest, m_searched - m_lastRow);
}

void LogText::endLastRow(Break at) {
    m_widest = std::max(m_widest, at.end - m_lastRow);
    m_lastRow = m_searched = at.next;
    if (m_lastRow / bytesPerCheckpoint > m_checkpoints.back().begin / bytesPerCheckpoint) {
        m_checkpoints.push_back({m_endRow, m_lastRow});
    }
    ++m_endRow;
}

/// Rows that end with a line feed in the same block, which nearly all do: a flood has millions a second.
void LogText::endPlainRows() {
    std::string_view rest = m_bytes.blockFrom(m_lastRow);
    for (;;) {
        const std::size_t length = rest.substr(0, longestRow + 1).find('\n');
        if (length == std::string_view::npos || rest.substr(0, length).find('\r') != std::string_view::npos) return;
        endLastRow({m_lastRow + length, m_lastRow + length + 1});
        rest.remove_prefix(length + 1);
    }
}

void LogText::forgetDroppedRows() {
    while (m_checkpoints.front().begin < m_bytes.begin())
        m_checkpoints.pop_front();
    m_notice =
        fmt::format("[{} of older text left out here: {}]\n", sizeText(m_checkpoints.front().begin),
                    m_bytes.hasStore() ? "there is no more room for it on the disk" : "there is no disk to keep it on");
}

std::uint64_t LogText::begin() const {
    return m_checkpoints.front().begin - m_notice.size();
}

std::uint64_t LogText::firstRow() const {
    return m_checkpoints.front().row - (m_notice.empty() ? 0 : 1);
}

/// Where the row ends, once that is certain. There is no line end between its begin and `searched`.
std::optional<LogText::Break> LogText::breakOf(std::uint64_t rowBegin, std::uint64_t searched) const {
    const std::uint64_t limit = rowBegin + longestRow;
    const std::uint64_t last = std::min(limit + 1, end()); // a line end right after a full row belongs to it
    const auto lineFeed = find('\n', searched, last);
    const auto carriageReturn = find('\r', searched, lineFeed.value_or(last));
    if (carriageReturn) {
        if (*carriageReturn + 1 == end()) return std::nullopt;
        const bool both = at(*carriageReturn + 1) == '\n';
        return Break{*carriageReturn, *carriageReturn + (both ? 2 : 1)};
    }
    if (lineFeed) return Break{*lineFeed, *lineFeed + 1};
    if (end() <= limit) return std::nullopt;
    const std::uint64_t cut = betweenCharacters(limit);
    return Break{cut, cut};
}

/// The offset, or up to three bytes before, where a UTF-8 character begins.
std::uint64_t LogText::betweenCharacters(std::uint64_t offset) const {
    for (std::uint64_t cut = offset; cut + 4 > offset; --cut)
        if ((static_cast<unsigned char>(at(cut)) & 0xC0U) != 0x80U) return cut;
    return offset;
}

std::vector<LogText::Row> LogText::rows(std::uint64_t first, std::size_t count) const {
    first = std::max(first, firstRow());
    std::vector<Row> rows;
    if (first >= m_endRow) return rows;
    rows.reserve(std::min<std::uint64_t>(count, m_endRow - first));
    if (first < m_checkpoints.front().row && count > 0) {
        rows.push_back({begin(), m_checkpoints.front().begin - 1});
        ++first;
    }
    const auto next = std::ranges::upper_bound(m_checkpoints, first, {}, &Checkpoint::row);
    auto [row, rowBegin] = *std::prev(next);
    for (; row < m_endRow && rows.size() < count; ++row) {
        // The last row is not searched again: what it could find there is known.
        const auto found = row + 1 < m_endRow ? breakOf(rowBegin, rowBegin) : std::nullopt;
        if (row >= first) rows.push_back({rowBegin, found ? found->end : std::max(m_searched, rowBegin)});
        if (found) rowBegin = found->next;
    }
    return rows;
}

std::uint64_t LogText::rowAt(std::uint64_t offset) const {
    if (offset < m_checkpoints.front().begin) return firstRow();
    const auto next = std::ranges::upper_bound(m_checkpoints, offset, {}, &Checkpoint::begin);
    auto [row, rowBegin] = *std::prev(next);
    for (; row + 1 < m_endRow; ++row) {
        const auto found = breakOf(rowBegin, rowBegin);
        if (!found || found->next > offset) break;
        rowBegin = found->next;
    }
    return row;
}

std::string LogText::bytes(std::uint64_t begin, std::uint64_t end) const {
    std::string bytes;
    copy(begin, end, bytes);
    return bytes;
}

std::optional<std::string> LogText::wholeBytes(std::uint64_t begin, std::uint64_t end) const {
    std::string bytes;
    if (!copy(begin, end, bytes)) return std::nullopt;
    return bytes;
}

bool LogText::copy(std::uint64_t begin, std::uint64_t end, std::string& bytes) const {
    begin = std::max(begin, this->begin());
    end = std::min(end, this->end());
    if (begin >= end) return true;
    const std::uint64_t kept = m_checkpoints.front().begin; // the notice lies before it
    if (begin < kept) bytes = m_notice.substr(begin - this->begin(), end - begin);
    const std::size_t copied = bytes.size();
    bytes.resize(end - begin);
    return m_bytes.copy(begin + copied, std::span(bytes).subspan(copied));
}

std::optional<std::uint64_t> LogText::find(char byte, std::uint64_t begin, std::uint64_t end) const {
    while (begin < end) {
        const std::string_view block = m_bytes.blockFrom(begin).substr(0, end - begin);
        const std::size_t found = block.find(byte);
        if (found != std::string_view::npos) return begin + found;
        begin += block.size();
    }
    return std::nullopt;
}

} // namespace orrery

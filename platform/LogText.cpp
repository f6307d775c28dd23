#include "platform/LogText.h"

#include <algorithm>
#include <cstring>

namespace orrery {

void LogText::clear() {
    *this = LogText();
}

void LogText::append(std::string_view piece) {
    while (!piece.empty()) {
        const std::uint64_t used = m_size % blockSize;
        if (used == 0) m_blocks.push_back(std::make_unique_for_overwrite<char[]>(blockSize));
        const std::size_t taken = std::min<std::size_t>(piece.size(), blockSize - used);
        std::memcpy(m_blocks.back().get() + used, piece.data(), taken);
        piece.remove_prefix(taken);
        m_size += taken;
    }
    indexRows();
}

void LogText::indexRows() {
    while (const auto found = breakOf(m_lastRow, m_searched)) {
        m_widest = std::max(m_widest, found->end - m_lastRow);
        m_lastRow = m_searched = found->next;
        if (m_rowCount % rowsPerCheckpoint == 0) m_checkpoints.push_back(m_lastRow);
        ++m_rowCount;
    }
    m_searched = m_size;
    if (m_size > m_lastRow && at(m_size - 1) == '\r') --m_searched;
    m_widest = std::max(m_widest, m_searched - m_lastRow);
}

/// Where the row ends, once that is certain. There is no line end between its begin and `searched`.
std::optional<LogText::Break> LogText::breakOf(std::uint64_t rowBegin, std::uint64_t searched) const {
    const std::uint64_t limit = rowBegin + longestRow;
    const std::uint64_t last = std::min(limit + 1, m_size); // a line end right behind a full row belongs to it
    const auto lineFeed = find('\n', searched, last);
    const auto carriageReturn = find('\r', searched, lineFeed.value_or(last));
    if (carriageReturn) {
        if (*carriageReturn + 1 == m_size) return std::nullopt;
        const bool both = at(*carriageReturn + 1) == '\n';
        return Break{*carriageReturn, *carriageReturn + (both ? 2 : 1)};
    }
    if (lineFeed) return Break{*lineFeed, *lineFeed + 1};
    if (m_size <= limit) return std::nullopt;
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
    std::vector<Row> rows;
    if (first >= m_rowCount) return rows;
    rows.reserve(std::min<std::uint64_t>(count, m_rowCount - first));
    std::uint64_t begin = m_checkpoints[first / rowsPerCheckpoint];
    for (std::uint64_t row = first - first % rowsPerCheckpoint; row < m_rowCount && rows.size() < count; ++row) {
        // The last row is not searched again: what it could find there is known.
        const auto found = row + 1 < m_rowCount ? breakOf(begin, begin) : std::nullopt;
        if (row >= first) rows.push_back({begin, found ? found->end : m_searched});
        if (found) begin = found->next;
    }
    return rows;
}

std::uint64_t LogText::rowAt(std::uint64_t offset) const {
    const auto next = std::upper_bound(m_checkpoints.begin(), m_checkpoints.end(), offset);
    std::uint64_t begin = *std::prev(next);
    std::uint64_t row = static_cast<std::uint64_t>(next - m_checkpoints.begin() - 1) * rowsPerCheckpoint;
    for (; row + 1 < m_rowCount; ++row) {
        const auto found = breakOf(begin, begin);
        if (!found || found->next > offset) break;
        begin = found->next;
    }
    return row;
}

std::string_view LogText::blockFrom(std::uint64_t offset) const {
    if (offset >= m_size) return {};
    const std::uint64_t inBlock = offset % blockSize;
    return {m_blocks[offset / blockSize].get() + inBlock, std::min(blockSize - inBlock, m_size - offset)};
}

std::string LogText::bytes(std::uint64_t begin, std::uint64_t end) const {
    std::string bytes;
    end = std::min(end, m_size);
    if (begin >= end) return bytes;
    bytes.reserve(end - begin);
    while (begin < end) {
        const std::string_view block = blockFrom(begin).substr(0, end - begin);
        bytes += block;
        begin += block.size();
    }
    return bytes;
}

std::optional<std::uint64_t> LogText::find(char byte, std::uint64_t begin, std::uint64_t end) const {
    while (begin < end) {
        const std::string_view block = blockFrom(begin).substr(0, end - begin);
        const std::size_t found = block.find(byte);
        if (found != std::string_view::npos) return begin + found;
        begin += block.size();
    }
    return std::nullopt;
}

} // namespace orrery

#include "run/table/TableBlock.h"

#include <algorithm>
#include <cstring>

namespace orrery {

void TableBlock::read(const TableBytes& bytes, std::uint64_t position, std::size_t longestLine) {
    m_size = 0;
    m_linesSize = 0;
    m_atEnd = false;
    while (m_linesSize == 0 && !m_atEnd && m_size <= longestLine) {
        const std::size_t wanted = std::min(std::max(m_blockSize, m_size), longestLine + 1 - m_size);
        m_buffer.resize(std::max(m_buffer.size(), m_size + wanted + std::size_t{2} * tableSlack));
        char* const piece = m_buffer.data() + tableSlack + m_size;
        const std::size_t got = bytes(piece, wanted, position + m_size);
        const auto* last = static_cast<const char*>(memrchr(piece, '\n', got));
        m_linesSize = last == nullptr ? 0 : m_size + static_cast<std::size_t>(last + 1 - piece);
        m_size += got;
        m_atEnd = got < wanted;
    }
}

void TableBlock::findRows(const TableKernels& kernels, std::size_t begin, const RowSearch& search,
                          std::size_t& fieldsLeft) {
    m_rows.clear();
    m_text = {m_buffer.data(), static_cast<std::uint32_t>(tableSlack + begin),
              static_cast<std::uint32_t>(tableSlack + m_linesSize)};
    const BorderCounts counts = indexBorders(kernels);
    if (fieldsLeft == search.leadingFields && isRegular(counts, search.leadingFields + search.columns)) {
        addRegularRows(std::min(counts.lineFeeds, search.most), search);
    } else {
        addRows(counts.borders, search, fieldsLeft);
    }
}

BorderCounts TableBlock::indexBorders(const TableKernels& kernels) {
    const std::size_t needed = m_linesSize + tableSlack + 1;
    if (m_borderCapacity < needed) { // not initialised: most of it is never used, and so never takes memory
        m_borders.reset(new std::uint32_t[needed]);
        m_borderCapacity = needed;
    }
    m_borders[0] = m_text.begin - 1;
    return kernels.findBorders(m_text, m_borders.get() + 1);
}

/// Whether every line has as many tokens as a row has fields and values, one white-space character after each.
bool TableBlock::isRegular(const BorderCounts& counts, std::size_t tokens) const {
    if (tokens == 0 || counts.neighbours || counts.borders != counts.lineFeeds * tokens) {
        return false;
    }
    bool regular = true;
    for (std::size_t border = tokens; border <= counts.borders; border += tokens) {
        regular &= isLineFeed(border); // as many as there are, so no other border is one
    }
    return regular;
}

void TableBlock::addRegularRows(std::size_t count, const RowSearch& search) {
    m_rows.resize(count);
    auto first = static_cast<std::uint32_t>(search.leadingFields);
    const auto columns = static_cast<std::uint32_t>(search.columns);
    for (RowPlace& row : m_rows) {
        row = {first, first + columns};
        first += static_cast<std::uint32_t>(search.leadingFields + search.columns);
    }
}

void TableBlock::addRows(std::size_t borders, const RowSearch& search, std::size_t& fieldsLeft) {
    std::size_t border = 0;
    while (border < borders && m_rows.size() < search.most) {
        for (; fieldsLeft > 0 && border < borders; ++border) {
            fieldsLeft -= m_borders[border + 1] > m_borders[border] + 1 ? 1U : 0U;
        }
        if (fieldsLeft > 0) {
            return;
        }
        const auto first = static_cast<std::uint32_t>(border);
        border += search.leadingFields == 0 ? 1U : 0U; // the line feed of the line before
        while (!isLineFeed(border)) {
            ++border;
        }
        m_rows.push_back({first, static_cast<std::uint32_t>(border)});
        fieldsLeft = search.leadingFields;
    }
}

} // namespace orrery

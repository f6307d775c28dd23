#include "log/qt/LogRow.h"

#include "platform/values/Utf8.h"

#include <QChar>
#include <algorithm>
#include <array>
#include <utility>

namespace orrery {
namespace {

constexpr int tabWidth = 8;
constexpr char32_t replacement = 0xFFFD;
constexpr char32_t controlPictures = 0x2400;

/// The blocks whose characters take two columns in a monospaced text.
bool isWide(char32_t c) {
    static constexpr std::array<std::pair<char32_t, char32_t>, 12> blocks{{{0x1100, 0x115F},
                                                                           {0x2E80, 0x303E},
                                                                           {0x3041, 0x4DBF},
                                                                           {0x4E00, 0xA4CF},
                                                                           {0xA960, 0xA97C},
                                                                           {0xAC00, 0xD7A3},
                                                                           {0xF900, 0xFAFF},
                                                                           {0xFE30, 0xFE6F},
                                                                           {0xFF00, 0xFF60},
                                                                           {0xFFE0, 0xFFE6},
                                                                           {0x1F300, 0x1FAFF},
                                                                           {0x20000, 0x3FFFD}}};
    return std::ranges::any_of(blocks, [c](const auto& block) { return c >= block.first && c <= block.second; });
}

/// Nothing in a log may hide, or turn the direction of what follows.
char32_t shownFor(char32_t c, QChar::Category category) {
    if (c < 0x20) return controlPictures + c;
    if (c == 0x7F) return controlPictures + 0x21;
    const bool invisible = category == QChar::Other_Control || category == QChar::Other_Format ||
                           category == QChar::Separator_Line || category == QChar::Separator_Paragraph;
    return invisible ? replacement : c;
}

LogCell cellFor(char32_t c, int column) {
    LogCell cell;
    cell.column = column;
    if (c == U'\t') {
        cell.width = tabWidth - column % tabWidth;
        cell.shown = U' ';
    } else if (c >= 0x20 && c < 0x7F) {
        cell.shown = c;
    } else {
        const QChar::Category category = QChar::category(c);
        const bool combines = category == QChar::Mark_NonSpacing || category == QChar::Mark_Enclosing;
        cell.width = combines && column > 0 ? 0 : isWide(c) ? 2 : 1;
        cell.shown = shownFor(c, category);
    }
    return cell;
}

} // namespace

std::vector<LogCell> cellsOfRow(std::string_view utf8, int endColumn) {
    std::vector<LogCell> cells;
    cells.reserve(std::min<std::size_t>(utf8.size(), static_cast<std::size_t>(std::max(endColumn, 0)) + 1));
    int column = 0;
    for (std::size_t position = 0; position < utf8.size();) {
        const std::size_t offset = position;
        cells.push_back(cellFor(nextCodePoint(utf8, position), column));
        cells.back().offset = offset;
        if (cells.back().width > 0 && column >= endColumn) break; // combining marks still belong to the cell before
        column += cells.back().width;
    }
    return cells;
}

} // namespace orrery

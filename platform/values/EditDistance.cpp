#include "platform/values/EditDistance.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace orrery {

std::size_t editDistance(std::string_view left, std::string_view right, std::size_t limit) {
    if (std::max(left.size(), right.size()) - std::min(left.size(), right.size()) > limit) return limit + 1;
    std::vector<std::size_t> row(right.size() + 1);
    for (std::size_t column = 0; column < row.size(); ++column) {
        row[column] = column;
    }
    for (std::size_t line = 1; line <= left.size(); ++line) {
        std::size_t diagonal = std::exchange(row[0], line);
        std::size_t least = line;
        for (std::size_t column = 1; column < row.size(); ++column) {
            const std::size_t replaced = diagonal + (left[line - 1] == right[column - 1] ? 0 : 1);
            diagonal = row[column];
            row[column] = std::min({replaced, row[column] + 1, row[column - 1] + 1});
            least = std::min(least, row[column]);
        }
        if (least > limit) return limit + 1;
    }
    return std::min(row.back(), limit + 1);
}

} // namespace orrery

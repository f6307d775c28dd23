#pragma once

#include "platform/values/OrreryError.h"

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace orrery::engine {

/// A function given by points, linear between them and constant outside.
class LookupTable {
public:
    using Point = std::pair<double, double>;

    /// @throws OrreryError naming the owner when there is no point or the first numbers do not ascend
    LookupTable(std::vector<Point> points, const Place& place, const std::string& owner);
    /// From "x y; x y; …". @throws OrreryError as above, or when the text is not of that form
    static LookupTable fromText(std::string_view text, const Place& place, const std::string& owner);

    [[nodiscard]] double valueAt(double x) const;

private:
    std::vector<Point> m_points;
};

/// The number that the whole text holds, blanks around it allowed. @throws OrreryError naming the owner
[[nodiscard]] double numberIn(std::string_view text, const Place& place, const std::string& owner);

} // namespace orrery::engine

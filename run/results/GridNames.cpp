#include "run/results/GridNames.h"

#include <fmt/format.h>

#include <algorithm>
#include <set>
#include <string_view>

namespace orrery {

namespace {

bool isLetter(char byte) {
    return (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z');
}

bool isOfOtherScript(char byte) {
    return static_cast<unsigned char>(byte) >= 0x80;
}

/// Letters, digits and underscores, and what is not ASCII as it is.
std::string plainName(std::string_view text) {
    constexpr std::size_t longest = 200; // bytes; the format takes 256
    std::string name(text.substr(0, longest));
    if (text.size() > longest) {
        while (!name.empty() && isOfOtherScript(name.back()))
            name.pop_back(); // the cut may have split one
    }
    std::ranges::replace_if(
        name, [](char byte) { return !isLetter(byte) && !isOfOtherScript(byte) && !(byte >= '0' && byte <= '9'); },
        '_');
    if (name.empty() || (!isLetter(name.front()) && !isOfOtherScript(name.front()))) name.insert(0, "v_");
    return name;
}

class Names {
public:
    std::string take(std::string_view path) {
        const std::string wanted = plainName(leafOf(path));
        std::string name = wanted;
        for (int number = 2; !m_taken.insert(name).second; ++number) {
            name = fmt::format("{}_{}", wanted, number);
        }
        return name;
    }

private:
    std::set<std::string, std::less<>> m_taken{maskName};
};

} // namespace

GridNames gridNames(const RunResults& results) {
    Names names;
    GridNames made;
    const auto& variables = results.grid.variables;
    const std::string time = variables.empty() ? "" : names.take(variables.back().name()); // "day", whatever ports say
    for (std::size_t i = 0; i + 1 < variables.size(); ++i) {
        made.dimensions.push_back(names.take(variables[i].name()));
    }
    if (!variables.empty()) made.dimensions.push_back(time);
    for (const ResponseVariable& response : results.responses.variables) {
        made.responses.push_back(names.take(response.name()));
    }
    return made;
}

} // namespace orrery

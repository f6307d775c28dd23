#include "platform/values/ElidedName.h"

#include <vector>

namespace orrery {

namespace {

constexpr std::string_view ellipsis = "\u2026";

/// The offsets at which the UTF-8 text can be cut, from its beginning.
std::vector<std::size_t> cuts(std::string_view text) {
    std::vector<std::size_t> offsets;
    for (std::size_t offset = 0; offset < text.size(); ++offset) {
        if ((static_cast<unsigned char>(text[offset]) & 0xC0U) != 0x80U) offsets.push_back(offset);
    }
    return offsets;
}

} // namespace

std::string elidedName(std::string_view name, const std::function<bool(const std::string&)>& fits) {
    if (fits(std::string(name))) return std::string(name);
    const std::size_t slash = name.rfind('/');
    if (slash == std::string_view::npos) return {};
    const auto cutAt = [&](std::size_t offset) {
        return std::string(name.substr(0, offset)).append(ellipsis).append(name.substr(slash));
    };
    const std::vector<std::size_t> offsets = cuts(name.substr(0, slash + 1));
    if (!fits(cutAt(0))) return {};
    std::size_t shortest = 0; // the last cut that is known to fit
    std::size_t longest = offsets.size();
    while (shortest + 1 < longest) {
        const std::size_t middle = shortest + (longest - shortest) / 2;
        (fits(cutAt(offsets[middle])) ? shortest : longest) = middle;
    }
    return cutAt(offsets[shortest]);
}

} // namespace orrery

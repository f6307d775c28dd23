#include "platform/values/Quoted.h"

#include "platform/values/Utf8.h"

#include <algorithm>
#include <cstddef>

namespace orrery {

std::string messageText(std::string_view text) {
    constexpr std::size_t longest = 100;
    if (text.size() <= longest) return escapedForLine(text);
    std::size_t end = longest;
    while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0U) == 0x80U)
        --end; // never inside a character
    return escapedForLine(text.substr(0, end)) + "…";
}

std::string Quoted::operator()(std::string_view text) const {
    return "“" + messageText(text) + "”";
}

std::string listed(const std::vector<std::string>& texts) {
    constexpr std::size_t most = 8;
    std::string list;
    for (std::size_t i = 0; i < std::min(texts.size(), most); ++i) {
        list += (i == 0 ? "" : ", ") + quoted(texts[i]);
    }
    return texts.size() > most ? list + " and " + std::to_string(texts.size() - most) + " more" : list;
}

} // namespace orrery

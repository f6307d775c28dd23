#include "platform/values/OrreryError.h"

#include "platform/values/Utf8.h"

#include <algorithm>
#include <cctype>
#include <string_view>
#include <utility>

namespace orrery {
namespace {

constexpr std::size_t longestQuotation = 100;

std::string oneLine(const std::string& problem, const Place& place, const std::string& remedy) {
    std::string line = place.text();
    if (!line.empty()) line += ": ";
    line += problem;
    if (!remedy.empty()) line += ' ' + remedy;
    return line;
}

} // namespace

std::string Place::text() const {
    if (file.empty()) return {};
    std::string text = escapedForLine(file);
    if (line != 0) text += ':' + std::to_string(line);
    if (line != 0 && column != 0) text += ':' + std::to_string(column);
    return text;
}

OrreryError::OrreryError(std::string problem, Place place, std::string remedy)
    : std::runtime_error(oneLine(problem, place, remedy)), m_problem(std::move(problem)), m_place(std::move(place)),
      m_remedy(std::move(remedy)) {}

std::string quotedForMessage(const std::string& text) {
    if (text.size() <= longestQuotation) return escapedForLine(text);
    std::size_t end = longestQuotation;
    while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0U) == 0x80U)
        --end; // never inside a character
    return escapedForLine(std::string_view(text).substr(0, end)) + "…";
}

std::string capitalized(std::string words) {
    if (!words.empty()) words[0] = static_cast<char>(std::toupper(static_cast<unsigned char>(words[0])));
    return words;
}

std::string listedForMessage(const std::vector<std::string>& texts) {
    constexpr std::size_t most = 8;
    std::string list;
    for (std::size_t i = 0; i < std::min(texts.size(), most); ++i) {
        list += (i == 0 ? "" : ", ") + quotedForMessage(texts[i]);
    }
    return texts.size() > most ? list + " and " + std::to_string(texts.size() - most) + " more" : list;
}

} // namespace orrery

#include "platform/values/OrreryError.h"

#include "platform/values/Utf8.h"

#include <cctype>
#include <utility>

namespace orrery {
namespace {

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

std::string capitalized(std::string words) {
    if (!words.empty()) words[0] = static_cast<char>(std::toupper(static_cast<unsigned char>(words[0])));
    return words;
}

} // namespace orrery

#include "engine/FileColumn.h"

#include "platform/Files.h"
#include "platform/values/Quoted.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace orrery::engine {

namespace {

constexpr std::uint64_t sizeLimit = 64U << 20U;

std::vector<std::string_view> wordsOf(std::string_view line) {
    constexpr std::string_view blanks = " \t\r";
    std::vector<std::string_view> words;
    for (std::size_t at = line.find_first_not_of(blanks); at != std::string_view::npos;) {
        const std::size_t end = std::min(line.find_first_of(blanks, at), line.size());
        words.push_back(line.substr(at, end - at));
        at = line.find_first_not_of(blanks, end);
    }
    return words;
}

std::string contentOf(const std::string& path, const Place& place, const std::string& owner) {
    try {
        return readWholeFile(path, sizeLimit);
    } catch (const OrreryError& error) {
        throw OrreryError(owner + ": the file " + quoted(path) + " cannot be read: " + error.problem(), place,
                          "Put the file there, or correct the part's attribute “file”.");
    }
}

std::size_t columnOf(const std::vector<std::string_view>& labels, std::string_view label, const std::string& path,
                     const std::string& owner) {
    const auto found = std::ranges::find(labels, label);
    if (found != labels.end()) {
        return static_cast<std::size_t>(found - labels.begin());
    }
    std::string known;
    for (const std::string_view one : labels) {
        known.append(known.empty() ? "" : ", ").append(one);
    }
    throw OrreryError(owner + ": the file has no column " + quoted(label) + ".", {path, 1, 0},
                      "Name one of its columns: " + messageText(known) + ".");
}

} // namespace

LookupTable fileColumn(const std::string& path, std::string_view label, const Place& place, const std::string& owner) {
    const std::string bytes = contentOf(path, place, owner);
    std::vector<LookupTable::Point> points;
    std::size_t column = 0;
    bool headerRead = false;
    std::size_t lineNumber = 0;
    for (std::string_view rest = bytes; !rest.empty();) {
        const std::size_t end = std::min(rest.find('\n'), rest.size());
        const std::vector<std::string_view> words = wordsOf(rest.substr(0, end));
        rest.remove_prefix(std::min(end + 1, rest.size()));
        ++lineNumber;
        if (words.empty() || words.front().starts_with('#')) {
            continue;
        }
        if (!headerRead) {
            column = columnOf(words, label, path, owner);
            headerRead = true;
        } else if (column >= words.size()) {
            throw OrreryError(owner + ": the line is too short.", {path, lineNumber, 0}, "Give every column a number.");
        } else {
            const Place linePlace{path, lineNumber, 0};
            points.emplace_back(numberIn(words.front(), linePlace, owner), numberIn(words[column], linePlace, owner));
        }
    }
    return {std::move(points), {path, 0, 0}, owner};
}

} // namespace orrery::engine

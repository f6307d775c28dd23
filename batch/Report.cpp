#include "batch/Report.h"

#include "platform/values/Numbers.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <iterator>
#include <limits>
#include <string_view>

namespace orrery {
namespace {

constexpr std::size_t courseWidth = 40;

/// Sum and count of finite values, with their bounds.
struct Statistics {
    double sum = 0;
    double least = std::numeric_limits<double>::infinity();
    double greatest = -std::numeric_limits<double>::infinity();
    std::uint64_t count = 0;

    void add(double value) {
        if (std::isfinite(value)) {
            sum += value;
            least = std::min(least, value);
            greatest = std::max(greatest, value);
            ++count;
        }
    }
    [[nodiscard]] double mean() const { return sum / static_cast<double>(count); } // not a number without values
};

/// A column's values: all of them, and those at each value of the first sweep variable.
struct Course {
    Statistics all;
    std::vector<Statistics> slices;

    [[nodiscard]] std::vector<double> means() const {
        std::vector<double> means;
        std::ranges::transform(slices, std::back_inserter(means), &Statistics::mean);
        return means;
    }
};

/// Of every column, in one pass, since the results may lie in a file that is larger than memory.
std::vector<Course> coursesOf(const RunResults& results) {
    const IndependentVariable& first = results.grid.variables.front();
    std::vector<Course> courses(results.responses.variables.size(),
                                {.all = {}, .slices = std::vector<Statistics>(first.stridesPerCycle())});
    forEachRow(results, [&](std::uint32_t row, std::span<const float> cells) {
        for (std::size_t column = 0; column < cells.size(); ++column) {
            const auto value = static_cast<double>(cells[column]);
            courses[column].all.add(value);
            courses[column].slices[row / first.stride()].add(value);
        }
    });
    return courses;
}

/// Characters on the screen, counting one for each code point.
std::size_t displayWidth(std::string_view text) {
    return static_cast<std::size_t>(
        std::ranges::count_if(text, [](char byte) { return (static_cast<unsigned char>(byte) & 0xC0U) != 0x80U; }));
}

std::string padded(std::string_view text, std::size_t width) {
    return std::string(text) + std::string(width - std::min(width, displayWidth(text)), ' ');
}

std::size_t widest(const auto& named) {
    std::size_t width = 8;
    for (const auto& item : named) {
        width = std::max(width, displayWidth(item.name()));
    }
    return width;
}

std::string gridText(const SweepGrid& grid) {
    const std::size_t width = widest(grid.variables);
    std::string text = "Grid\n";
    for (const IndependentVariable& variable : grid.variables) {
        text += fmt::format("  {}  {} to {} by {}, {} values\n", padded(variable.name(), width),
                            shortestText(variable.start()), shortestText(variable.stop()),
                            shortestText(variable.step()), variable.stridesPerCycle());
    }
    return text + fmt::format("  {} rows\n", grid.nRowsOfData);
}

std::string responseText(const RunResults& results) {
    const std::vector<ResponseVariable>& responses = results.responses.variables;
    if (responses.empty()) {
        return "No responses: no recorded output of the model appears in the table's header.\n";
    }
    const std::size_t width = widest(responses);
    std::string text = fmt::format("{}  {:>10} {:>10} {:>10}  mean over {}\n", padded("Response", width + 2), "minimum",
                                   "mean", "maximum", results.grid.variables.front().name());
    const std::vector<Course> courses = coursesOf(results);
    for (std::size_t column = 0; column < responses.size(); ++column) {
        const Statistics& all = courses[column].all;
        text += fmt::format("  {}  ", padded(responses[column].name(), width));
        text += all.count == 0 ? "no numbers\n"
                               : fmt::format("{:>10.5} {:>10.5} {:>10.5}  {}\n", all.least, all.mean(), all.greatest,
                                             blockCourse(courses[column].means(), courseWidth));
    }
    return text;
}

} // namespace

std::string reportText(const RunResults& results, const std::vector<std::string>& files) {
    std::string text = gridText(results.grid) + "\n" + responseText(results) + "\nFiles\n";
    for (const std::string& file : files) {
        text += "  " + file + "\n";
    }
    return text;
}

std::string blockCourse(std::span<const double> values, std::size_t width) {
    constexpr std::array<std::string_view, 8> blocks{"▁", "▂", "▃", "▄", "▅", "▆", "▇", "█"};
    const std::size_t characters = std::min(values.size(), width);
    Statistics all;
    std::vector<double> heights;
    for (std::size_t i = 0; i < characters; ++i) {
        Statistics shared;
        for (std::size_t j = i * values.size() / characters; j < (i + 1) * values.size() / characters; ++j) {
            shared.add(values[j]);
        }
        heights.push_back(shared.mean());
        all.add(heights.back());
    }
    std::string text;
    for (const double height : heights) {
        const double share = all.greatest > all.least ? (height - all.least) / (all.greatest - all.least) : 0;
        text += std::isfinite(height) ? blocks.at(static_cast<std::size_t>(std::min(share * 8, 7.0))) : " ";
    }
    return text;
}

} // namespace orrery

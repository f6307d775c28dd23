#pragma once

#include "run/table/ResultTable.h"

#include <fmt/format.h>

#include <array>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <filesystem>
#include <fstream>
#include <functional>
#include <ostream>
#include <random>
#include <string>
#include <string_view>
#include <vector>

// Files that the measurements read. Each is made once and kept.
namespace orrery::bench {

/// Writes the file unless it is there, whole or not at all.
inline void makeOnce(const std::string& path, const std::function<void(std::ostream&)>& write) {
    namespace fs = std::filesystem;
    if (fs::exists(path)) {
        return;
    }
    fs::create_directories(fs::path(path).parent_path());
    std::ofstream file(path + ".part", std::ios::binary);
    write(file);
    file.close();
    fs::rename(path + ".part", path);
}

inline void append(std::string& text, double value, int digits) {
    std::array<char, 32> number{};
    const auto end =
        std::to_chars(number.data(), number.data() + number.size(), value, std::chars_format::general, digits);
    text.append(number.data(), end.ptr);
}

/// A value as engines write them: nearly all between 0.001 and 10,000, a few whole or tiny, some negative.
inline double randomValue(std::mt19937_64& random) {
    const auto uniform = [&](double low, double high) { return std::uniform_real_distribution(low, high)(random); };
    const double kind = uniform(0, 1);
    if (kind < 0.02) {
        return std::floor(uniform(0, 3));
    }
    const double magnitude = kind < 0.05 ? uniform(-9, -4) : uniform(-3, 4);
    return std::pow(10.0, magnitude) * (uniform(0, 1) < 0.25 ? -1 : 1);
}

inline void writeTable(std::ostream& file, const TableShape& shape) {
    std::mt19937_64 random(1);
    std::string row = "row";
    for (std::size_t column = 1; column < shape.leadingFields + shape.columns; ++column) {
        row += column < shape.leadingFields ? "\tf" + std::to_string(column)
                                            : "\tresp" + std::to_string(column - shape.leadingFields);
    }
    file << row << '\n';
    for (std::uint32_t n = 0; n < shape.rows; ++n) {
        row.clear();
        for (std::size_t field = 0; field < shape.leadingFields; ++field) {
            append(row, static_cast<double>(random() % 2000) / (field % 2 == 0 ? 1 : 10), 6);
            row += '\t';
        }
        for (std::size_t column = 0; column < shape.columns; ++column) {
            append(row, randomValue(random), 9);
            row += column + 1 < shape.columns ? '\t' : '\n';
        }
        file << row;
    }
}

/// An object of a model file with a name, and what else is given.
inline std::string modelObject(std::string_view type, std::string_view id, std::string_view name,
                               std::string_view rest) {
    return fmt::format(
        "    <object type=\"{}\" id=\"{}\">\n        <attribute name=\"name\" type=\"string\">{}</attribute>\n"
        "{}    </object>\n",
        type, id, name, rest);
}
inline std::string modelAttribute(std::string_view name, std::string_view text) {
    return fmt::format("        <attribute name=\"{}\" type=\"string\">{}</attribute>\n", name, text);
}
inline std::string modelRelationship(std::string_view name, std::string_view targets) {
    return fmt::format("        <relationship name=\"{}\" type=\"0/0\" idrefs=\"{}\"></relationship>\n", name, targets);
}

/// The inputs and recorded outputs of a part, `count` of each, and then the part.
inline void writePart(std::ostream& file, std::string_view part, std::size_t count) {
    std::vector<std::string> inputs;
    std::vector<std::string> outputs;
    for (std::size_t n = 0; n < count; ++n) {
        inputs.push_back(fmt::format("{}i{}", part, n));
        outputs.push_back(fmt::format("{}o{}", part, n));
        file << modelObject("KSINPUT", inputs.back(), fmt::format("input{}", n),
                            modelAttribute("unit", "kg/ha") + modelRelationship("parent", part));
        file << modelObject("KSOUTPUT", outputs.back(), fmt::format("resp{}", n),
                            modelAttribute("varid", fmt::format("{}", 1000 + n)) + modelAttribute("recordp", "1") +
                                modelAttribute("description", "What the part gives at every step") +
                                modelRelationship("parent", part));
    }
    file << modelObject("KSHTL", part, fmt::format("Part {}", part.substr(1)),
                        modelRelationship("parent", "root") +
                            modelRelationship("inputs", fmt::format("{}", fmt::join(inputs, " "))) +
                            modelRelationship("outputs", fmt::format("{}", fmt::join(outputs, " "))));
}

/// Parts with `ports` recorded outputs and as many inputs each, all in one level.
inline void writeModel(std::ostream& file, std::size_t parts, std::size_t ports) {
    std::vector<std::string> children;
    children.reserve(parts);
    file << "<?xml version=\"1.0\" standalone=\"yes\"?>\n<database>\n";
    for (std::size_t part = 0; part < parts; ++part) {
        children.push_back(fmt::format("p{}", part));
        writePart(file, children.back(), ports);
    }
    file << modelObject("KSLEVEL", "root", "Root",
                        modelRelationship("children", fmt::format("{}", fmt::join(children, " "))))
         << "</database>\n";
}

} // namespace orrery::bench

#pragma once

#include "run/ResultTable.h"

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

/// An object of a model file with a name and a varid, relationships, and what else is given.
inline std::string modelObject(const std::string& type, const std::string& id, const std::string& name,
                               const std::string& rest) {
    return "    <object type=\"" + type + "\" id=\"" + id + "\">\n        <attribute name=\"name\" type=\"string\">" +
           name + "</attribute>\n" + rest + "    </object>\n";
}
inline std::string modelAttribute(const std::string& name, const std::string& text) {
    return "        <attribute name=\"" + name + "\" type=\"string\">" + text + "</attribute>\n";
}
inline std::string modelRelationship(const std::string& name, const std::string& targets) {
    return "        <relationship name=\"" + name + "\" type=\"0/0\" idrefs=\"" + targets + "\"></relationship>\n";
}

/// Parts with `outputs` recorded outputs and as many inputs each, all in one level.
inline void writeModel(std::ostream& file, std::size_t parts, std::size_t outputs) {
    std::string children;
    file << "<?xml version=\"1.0\" standalone=\"yes\"?>\n<database>\n";
    for (std::size_t part = 0; part < parts; ++part) {
        const std::string id = "p" + std::to_string(part);
        std::string inputsOfPart;
        std::string outputsOfPart;
        for (std::size_t n = 0; n < outputs; ++n) {
            const std::string number = std::to_string(n);
            const std::string separator = n == 0 ? "" : " ";
            file << modelObject("KSINPUT", id + "i" + number, "input" + number,
                                modelAttribute("unit", "kg/ha") + modelRelationship("parent", id));
            file << modelObject("KSOUTPUT", id + "o" + number, "resp" + number,
                                modelAttribute("varid", std::to_string(1000 + n)) + modelAttribute("recordp", "1") +
                                    modelAttribute("description", "What the part gives at every step") +
                                    modelRelationship("parent", id));
            inputsOfPart += separator + id + "i" + number;
            outputsOfPart += separator + id + "o" + number;
        }
        file << modelObject("KSHTL", id, "Part " + std::to_string(part),
                            modelRelationship("parent", "root") + modelRelationship("inputs", inputsOfPart) +
                                modelRelationship("outputs", outputsOfPart));
        children += (part == 0 ? "" : " ") + id;
    }
    file << modelObject("KSLEVEL", "root", "Root", modelRelationship("children", children)) << "</database>\n";
}

} // namespace orrery::bench

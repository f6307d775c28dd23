#pragma once

#include "engine/EngineRun.h"
#include "platform/Files.h"
#include "support/ModelText.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <filesystem>
#include <sstream>
#include <string>
#include <vector>

namespace orrery::engine {

using test::ModelText;

/// A table as words, with its header's labels.
struct TableText {
    std::vector<std::string> labels;
    std::vector<std::vector<std::string>> rows;

    [[nodiscard]] double number(std::size_t row, const std::string& label) const {
        for (std::size_t column = 0; column < labels.size(); ++column) {
            if (labels[column] == label) {
                return std::strtod(rows.at(row).at(column).c_str(), nullptr);
            }
        }
        ADD_FAILURE() << "no column " << label;
        return 0;
    }
    [[nodiscard]] const std::string& cells(std::size_t row) const { return rows.at(row).back(); } // the last column
};

/// Runs small setups inside the test, each in a directory of its own.
class EngineFixture : public testing::Test {
protected:
    [[nodiscard]] std::string path(const std::string& name) const { return m_folder.path() + name; }
    void write(const std::string& name, const std::string& text) const { (void)m_folder.write(name, text); }
    [[nodiscard]] std::string read(const std::string& name) const { return readWholeFile(path(name)); }
    [[nodiscard]] std::vector<std::string> files() const {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(m_folder.path())) {
            names.push_back(entry.path().filename().string());
        }
        std::ranges::sort(names);
        return names;
    }

    void runFiles() {
        Progress progress([this](std::string_view line) { m_lines.append(line).append("\n"); }, m_stop);
        runSetup(path("setup.orrery"), m_folder.path(), currentCalendar(), progress);
    }
    TableText run(const ModelText& model, const std::string& setup) {
        write("model.xml", model.text());
        write("setup.orrery", setup);
        runFiles();
        return table();
    }
    [[nodiscard]] TableText table() const {
        TableText table;
        std::istringstream stream(read("Zephyr.txt"));
        std::string line;
        while (std::getline(stream, line)) {
            std::istringstream words(line);
            std::vector<std::string> fields;
            for (std::string word; std::getline(words, word, '\t');) {
                fields.push_back(word);
            }
            if (table.labels.empty()) {
                table.labels = fields;
            } else {
                table.rows.push_back(fields);
            }
        }
        return table;
    }

    test::TemporaryFolder m_folder;
    std::string m_lines; // what the engine said
    std::atomic<bool> m_stop = false;
};

/// A setup of 10 days with a row a day; `settings` replace the ones here (the first element of a name counts).
[[nodiscard]] inline std::string setupText(const std::string& settings, const std::string& entries = {}) {
    const bool hasSteps = settings.find("<StepsPerDay>") != std::string::npos; // which must stand there once
    return "<Simulation>" + settings + (hasSteps ? "" : "<StepsPerDay>1</StepsPerDay>") +
           "<ModelPath>model.xml</ModelPath><RunLength>10</RunLength><ReportStep>1</ReportStep>"
           "<Dimensions>{1,1}</Dimensions>" +
           entries + "</Simulation>";
}

[[nodiscard]] inline std::string initialization(const std::string& port, const std::string& value,
                                                const std::string& coordinates = "{0,0}") {
    return "<Initialization><PortPath>" + port + "</PortPath><Coordinates>" + coordinates + "</Coordinates><Value>" +
           value + "</Value></Initialization>";
}

[[nodiscard]] inline std::string stepper(const std::string& port, const std::string& start, const std::string& step,
                                         const std::string& stop) {
    return "<Steppers><PortPath>" + port + "</PortPath><Start>" + start + "</Start><Step>" + step + "</Step><Stop>" +
           stop + "</Stop></Steppers>";
}

[[nodiscard]] inline std::string output(const std::string& port, const std::string& file) {
    return "<Output><PortPath>" + port + "</PortPath><OutputPathName>" + file + "</OutputPathName></Output>";
}

} // namespace orrery::engine

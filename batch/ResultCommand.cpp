#include "batch/Command.h"
#include "batch/JsonWriter.h"
#include "batch/Output.h"
#include "batch/ResultJson.h"
#include "batch/SetupFiles.h"
#include "platform/values/Numbers.h"

#include <CLI/CLI.hpp>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

namespace orrery {
namespace {

struct ResultOptions {
    ResultSource source;
    std::string csv;
    std::string keep;
    bool summary = false;
};

/// A field of a CSV line, in quotes where it must be.
std::string csvField(const std::string& text) {
    if (text.find_first_of(",\"\r\n") == std::string::npos) {
        return text;
    }
    std::string quoted = "\"";
    for (const char character : text) {
        quoted.append(character == '"' ? 2 : 1, character);
    }
    return quoted + '"';
}

void writeCsvHeader(Output& output, const RunResults& results) {
    const char* separator = "";
    for (const IndependentVariable& variable : results.grid.variables) {
        output.write(separator + csvField(variable.name()));
        separator = ",";
    }
    for (const ResponseVariable& response : results.responses.variables) {
        output.write(separator + csvField(response.name()));
    }
    output.write("\n");
}

/// One line per row: the value of every sweep variable there, then every response.
void writeCsv(Output& output, const RunResults& results) {
    writeCsvHeader(output, results);
    forEachRow(results, [&](std::uint32_t row, std::span<const float> cells) {
        const char* separator = "";
        for (const IndependentVariable& variable : results.grid.variables) {
            const std::uint32_t index = row / variable.stride() % variable.stridesPerCycle();
            output.write(separator + shortestText(valueAtIndex(variable, index)));
            separator = ",";
        }
        for (const float cell : cells) {
            output.write(separator + shortestText(cell));
        }
        output.write("\n");
    });
}

int printResults(const ResultOptions& options) {
    if (!options.keep.empty()) {
        keepResults(options.source, options.keep);
        return exitDone;
    }
    const RunResults results = loadResults(options.source);
    Output output(options.csv.empty() ? "-" : options.csv);
    if (options.csv.empty()) {
        JsonWriter json(output);
        writeResults(json, results, options.summary);
        output.write("\n");
    } else {
        writeCsv(output, results);
    }
    output.finish();
    return exitDone;
}

} // namespace

Action buildResultsCommand(CLI::App& parser) {
    const auto options = std::make_shared<ResultOptions>();
    addResultSource(parser, options->source);
    auto* summary = parser.add_flag("--summary", options->summary, "Leave the data out");
    parser.add_option("--csv", options->csv, "Write the data as CSV to a file, - for standard output")
        ->excludes(summary);
    parser.add_option("--keep", options->keep, "Keep the table in this results file (NetCDF), and print nothing")
        ->excludes(summary)
        ->excludes("--csv");
    parser
        .add_option("--threads", options->source.threads,
                    "Read the table with this many threads (default: as many as help)")
        ->check(CLI::Range(1, 64));
    return [options] { return printResults(*options); };
}

} // namespace orrery

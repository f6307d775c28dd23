#include "batch/Command.h"
#include "batch/JsonWriter.h"
#include "batch/Output.h"
#include "batch/SetupFiles.h"

#include <CLI/CLI.hpp>

#include <memory>
#include <string>

namespace orrery {
namespace {

void writeVariable(JsonWriter& json, const IndependentVariable& variable) {
    json.beginObject();
    json.member("name", variable.name());
    json.member("start", variable.start());
    json.member("stop", variable.stop());
    json.member("step", variable.step());
    json.member("constant", variable.constant());
    json.member("stride", variable.stride());
    json.member("stridesPerCycle", variable.stridesPerCycle());
    json.member("function", static_cast<std::uint32_t>(variable.function()));
    json.endObject();
}

int sweep(const std::string& setupPath) {
    const SetupDictionary setup = loadSetup(setupPath);
    const SweepGrid grid = constructIndependentVariables(setup, currentCalendar());
    printProblems(setup, setupPath);
    Output output("-");
    JsonWriter json(output);
    json.beginObject();
    json.member("nRowsOfData", grid.nRowsOfData);
    json.key("independentVariables");
    json.beginArray();
    for (const IndependentVariable& variable : grid.variables) {
        writeVariable(json, variable);
    }
    json.endArray();
    json.endObject();
    output.write("\n");
    output.finish();
    return exitDone;
}

} // namespace

Action buildSweepCommand(CLI::App& parser) {
    const auto setup = std::make_shared<std::string>();
    parser.add_option("SETUP", *setup, "The setup file")->required();
    return [setup] { return sweep(*setup); };
}

} // namespace orrery

#include "engine/EngineRun.h"

#include "document/setup/ModelPath.h"
#include "document/setup/SetupReader.h"
#include "engine/PortNetwork.h"
#include "engine/RunPlan.h"
#include "engine/Simulation.h"
#include "engine/TableWriter.h"
#include "model/ModelObjects.h"
#include "platform/Files.h"
#include "platform/values/OrreryError.h"
#include "run/table/ResultTable.h"

#include <fmt/format.h>

#include <cstddef>
#include <cstdint>
#include <vector>

namespace orrery::engine {

namespace {

SetupDictionary readSetupFile(const std::string& path) {
    LoadedSetup setup = readSetup(readWholeFile(path), path);
    if (setup.parsed) {
        return std::move(setup.dictionary);
    }
    throw OrreryError("This is not a setup file: " + setup.fault, {path}, "Name a setup saved by Orrery.");
}

std::string modelPathOf(const SetupDictionary& setup, const std::string& setupPath) {
    std::string path = resolvedPath(setup.textOrEmpty(setup_key::modelPath), setupPath);
    if (!path.empty()) {
        return path;
    }
    throw OrreryError(std::string(noModelChosen), {setupPath}, "Choose one in Orrery and save the setup.");
}

void describe(const SetupDictionary& setup, const PortNetwork& network, const RunPlan& plan, std::size_t columns,
              const Progress& progress) {
    progress.line(fmt::format("Model {}: {} parts, {} ports", network.modelPath(), network.parts().size(),
                              network.ports().size()));
    std::string counts;
    for (const IndependentVariable& variable : plan.grid.variables) {
        counts += fmt::format("{}{}", counts.empty() ? "" : " x ", variable.stridesPerCycle());
    }
    progress.line(fmt::format("Grid {} = {} rows, {} recorded output(s), {} cell(s)", counts, plan.grid.nRowsOfData,
                              columns, plan.cellCount()));
    for (const std::string& warning : sweepWarnings(setup, plan.grid)) {
        progress.line("Note: " + warning);
    }
}

void computeRows(Simulation& simulation, const RunPlan& plan, TableWriter& table, Progress& progress) {
    const std::uint32_t days = plan.day().stridesPerCycle();
    std::uint32_t row = 0;
    for (std::uint32_t combination = 0; combination < plan.combinations(); ++combination) {
        simulation.begin(combination);
        for (std::uint32_t day = 0; day < days; ++day) {
            table.append(row++, simulation.report(day, [&progress] { progress.tick(); }));
            progress.rowDone();
            progress.tick();
        }
    }
}

} // namespace

void runSetup(const std::string& setupPath, const std::string& temporaryDirectory, const Calendar& calendar,
              Progress& progress) {
    const SetupDictionary setup = readSetupFile(setupPath);
    const PortNetwork network(modelPathOf(setup, setupPath));
    const RunPlan plan = makeRunPlan(setup, network, setupPath, calendar);
    const std::vector<std::size_t> recorders = network.recorders();
    std::vector<std::size_t> watched = recorders;
    for (const OutputFile& output : plan.outputFiles) {
        watched.push_back(output.port);
    }
    Simulation simulation(network, plan, std::move(watched));

    describe(setup, network, plan, recorders.size(), progress);
    for (const std::string& note : simulation.notes()) {
        progress.line(note);
    }
    progress.expect(plan.grid.nRowsOfData);
    TableWriter table(network, plan, recorders, resultTablePath(temporaryDirectory));
    computeRows(simulation, plan, table, progress);
    table.publish();
    progress.line(fmt::format("Wrote {} rows to {} in {:.1f} s", plan.grid.nRowsOfData,
                              resultTablePath(temporaryDirectory), progress.seconds()));
}

} // namespace orrery::engine

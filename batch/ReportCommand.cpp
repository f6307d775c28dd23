#include "batch/Command.h"
#include "batch/Output.h"
#include "batch/Report.h"
#include "batch/SetupFiles.h"

#include <CLI/CLI.hpp>

#include <memory>

namespace orrery {
namespace {

int report(const ResultSource& source) {
    const RunResults results = loadResults(source);
    Output output("-");
    output.write(reportText(results, source.files()));
    output.finish();
    return exitDone;
}

} // namespace

Action buildReportCommand(CLI::App& parser) {
    const auto source = std::make_shared<ResultSource>();
    addResultSource(parser, *source);
    return [source] { return report(*source); };
}

} // namespace orrery

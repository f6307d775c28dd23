#include "batch/Command.h"
#include "batch/Output.h"
#include "batch/Report.h"
#include "batch/SetupFiles.h"

#include <CLI/CLI.hpp>

#include <memory>
#include <string>

namespace orrery {
namespace {

struct ReportOptions {
    std::string setup;
    std::string table;
};

int report(const ReportOptions& options) {
    const std::string tablePath = tablePathOr(options.table);
    const RunResults results = loadResults(options.setup, tablePath);
    Output output("-");
    output.write(reportText(results, {options.setup, tablePath}));
    output.finish();
    return exitDone;
}

} // namespace

Action buildReportCommand(CLI::App& parser) {
    const auto options = std::make_shared<ReportOptions>();
    parser.add_option("SETUP", options->setup, "The setup file that was run")->required();
    parser.add_option("--table", options->table, "The result table (default: the last run's)");
    return [options] { return report(*options); };
}

} // namespace orrery

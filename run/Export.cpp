#include "run/Export.h"

#include "document/setup/ModelPath.h"
#include "platform/Files.h"
#include "platform/values/Numbers.h"
#include "platform/values/OrreryError.h"
#include "platform/values/Quoted.h"

#include <algorithm>

namespace orrery {

bool isSingleRun(const SetupDictionary& setup) {
    return pointFromString(setup.textOrEmpty(setup_key::dimensions)) == Point{1, 1};
}

std::vector<std::string> exportPaths(const SetupDictionary& setup, const std::string& tablePath,
                                     std::string_view setupPath) {
    if (isSingleRun(setup)) {
        return {tablePath};
    }
    std::vector<std::string> paths;
    for (const Entry& output : setup.entries(setup_key::outputs)) {
        paths.push_back(resolvedPath(output.text("outputPath"), setupPath));
        if (paths.back().empty()) {
            throw OrreryError("The output " + quoted(output.text("portPath")) + " has no path for its result file.", {},
                              "Type its path into the outputs table.");
        }
    }
    return paths;
}

bool exportFilesExist(const SetupDictionary& setup, const std::string& tablePath, std::string_view setupPath) {
    if (isSingleRun(setup)) {
        return fileExists(tablePath);
    }
    const EntryList& outputs = setup.entries(setup_key::outputs);
    return !outputs.empty() && std::ranges::all_of(outputs, [setupPath](const Entry& output) {
        const std::string path = resolvedPath(output.text("outputPath"), setupPath);
        return !path.empty() && fileExists(path);
    });
}

} // namespace orrery

#include "batch/KeptResults.h"

#include "document/setup/ModelPath.h"

namespace orrery {

RunRecord recordOfSetup(const SetupDictionary& setup, const std::string& setupPath) {
    RunRecord record;
    record.setup = recordFile(setupPath);
    record.model = recordFile(resolvedPath(setup.textOrEmpty(setup_key::modelPath), setupPath), largestKeptModel);
    record.version = ORRERY_VERSION;
    return record;
}

} // namespace orrery

#include "app/Samples.h"

#include "app/widgets/FileNames.h"

#include <algorithm>
#include <filesystem>

namespace orrery {

namespace {

namespace fs = std::filesystem;

std::vector<std::string> setupsIn(const fs::path& folder) {
    std::vector<std::string> setups;
    std::error_code ignored; // a folder that is missing or cannot be read holds no samples
    for (const auto& entry : fs::directory_iterator(folder, ignored)) {
        if (entry.path().extension() == ".orrery") setups.push_back(entry.path().string());
    }
    std::ranges::sort(setups);
    return setups;
}

} // namespace

std::vector<std::string> sampleSetups() {
    std::error_code ignored;
    const fs::path bin = fs::read_symlink("/proc/self/exe", ignored).parent_path();
    if (bin.empty()) return {};
    return setupsIn(fs::weakly_canonical(bin / "../share/orrery/samples", ignored));
}

bool isSampleSetup(const std::string& path) {
    return std::ranges::any_of(sampleSetups(), [&](const std::string& sample) { return isSameFile(sample, path); });
}

} // namespace orrery

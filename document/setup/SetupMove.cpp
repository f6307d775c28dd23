#include "document/setup/SetupMove.h"

#include "document/setup/ModelPath.h"
#include "platform/Files.h"

#include <algorithm>
#include <filesystem>

namespace orrery {

namespace {

namespace fs = std::filesystem;

fs::path folderOf(const std::string& file) {
    return fs::path(absolutePath(file)).parent_path();
}

bool isSameFolder(const fs::path& folder, const fs::path& other) {
    std::error_code ignored; // one that is gone is another one, unless it has the same name
    return folder == other || fs::equivalent(folder, other, ignored);
}

/// Without "." and "..". As the system goes through links, "link/.." is not the folder that the link lies in.
std::string withoutDots(const fs::path& path) {
    if (std::ranges::none_of(path, [](const fs::path& part) { return part == "." || part == ".."; })) {
        return path.string();
    }
    std::error_code missing;
    const fs::path folder = fs::canonical(path.parent_path(), missing);
    return missing ? path.string() : (folder / path.filename()).string();
}

} // namespace

std::string absoluteModelPath(std::string_view modelPath, const std::string& setupFile) {
    if (modelPath.empty() || modelPath.front() == '/') return std::string(modelPath);
    return withoutDots(resolvedPath(modelPath, absolutePath(setupFile)));
}

SetupDictionary setupAfterMove(const SetupDictionary& setup, const std::optional<std::string>& oldSetupFile,
                               const std::string& newSetupFile) {
    SetupDictionary moved;
    for (const auto& [key, value] : setup.values()) {
        moved.setValue(key, value);
    }
    if (const std::string* model = setup.text(setup_key::modelPath)) {
        moved.setText(setup_key::modelPath, modelPathAfterMove(*model, oldSetupFile, newSetupFile));
    }
    return moved;
}

std::string modelPathAfterMove(std::string_view modelPath, const std::optional<std::string>& oldSetupFile,
                               const std::string& newSetupFile) {
    std::string asItStands(modelPath);
    if (modelPath.empty() || modelPath.front() == '/') return asItStands;
    if (!oldSetupFile) return fileExists(asItStands) ? absolutePath(asItStands) : asItStands;
    if (isSameFolder(folderOf(*oldSetupFile), folderOf(newSetupFile))) return asItStands;
    return absoluteModelPath(modelPath, *oldSetupFile);
}

} // namespace orrery

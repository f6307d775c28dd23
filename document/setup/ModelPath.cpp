#include "document/setup/ModelPath.h"

namespace orrery {

std::string resolvedModelPath(std::string_view modelPath, std::string_view setupFilePath) {
    const std::size_t slash = setupFilePath.rfind('/');
    if (modelPath.empty() || modelPath.front() == '/' || slash == std::string_view::npos) {
        return std::string(modelPath);
    }
    return std::string(setupFilePath.substr(0, slash + 1)).append(modelPath);
}

} // namespace orrery

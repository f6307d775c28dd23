#include "document/setup/ModelPath.h"

namespace orrery {

std::string resolvedPath(std::string_view path, std::string_view setupFilePath) {
    const std::size_t slash = setupFilePath.rfind('/');
    if (path.empty() || path.front() == '/' || slash == std::string_view::npos) {
        return std::string(path);
    }
    return std::string(setupFilePath.substr(0, slash + 1)).append(path);
}

} // namespace orrery

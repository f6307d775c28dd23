#include "platform/native/FileAttributes.h"

#include <linux/limits.h>
#include <sys/types.h>
#include <sys/xattr.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <string_view>

namespace orrery {

namespace {

/// A path by which the system finds the open file even when it is open for its path only.
std::string pathOf(int descriptor) {
    return "/proc/self/fd/" + std::to_string(descriptor);
}

/// Of contents that the new file does not have.
bool isOfContents(std::string_view name) {
    constexpr std::array<std::string_view, 3> names{"security.ima", "security.evm", "security.capability"};
    return std::ranges::find(names, name) != names.end();
}

bool isAdministrators(std::string_view name) {
    return name.starts_with("security.") || name.starts_with("trusted.");
}

std::vector<std::string> attributeNames(const std::string& path, std::vector<LostAttribute>& lost) {
    std::string list(XATTR_LIST_MAX, '\0');
    const ssize_t length = listxattr(path.c_str(), list.data(), list.size());
    if (length < 0 && errno != ENOTSUP) lost.push_back({accessListName, errno}); // there may be one
    list.resize(static_cast<std::size_t>(std::max<ssize_t>(length, 0)));
    std::vector<std::string> names;
    for (std::size_t start = 0; start < list.size(); start += names.back().size() + 1) {
        names.emplace_back(list.c_str() + start);
    }
    return names;
}

/// The error number; 0 when it was copied.
int copyAttribute(const std::string& from, int to, const std::string& name) {
    std::string value(XATTR_SIZE_MAX, '\0');
    const ssize_t length = getxattr(from.c_str(), name.c_str(), value.data(), value.size());
    if (length < 0) return errno == ENODATA ? 0 : errno;
    return fsetxattr(to, name.c_str(), value.data(), static_cast<std::size_t>(length), 0) == 0 ? 0 : errno;
}

/// A new file gets the list that its directory has for new files.
int removeAccessList(int file) {
    if (fremovexattr(file, accessListName) == 0 || errno == ENODATA || errno == ENOTSUP) return 0;
    return errno;
}

} // namespace

std::vector<LostAttribute> copyAttributes(int from, int to) {
    std::vector<LostAttribute> lost;
    if (const int error = removeAccessList(to); error != 0) lost.push_back({accessListName, error});
    const std::string path = pathOf(from);
    for (const std::string& name : attributeNames(path, lost)) {
        if (isOfContents(name)) continue;
        const int error = copyAttribute(path, to, name);
        if (error != 0 && !isAdministrators(name)) lost.push_back({name, error});
    }
    return lost;
}

} // namespace orrery

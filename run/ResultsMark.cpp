#include "run/ResultsMark.h"

#include "platform/Files.h"
#include "platform/values/OrreryError.h"

#include <string_view>

namespace orrery {

bool looksLikeResultsFile(const std::string& path) {
    constexpr std::string_view signature = "\x89HDF\r\n\x1a\n";
    try {
        std::string bytes(signature.size(), '\0');
        bytes.resize(ReadableFile(path).readAt(bytes.data(), bytes.size(), 0));
        return bytes == signature;
    } catch (const OrreryError&) {
        return false;
    }
}

} // namespace orrery

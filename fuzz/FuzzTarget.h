#pragma once

#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <string_view>

/// What libFuzzer and our driver call with each input.
extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size);

namespace orrery::fuzz {

/// The input as text.
[[nodiscard]] inline std::string_view asText(const unsigned char* data, std::size_t size) {
    return {reinterpret_cast<const char*>(data), size};
}

/// Ends the program when what must hold does not.
inline void require(bool holds, const char* what) {
    if (holds) return;
    std::fprintf(stderr, "does not hold: %s\n", what);
    std::abort();
}

} // namespace orrery::fuzz

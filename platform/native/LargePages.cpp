#include "platform/LargePages.h"

#include <sys/mman.h>

#include <memory>

namespace orrery {

void adviseLargePages(void* memory, std::size_t size) {
    constexpr std::size_t large = 2U << 20U;
    std::size_t left = size;
    void* const begin = std::align(large, large, memory, left); // none where not one fits
    if (begin != nullptr) {                                     // a system that has none refuses, and all is as it was
        (void)madvise(begin, left / large * large, MADV_HUGEPAGE);
    }
}

} // namespace orrery

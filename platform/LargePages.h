#pragma once

#include <cstddef>

namespace orrery {

/// Asks the system for large pages (2 MB on most machines) for those parts of a block that fill whole ones. To be
/// called before the memory is written. Of no effect but speed: a page that comes with its neighbours costs a fraction.
void adviseLargePages(void* memory, std::size_t size);

} // namespace orrery

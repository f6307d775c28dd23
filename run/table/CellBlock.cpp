#include "run/table/CellBlock.h"

#include "platform/LargePages.h"

#include <algorithm>
#include <new>

namespace orrery {

CellBlock::CellBlock(std::size_t size) : m_size(size) {
    if (size == 0) {
        return;
    }
    m_cells.reset(static_cast<float*>(std::calloc(size, sizeof(float))));
    if (m_cells == nullptr) {
        throw std::bad_alloc();
    }
    adviseLargePages(m_cells.get(), size * sizeof(float));
}

CellBlock::CellBlock(std::span<const float> cells) : CellBlock(cells.size()) {
    std::ranges::copy(cells, data());
}

} // namespace orrery

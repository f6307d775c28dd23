#include "log/LogBytes.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace orrery {
namespace {

/// What makes room for newer text is dropped in large pieces, so that it is seldom.
constexpr std::uint64_t dropStep = 16 * LogBytes::blockSize;
constexpr char unreadable = '?';

} // namespace

void LogBytes::append(std::string_view piece) {
    while (!piece.empty()) {
        const std::uint64_t used = m_end % blockSize;
        if (used == 0) addBlock();
        const std::size_t taken = std::min<std::size_t>(piece.size(), blockSize - used);
        std::memcpy(m_blocks.back().get() + used, piece.data(), taken);
        piece.remove_prefix(taken);
        m_end += taken;
    }
}

void LogBytes::addBlock() {
    if ((m_blocks.size() + 1) * blockSize <= m_memoryLimit) {
        m_blocks.push_back(std::make_unique_for_overwrite<char[]>(blockSize));
        return;
    }
    const std::uint64_t begin = m_memoryBegin + blockSize;
    if (!storeOldest()) {
        if (m_store != nullptr) (void)m_store->dropBefore(begin); // nothing behind a gap counts
        m_begin = begin;
    }
    m_memoryBegin = begin;
    m_blocks.push_back(std::move(m_blocks.front()));
    m_blocks.pop_front();
}

bool LogBytes::storeOldest() {
    if (m_store == nullptr && m_makeStore != nullptr) m_store = m_makeStore();
    if (m_store == nullptr) return false;
    const std::string_view block(m_blocks.front().get(), blockSize);
    if (m_store->write(m_memoryBegin, block)) return true;
    if (m_begin == m_memoryBegin) return false;
    m_begin = m_store->dropBefore(std::min(m_begin + dropStep, m_memoryBegin));
    return m_store->write(m_memoryBegin, block);
}

std::string_view LogBytes::blockFrom(std::uint64_t offset) const {
    if (offset < m_begin || offset >= m_end) return {};
    const std::uint64_t inBlock = offset % blockSize;
    const std::uint64_t begin = offset - inBlock;
    const char* const block = begin < m_memoryBegin ? page(begin) : m_blocks[(begin - m_memoryBegin) / blockSize].get();
    return {block + inBlock, std::min(blockSize - inBlock, m_end - offset)};
}

const char* LogBytes::page(std::uint64_t blockBegin) const {
    auto found = std::ranges::find_if(
        m_pages, [blockBegin](const Paged& paged) { return paged.block != nullptr && paged.begin == blockBegin; });
    if (found == m_pages.end()) {
        found = m_pages.end() - 1;
        if (found->block == nullptr) found->block = std::make_unique_for_overwrite<char[]>(blockSize);
        found->begin = blockBegin;
        copy(blockBegin, {found->block.get(), blockSize});
    }
    std::rotate(m_pages.begin(), found, found + 1);
    return m_pages.front().block.get();
}

bool LogBytes::copy(std::uint64_t offset, std::span<char> bytes) const {
    bool whole = true;
    if (offset < m_memoryBegin && !bytes.empty()) {
        const auto stored = bytes.first(std::min<std::uint64_t>(bytes.size(), m_memoryBegin - offset));
        whole = m_store != nullptr && m_store->read(offset, stored);
        if (!whole) std::ranges::fill(stored, unreadable);
        offset += stored.size();
        bytes = bytes.subspan(stored.size());
    }
    while (!bytes.empty()) {
        const std::uint64_t inMemory = offset - m_memoryBegin;
        const std::uint64_t inBlock = inMemory % blockSize;
        const std::size_t taken = std::min<std::size_t>(bytes.size(), blockSize - inBlock);
        std::memcpy(bytes.data(), m_blocks[inMemory / blockSize].get() + inBlock, taken);
        offset += taken;
        bytes = bytes.subspan(taken);
    }
    return whole;
}

} // namespace orrery

#include "engine/ResultFile.h"

#include <cstddef>

namespace orrery::engine {

namespace {

constexpr std::size_t pieceSize = 1U << 20U;

} // namespace

ResultFile::ResultFile(const std::string& path) : m_file(std::make_unique<FileReplacement>(path)) {
    m_buffer.reserve(pieceSize + pieceSize / 4);
}

void ResultFile::flushIfLarge() {
    if (m_buffer.size() >= pieceSize) {
        flush();
    }
}

void ResultFile::publish() {
    flush();
    m_file->finish();
}

void ResultFile::flush() {
    m_file->write(m_buffer);
    m_buffer.clear();
}

} // namespace orrery::engine

#include "plot/VertexBuffers.h"

#include "platform/LargePages.h"
#include "platform/values/Numbers.h"
#include "platform/values/OrreryError.h"
#include "plot/data/VertexData.h"

#include <fmt/format.h>

#include <algorithm>
#include <new>
#include <utility>

namespace orrery {

VertexMemory VertexBuffers::lend(std::size_t floats, std::uint32_t dimensions, bool current) {
    m_vertices = 0;
    VertexMemory memory{{}, std::exchange(m_kept, false)};
    if (current) {
        unmap(); // what a build that came to nothing has left
    }
    memory.kept = fit(floats, dimensions, current) && memory.kept;
    for (Buffer& buffer : m_buffers) {
        std::span<float> room = current ? mapped(buffer) : std::span<float>();
        if (room.empty()) {
            room = blockOf(buffer, memory.kept);
        }
        memory.pieces.push_back({buffer.run.first, room});
    }
    return memory;
}

/// Cuts the plot and makes room for its parts. Whether all the room was there already.
bool VertexBuffers::fit(std::size_t floats, std::uint32_t dimensions, bool current) {
    const std::uint32_t perVertex = floatsPerVertexOf(dimensions);
    std::vector<VertexRun> runs = cutVertices(floats / perVertex, dimensions, m_largest / sizeof(float));
    runs.resize(std::max<std::size_t>(runs.size(), 1)); // a plot without a cell has an empty buffer
    bool same = runs.size() <= m_buffers.size();
    if (!current) {
        forget(); // what they hold is no longer the plot
    }
    m_buffers.resize(runs.size());
    for (std::size_t n = 0; n < runs.size(); ++n) {
        Buffer& buffer = m_buffers[n];
        buffer.run = runs[n];
        buffer.floats = runs[n].count * perVertex;
        if (current && (buffer.floats > buffer.capacity || buffer.floats < buffer.capacity / 2)) {
            buffer.name.reset(); // all old ones go before the first new one comes
            buffer.capacity = 0;
            same = false;
        }
    }
    if (current) {
        makeMissing();
    }
    return same;
}

void VertexBuffers::makeMissing() {
    std::uint64_t needed = 0;
    std::uint64_t given = 0;
    for (Buffer& buffer : m_buffers) {
        needed += buffer.floats * sizeof(float);
        if (!buffer.name && given + buffer.floats * sizeof(float) == needed) {
            buffer.name = makeVertexBuffer(buffer.floats);
            buffer.capacity = buffer.name ? buffer.floats : 0;
        }
        given += std::min(buffer.capacity, buffer.floats) * sizeof(float);
    }
    if (given < needed) {
        clear(true);
        throw OrreryError(fmt::format("The plot needs {} of graphics memory, but OpenGL gives only {}.",
                                      sizeText(needed), sizeText(given)),
                          {}, smallerPlotRemedy);
    }
}

/// The buffer's own memory; none where GL gives none.
std::span<float> VertexBuffers::mapped(Buffer& buffer) {
    buffer.mapped = buffer.floats > 0 ? mapBuffer(buffer.name) : nullptr;
    if (buffer.mapped == nullptr) {
        return {};
    }
    buffer.block = {};
    adviseLargePages(buffer.mapped, buffer.floats * sizeof(float)); // where it is memory of this process
    return {buffer.mapped, buffer.floats};
}

std::span<float> VertexBuffers::blockOf(Buffer& buffer, bool& kept) {
    if (buffer.floats > buffer.block.capacity()) {
        buffer.block = {}; // the old block goes before the new one comes
        kept = false;
    }
    buffer.block.resize(buffer.floats);
    return buffer.block;
}

bool VertexBuffers::accept(bool current) {
    bool whole = true;
    if (current) {
        makeMissing(); // the context may have come after the blocks were lent
    }
    for (Buffer& buffer : m_buffers) {
        if (std::exchange(buffer.mapped, nullptr) != nullptr) {
            whole = current && unmapBuffer(buffer.name) && whole;
        } else if (buffer.block.size() != buffer.floats) { // the context has gone with what was lent
            whole = false;
        } else if (current) {
            writeBuffer(buffer.name, buffer.block);
        }
    }
    m_kept = whole;
    m_vertices = whole && !m_buffers.empty() ? m_buffers.back().run.first + m_buffers.back().run.count : 0;
    return whole;
}

void VertexBuffers::copy(std::span<const float> floats, std::uint32_t dimensions, bool current) {
    clear(current);
    const std::uint32_t perVertex = floatsPerVertexOf(dimensions);
    for (const VertexPiece& piece : lend(floats.size(), dimensions, current).pieces) {
        std::ranges::copy(floats.subspan(piece.first * perVertex, piece.floats.size()), piece.floats.begin());
    }
    (void)accept(current);
    m_kept = false; // nobody knows what they were made of
}

void VertexBuffers::clear(bool current) {
    if (!current) {
        forget();
    }
    m_buffers.clear();
    m_vertices = 0;
    m_kept = false;
}

void VertexBuffers::prepare() {
    forget(); // names of the last context
    if (m_vertices == 0) {
        return;
    }
    makeMissing();
    for (Buffer& buffer : m_buffers) {
        writeBuffer(buffer.name, std::exchange(buffer.block, {}));
    }
}

void VertexBuffers::release() {
    unmap();
    try {
        for (Buffer& buffer : m_buffers) { // one after the other, so that little is held twice
            if (m_vertices > 0 && buffer.name) {
                buffer.block.resize(buffer.floats);
                readBuffer(buffer.name, buffer.block);
            }
            buffer.name.reset();
            buffer.capacity = 0;
        }
    } catch (const std::bad_alloc&) {
        clear(true);
        throw;
    }
}

void VertexBuffers::forget() {
    for (Buffer& buffer : m_buffers) {
        buffer.name.release();
        buffer.mapped = nullptr;
        buffer.capacity = 0;
    }
}

void VertexBuffers::unmap() {
    for (Buffer& buffer : m_buffers) {
        if (std::exchange(buffer.mapped, nullptr) != nullptr) {
            (void)unmapBuffer(buffer.name);
        }
    }
}

std::uint64_t VertexBuffers::heldFloats() const {
    std::uint64_t floats = 0;
    for (const Buffer& buffer : m_buffers) {
        floats += std::max(buffer.capacity, buffer.block.capacity());
    }
    return floats;
}

} // namespace orrery

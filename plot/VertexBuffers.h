#pragma once

#include "plot/GlObjects.h"
#include "plot/data/PlotView.h"
#include "plot/data/VertexPieces.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace orrery {

/// Bytes of the largest buffer. Drivers count the bytes of a buffer in 32 bits, some of them with a sign.
inline constexpr std::size_t largestBuffer = std::size_t{1} << 30U;

/// The memory that a plot's vertices lie in: buffers of limited size, which are lent to be written and are kept while
/// plots fit them and fill half of each at least. Without a context, or where GL maps nothing, what is lent are blocks
/// of ordinary memory.
///
/// `current` says whether the context of the buffers is the current one. All others are to be called in it.
class VertexBuffers {
public:
    explicit VertexBuffers(std::size_t largestBytes = largestBuffer) : m_largest(largestBytes) {}

    /// As PlotView::lendVertices says.
    [[nodiscard]] VertexMemory lend(std::size_t floats, std::uint32_t dimensions, bool current);
    /// What was written into the memory that was lent last is the plot. False when GL has lost it.
    [[nodiscard]] bool accept(bool current);
    /// The plot is a copy of these.
    void copy(std::span<const float> floats, std::uint32_t dimensions, bool current);
    void clear(bool current);

    /// A new context: brings the plot there. @throws OrreryError when it cannot hold it; the plot is gone then
    void prepare();
    /// The context goes: the plot is read back. @throws std::bad_alloc when there is no memory to keep it; it is gone
    /// then
    void release();
    /// The context has gone.
    void forget();

    [[nodiscard]] std::uint64_t vertices() const { return m_vertices; } // that can be drawn
    [[nodiscard]] std::uint64_t heldFloats() const;
    [[nodiscard]] unsigned ident() const {
        return m_buffers.empty() ? 0 : m_buffers.front().name.get();
    } // of the first

    /// Calls draw(first, count) for the part of the range in each buffer, counted from that buffer's beginning, while
    /// it is the one bound.
    template <typename Draw>
    void draw(const VertexRange& range, Draw draw) const {
        for (const Buffer& buffer : m_buffers) {
            const VertexRun part = overlap({range.first, range.count}, buffer.run);
            if (part.count > 0 && buffer.capacity >= buffer.floats) {
                const BoundBuffer bound(buffer.name);
                draw(static_cast<int>(part.first - buffer.run.first), static_cast<int>(part.count));
            }
        }
    }

private:
    struct Buffer {
        VertexRun run;
        std::size_t floats = 0;
        GlBuffer name;
        std::size_t capacity = 0; // floats that the buffer has room for
        float* mapped = nullptr;  // its memory while it is lent
        std::vector<float> block; // ordinary memory instead
    };

    [[nodiscard]] bool fit(std::size_t floats, std::uint32_t dimensions, bool current);
    void makeMissing();
    void unmap();
    [[nodiscard]] static std::span<float> mapped(Buffer& buffer);
    [[nodiscard]] static std::span<float> blockOf(Buffer& buffer, bool& kept);

    std::size_t m_largest; // bytes
    std::vector<Buffer> m_buffers;
    std::uint64_t m_vertices = 0;
    bool m_kept = false; // they hold what was written when they were lent
};

} // namespace orrery

#include "plot/data/SurfaceBuild.h"

#include "platform/Workers.h"
#include "plot/data/SurfaceStrip.h"

#include <algorithm>
#include <atomic>
#include <utility>
#include <vector>

namespace orrery {

namespace {

/// Floats that the caches will not hold until they are drawn.
constexpr std::size_t streamedFrom = 8U << 20U;
/// Cells that pay for the start of a thread.
constexpr std::size_t cellsPerThread = 100'000;
/// Cells between two calls of the progress.
constexpr std::size_t reportedCells = 50'000;

/// The strips of all surfaces, numbered through.
class Strips {
public:
    Strips(const PlotLayout& layout, std::span<const SurfaceJob> jobs, std::span<const VertexPiece> pieces)
        : m_jobs(jobs), m_pieces(pieces), m_perSurface(static_cast<std::size_t>(layout.xQuads)),
          m_cells(static_cast<std::size_t>(layout.zQuads)),
          m_halfX(static_cast<float>(static_cast<double>(layout.xQuads) * 0.5)),
          m_streamed(count() * m_cells * floatsPerCell >= streamedFrom), m_z(m_cells + 1) {
        const auto halfZ = static_cast<float>(static_cast<double>(layout.zQuads) * 0.5);
        for (std::size_t k = 0; k <= m_cells; ++k) {
            m_z[k] = axisPosition(k, halfZ);
        }
    }

    [[nodiscard]] std::size_t count() const { return m_jobs.size() * m_perSurface; }
    [[nodiscard]] std::size_t cellsPerStrip() const { return m_cells; }

    /// Writes the strips `first` … `last` − 1 while goOn(strip) is true.
    template <typename GoOn>
    void write(std::size_t first, std::size_t last, GoOn goOn) const {
        std::vector<float> y0(m_z.size());
        std::vector<float> y1(m_z.size());
        for (std::size_t strip = first; strip < last && goOn(strip); ++strip) {
            const SurfaceJob& job = m_jobs[strip / m_perSurface];
            const std::size_t i = strip % m_perSurface;
            if (strip == first || i == 0) {
                job.heights.copyTo(y1, i * m_z.size());
            }
            std::swap(y0, y1);
            job.heights.copyTo(y1, (i + 1) * m_z.size());
            writeCells(job.firstVertex, i,
                       {axisPosition(i, m_halfX), axisPosition(i + 1, m_halfX), m_z.data(), y0.data(), y1.data()});
        }
        finishStreaming();
    }

private:
    /// The i-th strip of the surface that begins with that vertex, in as many parts as there are pieces that hold it.
    void writeCells(std::uint64_t firstVertex, std::size_t i, const SurfaceStrip& strip) const {
        const VertexRun run{firstVertex + i * m_cells * verticesPerCell, m_cells * verticesPerCell};
        forEachPart(m_pieces, run, floatsPerCell / verticesPerCell,
                    [&](std::size_t offset, std::size_t count, float* out) {
                        const std::size_t k = offset / verticesPerCell;
                        writeStrip({strip.x0, strip.x1, strip.z + k, strip.y0 + k, strip.y1 + k},
                                   count / verticesPerCell, m_streamed, out);
                    });
    }

    std::span<const SurfaceJob> m_jobs;
    std::span<const VertexPiece> m_pieces;
    std::size_t m_perSurface;
    std::size_t m_cells; // of a strip
    float m_halfX;
    bool m_streamed;
    std::vector<float> m_z;
};

} // namespace

bool writeSurfaces(const PlotLayout& layout, std::span<const SurfaceJob> jobs, std::span<const VertexPiece> pieces,
                   unsigned threads, const std::function<bool(double)>& progress) {
    if (jobs.empty() || layout.xQuads <= 0 || layout.zQuads <= 0) {
        return true;
    }
    const Strips strips(layout, jobs, pieces);
    const unsigned used = threads > 0 ? threads : workersFor(strips.count() * strips.cellsPerStrip() / cellsPerThread);
    const std::size_t mine = std::max<std::size_t>(strips.count() / used, 1); // what the calling thread has to do
    const std::size_t reported = reportedCells / strips.cellsPerStrip() + 1;
    std::atomic<bool> stopped = false;
    runTogether(used, [&](unsigned part) {
        const auto goOn = [&](std::size_t strip) {
            if (part == 0 && progress && strip % reported == 0 &&
                !progress(static_cast<double>(strip) / static_cast<double>(mine))) {
                stopped = true;
            }
            return !stopped.load(std::memory_order_relaxed);
        };
        strips.write(strips.count() * part / used, strips.count() * (part + 1) / used, goOn);
    });
    return !stopped;
}

} // namespace orrery

#include "plot/data/SurfaceStrip.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstring>

#if defined(__SSE2__)
#include <immintrin.h>
#endif

namespace orrery {

namespace {

struct Vector {
    float x, y, z;
};

Vector operator-(const Vector& a, const Vector& b) {
    return {a.x - b.x, a.y - b.y, a.z - b.z};
}

Vector cross(const Vector& a, const Vector& b) {
    return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}

/// The direction of a normal whose squared length single precision cannot hold; up when it has none.
[[gnu::cold]] Vector extremeNormal(const Vector& normal) {
    const double length = std::hypot(double{normal.x}, double{normal.y}, double{normal.z});
    if (!(length > 0) || !std::isfinite(length)) {
        return {0, 1, 0};
    }
    return {static_cast<float>(normal.x / length), static_cast<float>(normal.y / length),
            static_cast<float>(normal.z / length)};
}

constexpr float leastSquared = 1e-30F; // of a normal's length, that single precision holds with all its digits
constexpr float greatestSquared = 1e30F;

Vector unitNormal(const Vector& a, const Vector& b) {
    const Vector normal = cross(a, b);
    const float squared = normal.x * normal.x + normal.y * normal.y + normal.z * normal.z;
    if (!(squared > leastSquared && squared < greatestSquared)) {
        return extremeNormal(normal);
    }
    const float length = std::sqrt(squared);
    return {normal.x / length, normal.y / length, normal.z / length};
}

/// A cell's corners, and its two triangles' normals.
struct Cell {
    Vector p1, p2, p3, p4;
    Vector first, second;
};

Cell cellAt(const SurfaceStrip& strip, std::size_t k) {
    Cell cell{.p1 = {strip.x0, strip.y0[k], strip.z[k]},
              .p2 = {strip.x0, strip.y0[k + 1], strip.z[k + 1]},
              .p3 = {strip.x1, strip.y1[k + 1], strip.z[k + 1]},
              .p4 = {strip.x1, strip.y1[k], strip.z[k]},
              .first = {},
              .second = {}};
    cell.first = unitNormal(cell.p1 - cell.p2, cell.p2 - cell.p3);
    cell.second = unitNormal(cell.p1 - cell.p3, cell.p3 - cell.p4);
    return cell;
}

float* writeVertex(const Vector& normal, const Vector& position, float* out) {
    const float values[] = {normal.x, normal.y, normal.z, position.x, position.y, position.z};
    return std::copy(std::begin(values), std::end(values), out);
}

} // namespace

void writeStripPlainly(const SurfaceStrip& strip, std::size_t cells, float* out) {
    for (std::size_t k = 0; k < cells; ++k) {
        const Cell cell = cellAt(strip, k);
        out = writeVertex(cell.first, cell.p1, out);
        out = writeVertex(cell.first, cell.p2, out);
        out = writeVertex(cell.first, cell.p3, out);
        out = writeVertex(cell.second, cell.p1, out);
        out = writeVertex(cell.second, cell.p3, out);
        out = writeVertex(cell.second, cell.p4, out);
    }
}

#if defined(__SSE2__)

namespace {

/// Four of a coordinate.
using Four = __m128;

/// Three coordinates of four vectors.
struct Vectors {
    Four x, y, z;
};

Vectors operator-(const Vectors& a, const Vectors& b) {
    return {_mm_sub_ps(a.x, b.x), _mm_sub_ps(a.y, b.y), _mm_sub_ps(a.z, b.z)};
}

/// a × b − c × d
Four crossed(Four a, Four b, Four c, Four d) {
    return _mm_sub_ps(_mm_mul_ps(a, b), _mm_mul_ps(c, d));
}

Vectors cross(const Vectors& a, const Vectors& b) {
    return {crossed(a.y, b.z, a.z, b.y), crossed(a.z, b.x, a.x, b.z), crossed(a.x, b.y, a.y, b.x)};
}

/// The same operations in the same order as for one. Returns whether all four have a squared length within bounds.
bool unitNormals(const Vectors& a, const Vectors& b, Vectors& unit) {
    const Vectors normal = cross(a, b);
    const Four squared = _mm_add_ps(_mm_add_ps(_mm_mul_ps(normal.x, normal.x), _mm_mul_ps(normal.y, normal.y)),
                                    _mm_mul_ps(normal.z, normal.z));
    const Four length = _mm_sqrt_ps(squared);
    unit = {_mm_div_ps(normal.x, length), _mm_div_ps(normal.y, length), _mm_div_ps(normal.z, length)};
    return _mm_movemask_ps(_mm_and_ps(_mm_cmpgt_ps(squared, _mm_set1_ps(leastSquared)),
                                      _mm_cmplt_ps(squared, _mm_set1_ps(greatestSquared)))) == 0xF;
}

/// A vector in three lanes of eight, from the lane on that it has in a vertex: a normal in front, a position after it.
/// What the other lanes hold does not count.
template <std::size_t Lane>
struct alignas(32) Lanes {
    static constexpr std::size_t lane = Lane;
    std::array<float, 8> values;

    void set(Four vector) { _mm_storeu_ps(&values[Lane], vector); }
    [[nodiscard]] Four get() const { return _mm_loadu_ps(&values[Lane]); }
};
using Normal = Lanes<0>;
using Position = Lanes<3>;

/// Stores each of four vectors on its own.
template <typename Lanes>
void store(const Vectors& vectors, Lanes* out) {
    const Four low = _mm_unpacklo_ps(vectors.x, vectors.y); // x0 y0 x1 y1
    const Four high = _mm_unpackhi_ps(vectors.x, vectors.y);
    out[0].set(_mm_shuffle_ps(low, vectors.z, _MM_SHUFFLE(0, 0, 1, 0)));
    out[1].set(_mm_shuffle_ps(low, vectors.z, _MM_SHUFFLE(1, 1, 3, 2)));
    out[2].set(_mm_shuffle_ps(high, vectors.z, _MM_SHUFFLE(2, 2, 1, 0)));
    out[3].set(_mm_shuffle_ps(high, vectors.z, _MM_SHUFFLE(3, 3, 3, 2)));
}

Four fourOf(const Vector& vector) {
    return _mm_setr_ps(vector.x, vector.y, vector.z, 0);
}

/// A piece of a strip that stays in the first cache: its grid points on both lines, and its cells' normals.
class Piece {
public:
    static constexpr std::size_t most =
        12; // cells: so few that the memory is still busy with one piece while the next is calculated

    void calculate(const SurfaceStrip& strip, std::size_t begin, std::size_t cells) {
        std::size_t k = 0;
        for (; k + 4 <= cells; k += 4) {
            calculateFour(strip, begin + k, k);
        }
        for (; k < cells; ++k) {
            calculateOne(strip, begin + k, k);
        }
        m_near[cells].set(fourOf({strip.x0, strip.y0[begin + cells], strip.z[begin + cells]}));
        m_far[cells].set(fourOf({strip.x1, strip.y1[begin + cells], strip.z[begin + cells]}));
    }

    /// Writes a cell and up to two floats after it.
    void write(std::size_t k, float* out) const {
        const Four first = m_first[k].get();
        const Four second = m_second[k].get();
        const Four p1 = m_near[k].get();
        const Four p3 = m_far[k + 1].get();
        // Each store's fourth lane is written over by the next.
        _mm_storeu_ps(out, first);
        _mm_storeu_ps(out + 3, p1);
        _mm_storeu_ps(out + 6, first);
        _mm_storeu_ps(out + 9, m_near[k + 1].get());
        _mm_storeu_ps(out + 12, first);
        _mm_storeu_ps(out + 15, p3);
        _mm_storeu_ps(out + 18, second);
        _mm_storeu_ps(out + 21, p1);
        _mm_storeu_ps(out + 24, second);
        _mm_storeu_ps(out + 27, p3);
        _mm_storeu_ps(out + 30, second);
        _mm_storeu_ps(out + 33, m_far[k].get());
    }

    /// The same with half the stores, each of one vertex; the two lanes after it are written over by the next.
    [[gnu::target("avx")]] void writeByAvx(std::size_t k, float* out) const {
        const __m256 first = _mm256_load_ps(m_first[k].values.data());
        const __m256 second = _mm256_load_ps(m_second[k].values.data());
        const __m256 p1 = _mm256_load_ps(m_near[k].values.data());
        const __m256 p3 = _mm256_load_ps(m_far[k + 1].values.data());
        constexpr int positionLanes = 0b111000;
        _mm256_storeu_ps(out, _mm256_blend_ps(first, p1, positionLanes));
        _mm256_storeu_ps(out + 6, _mm256_blend_ps(first, _mm256_load_ps(m_near[k + 1].values.data()), positionLanes));
        _mm256_storeu_ps(out + 12, _mm256_blend_ps(first, p3, positionLanes));
        _mm256_storeu_ps(out + 18, _mm256_blend_ps(second, p1, positionLanes));
        _mm256_storeu_ps(out + 24, _mm256_blend_ps(second, p3, positionLanes));
        _mm256_storeu_ps(out + 30, _mm256_blend_ps(second, _mm256_load_ps(m_far[k].values.data()), positionLanes));
    }

private:
    void calculateFour(const SurfaceStrip& strip, std::size_t from, std::size_t k) {
        const auto line = [from](float x, const float* y, const float* z, std::size_t next) {
            return Vectors{_mm_set1_ps(x), _mm_loadu_ps(y + from + next), _mm_loadu_ps(z + from + next)};
        };
        const Vectors p1 = line(strip.x0, strip.y0, strip.z, 0);
        const Vectors p2 = line(strip.x0, strip.y0, strip.z, 1);
        const Vectors p3 = line(strip.x1, strip.y1, strip.z, 1);
        const Vectors p4 = line(strip.x1, strip.y1, strip.z, 0);
        Vectors first{};
        Vectors second{};
        const bool firstHeld = unitNormals(p1 - p2, p2 - p3, first);
        if (!unitNormals(p1 - p3, p3 - p4, second) || !firstHeld) [[unlikely]] {
            for (std::size_t n = 0; n < 4; ++n) {
                calculateOne(strip, from + n, k + n);
            }
            return;
        }
        store(p1, &m_near[k]);
        store(p4, &m_far[k]);
        store(first, &m_first[k]);
        store(second, &m_second[k]);
    }

    [[gnu::noinline]] void calculateOne(const SurfaceStrip& strip, std::size_t from, std::size_t k) {
        const Cell cell = cellAt(strip, from);
        m_near[k].set(fourOf(cell.p1));
        m_far[k].set(fourOf(cell.p4));
        m_first[k].set(fourOf(cell.first));
        m_second[k].set(fourOf(cell.second));
    }

    Position m_near[most + 1]; // grid points at x0
    Position m_far[most + 1];  // at x1
    Normal m_first[most];
    Normal m_second[most];
};

/// Writes the cells `first` … `last` − 1 of a piece from `out` on, and up to `writtenBehind` floats after them.
using CellWriter = void (*)(const Piece& piece, std::size_t first, std::size_t last, float* out);
constexpr std::size_t writtenBehind = 2;

void writeCells(const Piece& piece, std::size_t first, std::size_t last, float* out) {
    for (std::size_t k = first; k < last; ++k, out += floatsPerCell) {
        piece.write(k, out);
    }
}

[[gnu::target("avx")]] void writeCellsByAvx(const Piece& piece, std::size_t first, std::size_t last, float* out) {
    for (std::size_t k = first; k < last; ++k, out += floatsPerCell) {
        piece.writeByAvx(k, out);
    }
}

/// Writes the piece into its place. What comes after the last piece of a strip may be another thread's.
void writeInPlace(const Piece& piece, std::size_t cells, bool isLast, CellWriter write, float* out) {
    write(piece, 0, isLast ? cells - 1 : cells, out);
    if (isLast) {
        std::array<float, floatsPerCell + writtenBehind> cell; // NOLINT(cppcoreguidelines-pro-type-member-init)
        write(piece, cells - 1, cells, cell.data());
        std::memcpy(out + (cells - 1) * floatsPerCell, cell.data(), floatsPerCell * sizeof(float));
    }
}

/// Writes the piece into a buffer in the first cache, and that past the caches to a place that 16 divides.
void writeStreamed(const Piece& piece, std::size_t cells, CellWriter write, float* out) {
    alignas(64) std::array<float, Piece::most * floatsPerCell + writtenBehind> buffer;
    write(piece, 0, cells, buffer.data());
    for (std::size_t n = 0; n < cells * floatsPerCell; n += 4) {
        _mm_stream_ps(out + n, _mm_load_ps(buffer.data() + n));
    }
}

} // namespace

void writeStrip(const SurfaceStrip& strip, std::size_t cells, bool streamed, float* out) {
    static const CellWriter write = __builtin_cpu_supports("avx") ? writeCellsByAvx : writeCells;
    const bool aligned = reinterpret_cast<std::uintptr_t>(out) % alignof(Four) == 0;
    Piece piece; // NOLINT(cppcoreguidelines-pro-type-member-init): all that is read is calculated first
    for (std::size_t begin = 0; begin < cells; begin += Piece::most) {
        const std::size_t count = std::min(Piece::most, cells - begin);
        piece.calculate(strip, begin, count);
        float* const target = out + begin * floatsPerCell;
        if (streamed && aligned) {
            writeStreamed(piece, count, write, target);
        } else {
            writeInPlace(piece, count, begin + count == cells, write, target);
        }
    }
}

void finishStreaming() {
    _mm_sfence();
}

#else

void writeStrip(const SurfaceStrip& strip, std::size_t cells, bool, float* out) {
    writeStripPlainly(strip, cells, out);
}

void finishStreaming() {}

#endif

} // namespace orrery

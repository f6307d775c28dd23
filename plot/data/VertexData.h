#pragma once

#include "platform/values/OrreryError.h"
#include "plot/data/PlotLayout.h"
#include "plot/data/PlotView.h"
#include "run/ResponseVariable.h"
#include "run/StoredCells.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <vector>

namespace orrery {

/// The result rows that a plot draws. Nothing is owned.
struct PlotSource {
    std::span<const float> cells;                // the simulation data, row-major, one column per response variable
    std::span<const float> maxima;               // per column
    std::span<const ResponseVariable> responses; // one per column, included or not
    std::span<const std::uint32_t> rows;         // the current index set, ascending
    std::span<const ColumnRange> ranges = {};    // per column, where the cells are not all rows of the results
};

/// The value that the plot's full height stands for: the largest maximum of the included columns. Where that is not
/// positive, the largest absolute value of the included columns over all rows, or 1 when that is 0. Values that are not
/// finite take no part.
[[nodiscard]] float overallMaximum(const PlotSource& source);

/// Which plot a piece of memory holds, so that the next one leaves alone what is the same in it. Keeping it is up to
/// who keeps the memory; it is to be emptied when the memory or the results are other ones.
struct BuiltPlot {
    struct Surface {
        std::size_t column = 0; // of the response
        float factor = 0;       // from its value to a height
        friend bool operator==(const Surface&, const Surface&) = default;
    };

    std::uint32_t dimensions = 0; // 0: nothing
    std::int32_t xEdges = 0;
    std::int32_t zEdges = 0;
    std::vector<std::uint32_t> rows;
    std::vector<Surface> surfaces; // or curves, in the order in which they lie in the memory

    [[nodiscard]] bool isOf(const PlotLayout& layout, std::span<const std::uint32_t> indexSet) const;
    void set(const PlotLayout& layout, std::span<const std::uint32_t> indexSet, std::vector<Surface> written);
};

struct BuildOptions {
    unsigned threads = 0;       // among which surfaces are shared; 0 is as many as pay. The bits are always the same
    BuiltPlot* built = nullptr; // what the memory holds, which is not written again; updated. Empty after an exception
    std::function<bool(double)> progress = {}; // called now and then with the part that is done; false cancels
};

/// `progress` has said so.
class BuildCancelled : public OrreryError {
public:
    BuildCancelled() : OrreryError("Drawing the plot was cancelled.") {}
};

/// What to do about a plot that does not fit.
inline constexpr const char* smallerPlotRemedy =
    "Include fewer responses, or put a variable with fewer values on an axis.";

/// Floats of the whole plot. Memory for `held` floats is there already, or is given back for it.
/// @throws OrreryError with what is needed and what there is, when they would not fit into memory or 32 bits
[[nodiscard]] std::uint32_t vertexFloats(const PlotLayout& layout, std::uint64_t held = 0);

/// Curves: x, y, z = 0 per vertex, one polyline of xEdges vertices per included response variable.
/// x = i ÷ (xEdges ÷ 2) − 1, y = value × scale × 2 ÷ M − 1, in the precision and order that the functions state.
/// A row beyond the end of the row list or of the block is never read; its value counts as 0.
/// The pieces must hold exactly the layout's vertices, in order, and are only written.
/// @throws AssertionFailure "Inconsistent float count" when the layout's count of surfaces is not that of `responses`
/// @throws BuildCancelled
void write2DVertexData(const PlotLayout& layout, const PlotSource& source, std::span<const VertexPiece> pieces,
                       const BuildOptions& options = {});

/// Surfaces: two triangles per grid cell, normal and position per vertex, cells x-major, flat normals.
/// y = value × scale ÷ M; both axes run from −1 to 1. @throws as write2DVertexData
void write3DVertexData(const PlotLayout& layout, const PlotSource& source, std::span<const VertexPiece> pieces,
                       const BuildOptions& options = {});

/// The same into memory of their own. @throws as vertexFloats, too
[[nodiscard]] std::vector<float> make2DVertexData(const PlotLayout& layout, const PlotSource& source);
[[nodiscard]] std::vector<float> make3DVertexData(const PlotLayout& layout, const PlotSource& source);

/// One range per curve or surface: (s × P, P).
[[nodiscard]] std::vector<VertexRange> vertexRanges(const PlotLayout& layout);

/// One colour per included response variable: its red, green and blue, alpha 0.9.
[[nodiscard]] std::vector<Color> surfaceColors(std::span<const ResponseVariable> responses);

} // namespace orrery

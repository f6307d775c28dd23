#include "batch/Command.h"
#include "batch/JsonWriter.h"
#include "batch/Output.h"
#include "batch/PlotPicture.h"
#include "batch/ResultJson.h"
#include "batch/SetupFiles.h"
#include "platform/values/Numbers.h"
#include "platform/values/OrreryError.h"
#include "platform/values/Quoted.h"
#include "plot/data/PlotSession.h"
#include "run/IndexSet.h"

#include <CLI/CLI.hpp>

#include <charconv>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace orrery {
namespace {

struct PlotOptions {
    ResultSource source;
    std::string axis1;
    std::string axis2;
    std::vector<std::string> hold;
    std::vector<std::string> include;
    std::vector<std::string> scale;
    std::string json; // empty: standard output, unless a picture was asked for
    PictureOptions picture;
};

/// "#3" as 3.
std::optional<std::size_t> position(std::string_view choice) {
    std::size_t number = 0;
    if (!choice.starts_with('#')) {
        return std::nullopt;
    }
    const auto [end, error] = std::from_chars(choice.data() + 1, choice.data() + choice.size(), number);
    return error == std::errc() && end == choice.data() + choice.size() ? std::optional(number) : std::nullopt;
}

/// The item of that name, or at that position of the list ("#i", from 0).
template <typename Item>
Item& chosen(std::vector<Item>& items, const std::string& choice, const std::string& kind, const std::string& file) {
    std::vector<std::string> names;
    for (Item& item : items) {
        if (item.name() == choice) {
            return item;
        }
        names.push_back(item.name());
    }
    if (const auto index = position(choice); index && *index < items.size()) {
        return items[*index];
    }
    throw OrreryError("There is no " + kind + " " + quoted(choice) + "." + suggestion(choice, names), {.file = file},
                      "Choose by name, or by position from #0.");
}

using Assignment = std::pair<std::string, float>;

/// "NAME=NUMBER" in its two halves; the name may hold a "=" itself.
Assignment assignment(const std::string& text, const std::string& option) {
    std::string reason;
    const std::size_t equals = text.rfind('=');
    if (equals != std::string::npos) {
        const TypedNumber number = typedNumber(std::string_view(text).substr(equals + 1));
        if (number.value) {
            return {text.substr(0, equals), *number.value};
        }
        reason = ": " + number.reason;
    }
    throw CLI::ValidationError(option, quoted(text) + " is not of the form NAME=NUMBER" + reason);
}

std::vector<Assignment> assignments(const std::vector<std::string>& texts, const std::string& option) {
    std::vector<Assignment> result;
    result.reserve(texts.size());
    for (const std::string& text : texts) {
        result.push_back(assignment(text, option));
    }
    return result;
}

void chooseAxes(std::vector<IndependentVariable>& variables, const PlotOptions& options,
                const std::vector<Assignment>& holds) {
    for (const auto& [axis, role] : {std::pair(options.axis1, PlotRole::Axis1), {options.axis2, PlotRole::Axis2}}) {
        if (!axis.empty()) chosen(variables, axis, "sweep variable", options.source.file).setFunction(role);
    }
    for (const auto& [name, value] : holds) {
        chosen(variables, name, "sweep variable", options.source.file).setConstant(value);
    }
}

void chooseResponses(std::vector<ResponseVariable>& responses, const PlotOptions& options,
                     const std::vector<Assignment>& scales) {
    for (const std::string& name : options.include) {
        chosen(responses, name, "response", options.source.file).setValue("includep", true);
    }
    for (const auto& [name, value] : scales) {
        chosen(responses, name, "response", options.source.file).setValue("scale", value);
    }
}

void writeRanges(JsonWriter& json, const std::vector<VertexRange>& ranges) {
    json.key("ranges");
    json.beginArray();
    for (const VertexRange& range : ranges) {
        json.beginArray();
        json.value(range.first);
        json.value(range.count);
        json.endArray();
    }
    json.endArray();
}

void writePlot(JsonWriter& json, const PlotLayout& layout, const PlotRows& rows, const RunResults& results) {
    const PlotSource source = rows.source(results);
    const bool drawn = layout.isDrawn();
    json.beginObject();
    json.member("dimensions", layout.dimensions);
    json.key("labels");
    json.values(layout.labels);
    writeRanges(json, drawn ? vertexRanges(layout) : std::vector<VertexRange>());
    json.key("indices");
    json.values(rows.rows());
    json.key("colors");
    json.beginArray();
    for (const Color& color : surfaceColors(source.responses)) {
        writeColor(json, color);
    }
    json.endArray();
    json.key("vertices");
    json.values(!drawn                   ? std::vector<float>()
                : layout.dimensions == 2 ? make2DVertexData(layout, source)
                                         : make3DVertexData(layout, source));
    json.endObject();
}

void writeVertices(const std::string& target, const PlotLayout& layout, const RunResults& results) {
    const PlotRows rows(results, currentIndexSet(results.grid.variables));
    Output output(target);
    JsonWriter json(output);
    writePlot(json, layout, rows, results);
    output.write("\n");
    output.finish();
}

int plot(const PlotOptions& options) {
    const std::vector<Assignment> holds = assignments(options.hold, "--hold"); // wrong usage shows before any file
    const std::vector<Assignment> scales = assignments(options.scale, "--scale");
    const PlotPictureRequest picture = pictureRequest(options.picture);
    RunResults results = loadResults(options.source);
    chooseAxes(results.grid.variables, options, holds);
    chooseResponses(results.responses.variables, options, scales);
    PlotSession plot;
    plot.layOut(results);
    if (!options.picture.file.empty()) {
        writePicture(options.picture.file, picture, plot, results);
    }
    if (!options.json.empty() || options.picture.file.empty()) {
        writeVertices(options.json.empty() ? "-" : options.json, plot.layout(), results);
    }
    return exitDone;
}

} // namespace

Action buildPlotCommand(CLI::App& parser) {
    const auto options = std::make_shared<PlotOptions>();
    addResultSource(parser, options->source);
    parser.add_option("--axis1", options->axis1, "Sweep variable with the role 1: a name, or #i from 0");
    parser.add_option("--axis2", options->axis2, "Sweep variable with the role 2");
    parser.add_option("--hold", options->hold, "V=VALUE, where a variable off the axes is held")
        ->allow_extra_args(false);
    parser.add_option("--include", options->include, "Response to draw: a name, or #i from 0")->allow_extra_args(false);
    parser.add_option("--scale", options->scale, "R=S, factor on a response")->allow_extra_args(false);
    parser.add_option("--json", options->json, "File for the vertices, - for standard output (default without --png)");
    addPictureOptions(parser, options->picture);
    return [options] { return plot(*options); };
}

} // namespace orrery

#include "batch/ResultJson.h"

#include "batch/JsonWriter.h"

#include <array>

namespace orrery {

void writeResults(JsonWriter& json, const RunResults& results, bool summary) {
    json.beginObject();
    json.key("responseVariableLabels");
    json.values(results.responses.labels);
    json.key("dependentVariables");
    json.beginArray();
    for (const ResponseVariable& response : results.responses.variables) {
        json.beginObject();
        json.member("name", response.name());
        json.member("id", response.identifier());
        json.member("includep", response.includep());
        json.member("scale", response.scale());
        json.key("color");
        writeColor(json, response.color());
        json.endObject();
    }
    json.endArray();
    json.member("nRowsOfData", results.grid.nRowsOfData);
    json.key("yMax");
    json.values(results.table.maxima);
    if (!summary) {
        json.key("simulationData");
        json.beginArray();
        forEachRows(results, [&](std::uint32_t /*first*/, std::span<const float> cells) {
            for (const float cell : cells) {
                json.value(cell);
            }
        });
        json.endArray();
    }
    json.endObject();
}

void writeColor(JsonWriter& json, const Color& color) {
    json.values(std::array{color.red, color.green, color.blue, color.alpha});
}

} // namespace orrery

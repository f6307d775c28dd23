#include "batch/ResultJson.h"

#include "batch/JsonWriter.h"

#include <array>

namespace orrery {

void writeResults(JsonWriter& json, const ResultView& results, bool summary) {
    json.beginObject();
    json.key("responseVariableLabels");
    json.values(results.labels);
    json.key("dependentVariables");
    json.beginArray();
    for (const ResponseVariable& response : results.responses) {
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
    json.member("nRowsOfData", results.nRowsOfData);
    json.key("yMax");
    json.values(results.maxima);
    if (!summary) {
        json.key("simulationData");
        json.values(results.cells);
    }
    json.endObject();
}

void writeColor(JsonWriter& json, const Color& color) {
    json.values(std::array{color.red, color.green, color.blue, color.alpha});
}

} // namespace orrery

#include "batch/Command.h"
#include "batch/JsonWriter.h"
#include "batch/Output.h"
#include "model/ModelRecord.h"
#include "model/ModelTree.h"

#include <CLI/CLI.hpp>

#include <memory>
#include <string>
#include <vector>

namespace orrery {
namespace {

void writeNodes(JsonWriter& json, const std::vector<ModelNode*>& nodes) {
    json.beginArray();
    for (const ModelNode* node : nodes) {
        json.beginObject();
        json.key("record");
        json.beginObject();
        for (const auto& [key, value] : node->record) {
            json.member(key, value);
        }
        json.endObject();
        json.key("children");
        writeNodes(json, node->children); // as deep as a model may be: modelDepthLimit
        json.endObject();
    }
    json.endArray();
}

int printModel(const std::string& modelPath) {
    const ModelTree tree = readModelTree(modelPath);
    Output output("-");
    JsonWriter json(output);
    writeNodes(json, tree.topLevel());
    output.write("\n");
    output.finish();
    return exitDone;
}

} // namespace

Action buildModelCommand(CLI::App& parser) {
    const auto model = std::make_shared<std::string>();
    parser.add_option("MODEL", *model, "The model file")->required();
    return [model] { return printModel(*model); };
}

} // namespace orrery

#include "batch/Command.h"
#include "batch/JsonWriter.h"
#include "batch/Output.h"
#include "batch/SetupFiles.h"
#include "document/setup/SetupForm.h"
#include "document/setup/SetupMove.h"
#include "document/setup/SetupWriter.h"
#include "platform/Files.h"

#include <CLI/CLI.hpp>

#include <memory>
#include <string>

namespace orrery {
namespace {

void writeEntries(JsonWriter& json, const EntryList& entries) {
    json.beginArray();
    for (const Entry& entry : entries) {
        json.beginObject();
        for (const auto& [key, value] : entry) {
            json.member(key, value);
        }
        json.endObject();
    }
    json.endArray();
}

/// The dictionary under its own keys; an absent key is absent.
void writeSetup(JsonWriter& json, const SetupDictionary& setup) {
    json.beginObject();
    for (const setup_form::Setting& setting : setup_form::settings) {
        if (setup.contains(setting.key)) json.member(setting.key, setup_form::settingText(setup, setting));
    }
    for (const setup_form::List& list : setup_form::lists) {
        const EntryList* entries = setup.list(list.key);
        if (entries == nullptr) continue;
        json.key(list.key);
        writeEntries(json, *entries);
    }
    json.endObject();
}

int show(const std::string& setupPath) {
    const SetupDictionary setup = loadSetup(setupPath);
    Output output("-");
    JsonWriter json(output);
    writeSetup(json, setup);
    output.write("\n");
    output.finish();
    return exitDone;
}

int rewrite(const std::string& setupPath, const std::string& outPath) {
    replaceFile(outPath, setupFileBytes(setupAfterMove(loadSetup(setupPath), setupPath, outPath), outPath));
    return exitDone;
}

} // namespace

Action buildShowCommand(CLI::App& parser) {
    const auto setup = std::make_shared<std::string>();
    parser.add_option("SETUP", *setup, "The setup file")->required();
    return [setup] { return show(*setup); };
}

Action buildRewriteCommand(CLI::App& parser) {
    const auto setup = std::make_shared<std::string>();
    const auto out = std::make_shared<std::string>();
    parser.add_option("SETUP", *setup, "The setup file to read")->required();
    parser.add_option("OUT", *out, "The setup file to write; an old one is replaced whole")->required();
    return [setup, out] { return rewrite(*setup, *out); };
}

} // namespace orrery

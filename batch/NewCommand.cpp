#include "batch/Command.h"
#include "batch/SetupFiles.h"
#include "document/setup/SetupForm.h"
#include "document/setup/SetupWriter.h"
#include "model/ModelRecord.h"
#include "model/PortFaults.h"
#include "model/PortLists.h"
#include "model/PortPaths.h"
#include "platform/Files.h"
#include "platform/UserDefaults.h"
#include "platform/values/Date.h"
#include "platform/values/Numbers.h"
#include "platform/values/OrreryError.h"
#include "platform/values/Quoted.h"
#include "run/SetupTrust.h"

#include <CLI/CLI.hpp>
#include <fmt/ranges.h>

#include <algorithm>
#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace orrery {
namespace {

struct NewOptions {
    std::string out;
    std::string model;
    std::vector<std::string> settings;
    std::vector<std::string> outputs;
    std::vector<std::string> initializations;
    std::vector<std::string> steppers;
};

/// What --set takes: all but the model, which has an option of its own.
std::vector<std::string> settableKeys() {
    std::vector<std::string> keys;
    for (const setup_form::Setting& setting : setup_form::settings) {
        if (setting.kind != setup_form::Kind::ModelPath) keys.emplace_back(setting.key);
    }
    return keys;
}

[[noreturn]] void refuse(const std::string& option, const std::string& text, const std::string& problem) {
    throw CLI::ValidationError(option, quoted(text) + " " + problem);
}

bool isNumber(std::string_view text) {
    const std::size_t length = scanFloat(text).length;
    return length > 0 && length == text.size();
}

/// The halves of "A=B", cut at the first "=" or at the last.
std::pair<std::string, std::string> halves(const std::string& option, const std::string& text, bool atLast,
                                           const char* form) {
    const std::size_t equals = atLast ? text.rfind('=') : text.find('=');
    if (equals == std::string::npos) {
        refuse(option, text, fmt::format("is not of the form {}.", form));
    }
    return {text.substr(0, equals), text.substr(equals + 1)};
}

/// "2026-03-01" as midnight UTC, or the full text form.
std::optional<Date> dateOf(const std::string& text) {
    const auto date = dateWithString(text);
    return date ? date : dateWithString(text + " 00:00:00 +0000");
}

void applySetting(SetupDictionary& setup, const std::string& text) {
    const auto [key, value] = halves("--set", text, false, "KEY=VALUE");
    const auto* setting = std::ranges::find(setup_form::settings, key, &setup_form::Setting::key);
    if (setting == setup_form::settings.end() || setting->kind == setup_form::Kind::ModelPath) {
        refuse("--set", text, "does not begin with a key that can be set." + suggestion(key, settableKeys()));
    }
    if (setting->kind == setup_form::Kind::Date) {
        const auto date = dateOf(value);
        if (!date) {
            refuse("--set", text, "does not end in a date of the form yyyy-mm-dd or yyyy-mm-dd hh:mm:ss +hhmm.");
        }
        setup.setStartDay(date);
        return;
    }
    if (setting->kind == setup_form::Kind::Number && !isNumber(value)) {
        refuse("--set", text, "does not end in a number.");
    }
    setup.setText(key, value);
}

Entry outputEntry(const std::string& text) {
    const std::size_t equals = text.find('=');
    Entry entry{{"portPath", text.substr(0, equals)}};
    if (equals != std::string::npos) {
        entry.set("outputPath", text.substr(equals + 1));
    }
    return entry;
}

Entry initializationEntry(const std::string& text) {
    auto [port, value] = halves("--init", text, true, "PORT=VALUE");
    if (!isNumber(value)) {
        refuse("--init", text, "does not end in a number.");
    }
    Entry entry = newEntry(PortList::Initializations);
    entry.set("portPath", std::move(port));
    entry.set("value", std::move(value));
    return entry;
}

Entry stepperEntry(const std::string& text) {
    const auto [port, range] = halves("--step", text, true, "PORT=START:STEP:STOP");
    Entry entry{{"portPath", port}};
    std::string_view rest = range;
    for (const char* key : {"start", "step", "stop"}) {
        const std::size_t colon = std::min(rest.find(':'), rest.size());
        const std::string_view number = rest.substr(0, colon);
        const bool last = std::string_view(key) == "stop";
        if (!isNumber(number) || last != (colon == rest.size())) {
            refuse("--step", text, "is not of the form PORT=START:STEP:STOP with three numbers.");
        }
        entry.set(key, std::string(number));
        rest.remove_prefix(last ? colon : colon + 1);
    }
    return entry;
}

SetupDictionary setupFrom(const NewOptions& options) {
    SetupDictionary setup = defaultSetup();
    setup.setText(setup_key::modelPath, absolutePath(options.model));
    for (const std::string& setting : options.settings) {
        applySetting(setup, setting);
    }
    const auto fill = [&](PortList list, const std::vector<std::string>& texts, Entry (*entryOf)(const std::string&)) {
        for (const std::string& text : texts) {
            setup.mutableList(listKey(list)).push_back(entryOf(text));
        }
    };
    fill(PortList::Outputs, options.outputs, outputEntry);
    fill(PortList::Initializations, options.initializations, initializationEntry);
    fill(PortList::Steppers, options.steppers, stepperEntry);
    return setup;
}

void checkPorts(const SetupDictionary& setup, PortList list, const ModelTree& tree, const std::string& modelPath) {
    const PortDirection direction = list == PortList::Outputs ? PortDirection::Output : PortDirection::Input;
    for (const Entry& entry : setup.entries(listKey(list))) {
        const std::string port(entry.text("portPath"));
        if (findPort(tree, port, direction) != nullptr) {
            continue;
        }
        throw OrreryError(noSuchPort(tree, port, direction), {.file = modelPath}, "The setup was not written.");
    }
}

/// A model that cannot be read checks nothing: the setup may be made before its model.
void checkPortsWhereReadable(const SetupDictionary& setup, const std::string& modelPath) {
    std::optional<ModelTree> tree;
    try {
        tree = readModelTree(modelPath);
    } catch (const OrreryError& error) {
        printMessage(std::string(error.what()) + " The ports were not checked.");
        return;
    }
    for (const PortList list : {PortList::Outputs, PortList::Initializations, PortList::Steppers}) {
        checkPorts(setup, list, *tree, modelPath);
    }
}

int makeSetup(const NewOptions& options) {
    const SetupDictionary setup = setupFrom(options);
    checkPortsWhereReadable(setup, options.model);
    const std::string bytes = setupFileBytes(setup, options.out);
    replaceFile(options.out, bytes);
    if (!outputsOutside(setup, absolutePath(options.out)).empty()) {
        FileUserDefaults defaults(FileUserDefaults::standardPath());
        SetupTrust(&defaults).add(bytes);
    }
    return exitDone;
}

} // namespace

Action buildNewCommand(CLI::App& parser) {
    const auto options = std::make_shared<NewOptions>();
    parser.add_option("OUT", options->out, "The setup file to write; an old one is replaced whole")->required();
    parser.add_option("--model", options->model, "The model file")->required();
    const auto add = [&](const char* name, std::vector<std::string>& texts, const std::string& help) {
        parser.add_option(name, texts, help)->allow_extra_args(false);
    };
    add("--set", options->settings, "KEY=VALUE: " + fmt::format("{}", fmt::join(settableKeys(), ", ")));
    add("--output", options->outputs, "PORT or PORT=PATH: an output to record");
    add("--init", options->initializations, "PORT=VALUE: an input to set before the run");
    add("--step", options->steppers, "PORT=START:STEP:STOP: an input to sweep");
    return [options] { return makeSetup(*options); };
}

} // namespace orrery

#include "document/setup/SetupReader.h"

#include "document/setup/SetupForm.h"
#include "platform/values/Numbers.h"
#include "platform/values/OrreryError.h"
#include "platform/values/Quoted.h"

#include <fmt/format.h>

#include <utility>

namespace orrery {

namespace {

using Elements = std::vector<const XmlElement*>;

/// The element's only child of that name; nullptr when there is none or there are several.
const XmlElement* onlyChild(const XmlElement& parent, std::string_view name) {
    const Elements found = parent.elementsForName(name);
    return found.size() == 1 ? found.front() : nullptr;
}

using setup_form::Setting;

/// Old files give the length of a step in days instead; its reciprocal is taken in single precision.
void readStepLength(SetupDictionary& setup, const XmlElement& root) {
    if (const XmlElement* step = onlyChild(root, "Dt")) {
        const float stepsPerDay = 1.0F / floatValue(step->stringValue());
        setup.setText(setup_key::stepsPerDay, fmt::format("{:.6f}", static_cast<double>(stepsPerDay)));
    }
}

/// A setting that the file gives once or not at all. Without a root, as of bytes that do not parse, it gives none.
void readSetting(SetupDictionary& setup, const XmlElement* root, const Setting& setting) {
    const XmlElement* element = root == nullptr ? nullptr : onlyChild(*root, setting.element);
    if (setting.kind == setup_form::Kind::Date) {
        setup.setStartDay(element == nullptr ? Date() : dateWithString(element->stringValue()));
    } else if (element != nullptr) {
        setup.setText(setting.key, element->stringValue());
    } else if (setting.otherwise) {
        setup.setText(setting.key, std::string(*setting.otherwise));
    } else if (setting.key == setup_key::stepsPerDay && root != nullptr) {
        readStepLength(setup, *root);
    }
}

void readRequiredSettings(SetupDictionary& setup, const XmlElement& root, const std::string& fileName) {
    std::string missing;
    for (const Setting& setting : setup_form::settings) {
        if (!setting.required) continue;
        const Elements found = root.elementsForName(setting.element);
        if (found.empty()) {
            missing += fmt::format("{}<{}>", missing.empty() ? "" : ", ", setting.element);
        } else {
            setup.setText(setting.key, found.front()->stringValue());
        }
    }
    if (!missing.empty()) {
        throw OrreryError(fmt::format("The setup lacks {} inside <{}>.", missing, messageText(root.name())),
                          Place{fileName}, "Check that this is a setup file, and add what is missing.");
    }
}

/// Sets the key to the text of the last child of that name, when there is one.
void readField(Entry& entry, const XmlElement& element, const setup_form::Field& field) {
    const Elements found = element.elementsForName(field.element);
    if (!found.empty()) entry.set(field.key, found.back()->stringValue());
}

/// Whether the entry names its port by part and port, as old files do; if so, takes that path.
bool readPartAndPort(Entry& entry, const XmlElement& element) {
    const Elements parts = element.elementsForName("PartName");
    if (parts.empty()) return false;
    const Elements ports = element.elementsForName("PortName");
    entry.set(setup_form::portPath.key,
              parts.back()->stringValue() + "/" + (ports.empty() ? std::string() : ports.back()->stringValue()));
    return true;
}

EntryList readList(const XmlElement& root, const setup_form::List& list) {
    EntryList entries;
    for (const XmlElement* element : root.elementsForName(list.element)) {
        Entry& entry = entries.emplace_back();
        const bool named = list.acceptsPartAndPort && readPartAndPort(entry, *element);
        for (const setup_form::Field& field : list.fields.subspan(named ? 1 : 0)) {
            readField(entry, *element, field);
        }
    }
    return entries;
}

} // namespace

SetupDictionary setupFromXml(const XmlDocument& document, const std::string& fileName) {
    SetupDictionary setup;
    const XmlElement* root = document.rootElement();
    if (root != nullptr) readRequiredSettings(setup, *root, fileName);
    for (const Setting& setting : setup_form::settings) {
        if (!setting.required) readSetting(setup, root, setting);
    }
    for (const setup_form::List& list : setup_form::lists) {
        setup.setList(list.key, root == nullptr ? EntryList() : readList(*root, list));
    }
    return setup;
}

LoadedSetup readSetup(std::string_view bytes, const std::string& fileName) {
    LoadedSetup loaded;
    XmlDocument document;
    try {
        document = parseXml(bytes, fileName, XmlFallbackEncoding::Utf8OrMacRoman);
    } catch (const OrreryError& error) {
        loaded.parsed = false;
        loaded.fault = error.what();
    }
    loaded.dictionary = setupFromXml(document, fileName);
    return loaded;
}

} // namespace orrery

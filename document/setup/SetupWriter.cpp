#include "document/setup/SetupWriter.h"

#include "document/setup/SetupForm.h"
#include "platform/values/MacRoman.h"
#include "platform/values/OrreryError.h"
#include "platform/values/Quoted.h"
#include "platform/values/Utf8.h"

#include <fmt/format.h>

#include <algorithm>
#include <optional>
#include <string_view>

namespace orrery {

namespace {

using setup_form::Field;

std::string codePointName(std::string_view character) {
    std::size_t position = 0;
    return fmt::format("U+{:04X}", static_cast<std::uint32_t>(nextCodePoint(character, position)));
}

/// What of the text the file cannot hold, and why, in words; empty when it can hold all.
std::string unwritablePart(std::string_view text) {
    const std::string_view notXml = firstCharacterNotInXml(text);
    if (!notXml.empty() && !isValidUtf8(notXml)) {
        return fmt::format("the byte {:02X}, which is not valid UTF-8", static_cast<unsigned char>(notXml.front()));
    }
    if (!notXml.empty()) return codePointName(notXml) + ", which XML cannot hold";
    const std::string notRoman = firstCharacterNotInMacRoman(text);
    if (notRoman.empty()) return {};
    return fmt::format("{} {}, which Mac OS Roman, the encoding of setup files, lacks", codePointName(notRoman),
                       quoted(notRoman));
}

void checkText(std::string_view text, const std::string& place, const std::string& fileName) {
    const std::string part = unwritablePart(text);
    if (part.empty()) return;
    throw OrreryError(fmt::format("The {} holds {}. Nothing was saved.", place, part), Place{fileName},
                      "Replace the character and save again.");
}

void checkSettings(const SetupDictionary& setup, const std::string& fileName) {
    for (const setup_form::Setting& field : setup_form::settings) {
        checkText(setup_form::settingText(setup, field), std::string(field.userWord), fileName);
    }
}

/// "value of initialization 2 (“/Field/Crop/x”)"
std::string placeInList(const Field& field, const setup_form::List& list, std::size_t index, const Entry& entry) {
    std::string place = fmt::format("{} of {} {}", field.userWord, list.userWord, index + 1);
    const std::string_view port = entry.text(setup_form::portPath.key);
    if (field.key != setup_form::portPath.key && !port.empty()) {
        place += fmt::format(" ({})", quoted(port));
    }
    return place;
}

void checkList(const SetupDictionary& setup, const setup_form::List& list, const std::string& fileName) {
    const EntryList& entries = setup.entries(list.key);
    for (std::size_t index = 0; index < entries.size(); ++index) {
        for (const Field& field : list.fields) {
            checkText(entries[index].text(field.key), placeInList(field, list, index, entries[index]), fileName);
        }
    }
}

bool isAscii(std::string_view text) {
    return std::all_of(text.begin(), text.end(), [](char each) { return static_cast<unsigned char>(each) < 0x80; });
}

/// The same XML in ASCII. Only text holds other characters, as all names are ours.
std::string withCharacterReferences(std::string_view xml) {
    std::string ascii;
    std::size_t position = 0;
    while (position < xml.size()) {
        const char32_t codePoint = nextCodePoint(xml, position);
        if (codePoint < 0x80) {
            ascii += static_cast<char>(codePoint);
        } else {
            ascii += fmt::format("&#{};", static_cast<std::uint32_t>(codePoint));
        }
    }
    return ascii;
}

} // namespace

XmlDocument setupToXml(const SetupDictionary& setup) {
    XmlDocument document;
    XmlElement& root = document.elementWithName("Simulation");
    document.setRootElement(root);
    for (const setup_form::Setting& field : setup_form::settings) {
        root.addChild(document.elementWithName(std::string(field.element), setup_form::settingText(setup, field)));
    }
    for (const setup_form::List& list : setup_form::lists) {
        for (const Entry& entry : setup.entries(list.key)) {
            XmlElement& element = document.elementWithName(std::string(list.element));
            root.addChild(element);
            for (const Field& field : list.fields) {
                element.addChild(document.elementWithName(std::string(field.element), entry.text(field.key)));
            }
        }
    }
    return document;
}

std::string setupFileBytes(const SetupDictionary& setup, const std::string& fileName) {
    checkSettings(setup, fileName);
    for (const setup_form::List& list : setup_form::lists) {
        checkList(setup, list, fileName);
    }
    const std::string xml = setupToXml(setup).xmlString();
    const std::optional<std::string> bytes = encodeMacRoman(xml);
    if (!bytes) throw AssertionFailure("A checked setup cannot be encoded");
    const bool readsAsUtf8 = !isAscii(*bytes) && isValidUtf8(*bytes);
    return readsAsUtf8 ? withCharacterReferences(xml) : *bytes;
}

} // namespace orrery

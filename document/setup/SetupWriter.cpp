#include "document/setup/SetupWriter.h"

#include "document/setup/SetupForm.h"
#include "platform/MacRoman.h"
#include "platform/OrreryError.h"
#include "platform/Utf8.h"

#include <fmt/format.h>

#include <algorithm>
#include <optional>
#include <string_view>

namespace orrery {

namespace {

using setup_form::Field;

std::string settingText(const SetupDictionary& setup, const Field& field) {
    if (field.key != setup_key::startDay) return std::string(setup.textOrEmpty(field.key));
    const std::optional<Date> day = setup.startDay();
    return day ? dateDescription(*day) : std::string();
}

/// A text that the file cannot hold, and why.
struct Unwritable {
    std::string culprit;
    std::string lackedBy;
};

bool isXmlCharacter(char32_t codePoint) {
    if (codePoint < 0x20) return codePoint == '\t' || codePoint == '\n' || codePoint == '\r';
    return codePoint != 0xFFFE && codePoint != 0xFFFF;
}

std::optional<Unwritable> findUnwritable(std::string_view text) {
    std::size_t position = 0;
    while (position < text.size()) {
        const std::size_t start = position;
        const char32_t codePoint = nextCodePoint(text, position);
        const std::string_view bytes = text.substr(start, position - start);
        if (!isValidUtf8(bytes)) {
            const auto byte = static_cast<unsigned char>(bytes.front());
            return Unwritable{fmt::format("the byte {:02X}", byte), "is no valid UTF-8"};
        }
        const std::string number = fmt::format("U+{:04X}", static_cast<std::uint32_t>(codePoint));
        if (!isXmlCharacter(codePoint)) return Unwritable{number, "XML cannot hold"};
        if (!encodeMacRoman(bytes)) {
            return Unwritable{fmt::format("{} \"{}\"", number, bytes),
                              "Mac OS Roman, the encoding of setup files, lacks"};
        }
    }
    return std::nullopt;
}

void checkText(std::string_view text, const std::string& place, const std::string& fileName) {
    const std::optional<Unwritable> fault = findUnwritable(text);
    if (!fault) return;
    throw OrreryError(
        fmt::format("The {} holds {}, which {}. Nothing was saved.", place, fault->culprit, fault->lackedBy),
        Place{fileName}, "Replace the character and save again.");
}

void checkSettings(const SetupDictionary& setup, const std::string& fileName) {
    for (const Field& field : setup_form::settings) {
        checkText(settingText(setup, field), std::string(field.userWord), fileName);
    }
}

/// "value of initialization 2 ("/Field/Crop/x")"
std::string placeInList(const Field& field, const setup_form::List& list, std::size_t index, const Entry& entry) {
    std::string place = fmt::format("{} of {} {}", field.userWord, list.userWord, index + 1);
    const std::string_view port = entry.text(setup_form::portPath.key);
    if (field.key != setup_form::portPath.key && !port.empty()) {
        place += fmt::format(" (\"{}\")", quotedForMessage(std::string(port)));
    }
    return place;
}

void checkList(const SetupDictionary& setup, const setup_form::List& list, const std::string& fileName) {
    const EntryList& entries = setup.entries(list.key);
    for (std::size_t index = 0; index < entries.size(); ++index) {
        for (const Field& field : list.fields) {
            const std::string_view text = entries[index].text(field.key);
            if (findUnwritable(text)) checkText(text, placeInList(field, list, index, entries[index]), fileName);
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
    for (const Field& field : setup_form::settings) {
        root.addChild(document.elementWithName(std::string(field.element), settingText(setup, field)));
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

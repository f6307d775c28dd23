#include "platform/values/OrreryError.h"
#include "platform/values/Quoted.h"
#include "platform/values/Utf8.h"
#include "platform/xml/XmlDocument.h"

#include <algorithm>

namespace orrery {
namespace {

/// A walk through an element's content that needs no deep stack: the elements that are open, each with the position
/// of the node that comes next.
struct OpenElement {
    const XmlElement* element = nullptr;
    std::size_t next = 0;
};

template <class OnText, class OnStart, class OnEnd>
void walk(const XmlElement& root, OnText onText, OnStart onStart, OnEnd onEnd) {
    std::vector<OpenElement> open = {{&root}};
    onStart(root);
    while (!open.empty()) {
        OpenElement& top = open.back();
        if (top.next == top.element->content().size()) {
            onEnd(*top.element);
            open.pop_back();
            continue;
        }
        const XmlElement::Node& node = top.element->content()[top.next++];
        if (const auto* text = std::get_if<std::string>(&node)) {
            onText(*top.element, *text);
        } else {
            const XmlElement& child = *std::get<XmlElement*>(node);
            onStart(child);
            open.push_back({&child});
        }
    }
}

bool isXmlCharacter(char32_t c) {
    return c >= 0x20 ? (c < 0xFFFE || c > 0xFFFF) : c == '\t' || c == '\n' || c == '\r';
}

void requireXmlText(std::string_view text, const std::string& element) {
    const std::string_view unusable = firstCharacterNotInXml(text);
    if (unusable.empty()) return;
    throw OrreryError("The text of " + quoted(element) + " has the character " + quoted(unusable) +
                          ", which XML cannot carry.",
                      {}, "Remove the character.");
}

/// Escaped so that it reads back exactly: a parser turns a literal CR into LF, and in attributes also tabs and line
/// feeds into blanks.
void appendEscaped(std::string& xml, std::string_view text, bool inAttribute) {
    for (const char c : text) {
        switch (c) {
        case '&':
            xml += "&amp;";
            break;
        case '<':
            xml += "&lt;";
            break;
        case '>':
            xml += "&gt;";
            break;
        case '\r':
            xml += "&#13;";
            break;
        case '"':
            xml += inAttribute ? "&quot;" : "\"";
            break;
        case '\n':
            xml += inAttribute ? "&#10;" : "\n";
            break;
        case '\t':
            xml += inAttribute ? "&#9;" : "\t";
            break;
        default:
            xml += c;
        }
    }
}

void appendStartTag(std::string& xml, const XmlElement& element) {
    xml += '<' + element.name();
    for (const auto& [name, value] : element.attributes()) {
        requireXmlText(value, element.name());
        xml += ' ' + name + "=\"";
        appendEscaped(xml, value, true);
        xml += '"';
    }
    xml += '>';
}

} // namespace

std::string_view firstCharacterNotInXml(std::string_view utf8) {
    for (std::size_t position = 0; position < utf8.size();) {
        const std::size_t start = position;
        const char32_t c = nextCodePoint(utf8, position);
        const std::string_view bytes = utf8.substr(start, position - start);
        const bool malformed = c == 0xFFFD && bytes != "\xEF\xBF\xBD";
        if (malformed || !isXmlCharacter(c)) return bytes;
    }
    return {};
}

std::vector<const XmlElement*> XmlElement::elementsForName(std::string_view name) const {
    std::vector<const XmlElement*> found;
    for (const Node& node : m_content) {
        const auto* child = std::get_if<XmlElement*>(&node);
        if (child != nullptr && (*child)->name() == name) found.push_back(*child);
    }
    return found;
}

std::string XmlElement::stringValue() const {
    std::string value;
    const auto nothing = [](const XmlElement&) {};
    walk(
        *this, [&value](const XmlElement&, const std::string& text) { value += text; }, nothing, nothing);
    return value;
}

void XmlElement::addText(std::string_view text) {
    if (text.empty()) return;
    auto* last = m_content.empty() ? nullptr : std::get_if<std::string>(&m_content.back());
    if (last != nullptr) {
        *last += text;
    } else {
        m_content.emplace_back(std::string(text));
    }
}

void XmlElement::addAttribute(std::string name, std::string value) {
    m_attributes.emplace_back(std::move(name), std::move(value));
}

XmlElement& XmlDocument::elementWithName(std::string name) {
    return m_elements.emplace_back(std::move(name));
}

XmlElement& XmlDocument::elementWithName(std::string name, std::string_view text) {
    XmlElement& element = elementWithName(std::move(name));
    element.addText(text);
    return element;
}

std::string XmlDocument::xmlString() const {
    std::string xml;
    if (m_root == nullptr) return xml;
    const auto onText = [&xml](const XmlElement& element, const std::string& text) {
        requireXmlText(text, element.name());
        appendEscaped(xml, text, false);
    };
    const auto onStart = [&xml](const XmlElement& element) { appendStartTag(xml, element); };
    const auto onEnd = [&xml](const XmlElement& element) { xml += "</" + element.name() + '>'; };
    walk(*m_root, onText, onStart, onEnd);
    return xml;
}

} // namespace orrery

#pragma once

#include "platform/values/OrreryError.h"

#include <cstddef>
#include <deque>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

namespace orrery {

class XmlDocument;

/// One element of an XML document: a name, attributes, and text and child elements in their order.
/// Owned by its document; a pointer to it is valid as long as the document.
class XmlElement {
public:
    explicit XmlElement(std::string name) : m_name(std::move(name)) {}

    [[nodiscard]] const std::string& name() const { return m_name; }
    [[nodiscard]] const std::vector<std::pair<std::string, std::string>>& attributes() const { return m_attributes; }
    /// The direct child elements of that name, in document order.
    [[nodiscard]] std::vector<const XmlElement*> elementsForName(std::string_view name) const;
    /// All text inside the element, its descendants' included, concatenated in document order, untrimmed.
    [[nodiscard]] std::string stringValue() const;

    void addChild(XmlElement& child) { m_content.emplace_back(&child); }
    void addText(std::string_view text); // joins with text that already ends the content
    void addAttribute(std::string name, std::string value);

    using Node = std::variant<std::string, XmlElement*>;
    [[nodiscard]] const std::vector<Node>& content() const { return m_content; }

private:
    std::string m_name;
    std::vector<std::pair<std::string, std::string>> m_attributes;
    std::vector<Node> m_content;
};

/// A tree of elements. The elements stand in one flat store, so that freeing a deep tree needs no deep stack.
class XmlDocument {
public:
    XmlDocument() = default;
    XmlDocument(XmlDocument&&) = default;
    XmlDocument& operator=(XmlDocument&&) = default;
    XmlDocument(const XmlDocument&) = delete;
    XmlDocument& operator=(const XmlDocument&) = delete;
    ~XmlDocument() = default;

    [[nodiscard]] const XmlElement* rootElement() const { return m_root; } // nullptr in an empty document
    XmlElement& elementWithName(std::string name);
    XmlElement& elementWithName(std::string name, std::string_view text);
    void setRootElement(XmlElement& root) { m_root = &root; }

    /// The document as compact text: no declaration, no white space between elements, characters as UTF-8. What XML
    /// cannot carry literally in text is written as a reference ("&amp;", "&lt;", "&gt;", "&#13;").
    [[nodiscard]] std::string xmlString() const;

private:
    std::deque<XmlElement> m_elements;
    XmlElement* m_root = nullptr;
};

/// The first character of the text that no XML document can carry (a control character, malformed UTF-8); empty if
/// none.
[[nodiscard]] std::string_view firstCharacterNotInXml(std::string_view utf8);

/// How bytes without a byte order mark and without a declared encoding are decoded.
enum class XmlFallbackEncoding {
    Utf8,           ///< as XML says: UTF-8, anything else is an error
    Utf8OrMacRoman, ///< UTF-8 when all bytes are valid UTF-8, Mac OS Roman when not
};

/// Deepest nesting of elements that is read; a deeper document is refused.
inline constexpr std::size_t xmlDepthLimit = 1000;
/// Longest single item (tag with its attributes, comment) in bytes; a longer one is refused before it is stored.
inline constexpr std::size_t xmlTokenLimit = 16U << 20U;

/// Parses a whole document, strictly.
///
/// White space is text and CDATA counts as text. A DOCTYPE that names an external DTD is accepted, the DTD is never
/// fetched; a reference to an external entity is refused; internal entities expand within expat's amplification
/// limit. Encodings: UTF-8, UTF-16, ISO-8859-1, US-ASCII and Mac OS Roman ("macintosh").
/// @param fileName for messages only, nothing is opened
/// @throws OrreryError with line and column when the bytes are not a well-formed document within the limits
[[nodiscard]] XmlDocument parseXml(std::string_view bytes, const std::string& fileName,
                                   XmlFallbackEncoding fallback = XmlFallbackEncoding::Utf8);

/// What a streaming pass reports, in document order. Views are valid during the call only.
class XmlHandler {
public:
    using Attribute = std::pair<std::string_view, std::string_view>;

    virtual ~XmlHandler() = default;
    virtual void startElement(std::string_view name, const std::vector<Attribute>& attributes, std::size_t line) = 0;
    virtual void endElement(std::string_view name) = 0;
    virtual void characters(std::string_view text) = 0; // may split a run of text
};

/// Told now and then, on the calling thread, how much of a file is read, from 0 to 1; false cancels the reading.
using ReadProgress = std::function<bool(double fractionDone)>;

class ReadingCancelled : public OrreryError {
public:
    explicit ReadingCancelled(const std::string& path) : OrreryError("The reading was cancelled.", {path}, "") {}
};

/// Streams the file at the path through the handler under the rules of parseXml, holding one block of it at a time.
/// @throws ReadingCancelled, and OrreryError when the file cannot be read (with the system's reason) or is not
/// well-formed, after the handler may have been called for what came before the fault; what a handler throws passes
/// through
void streamXmlFile(const std::string& path, XmlHandler& handler, const ReadProgress& progress = {});

} // namespace orrery

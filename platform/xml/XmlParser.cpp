#include "platform/Files.h"
#include "platform/native/FileChecks.h"
#include "platform/values/MacRoman.h"
#include "platform/values/OrreryError.h"
#include "platform/values/Quoted.h"
#include "platform/values/Utf8.h"
#include "platform/xml/XmlDocument.h"

#include <expat.h>
#include <fmt/format.h>

#include <algorithm>
#include <exception>
#include <memory>
#include <new>
#include <set>
#include <utility>

namespace orrery {
namespace {

constexpr std::size_t blockSize = 64U << 10U;
constexpr std::size_t longestReference = 1000; // as far as a message needs it
constexpr const char* macRomanName = "macintosh";
constexpr std::string_view utf8Mark = "\xEF\xBB\xBF";

std::string lowerCase(std::string_view text) {
    std::string lower(text);
    for (char& c : lower) {
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    }
    return lower;
}

bool isMacRomanName(std::string_view encoding) {
    const std::string name = lowerCase(encoding);
    return name == macRomanName || name == "x-mac-roman" || name == "mac";
}

/// What expat found wrong, in plain words.
std::string problemInWords(XML_Error code, bool hasElement) {
    switch (code) {
    case XML_ERROR_NO_ELEMENTS:
        return hasElement ? "The file ends before its root element is closed." : "The file has no XML element.";
    case XML_ERROR_INVALID_TOKEN:
        return "This is not well-formed XML: there is an unexpected character here.";
    case XML_ERROR_SYNTAX:
        return "This is not well-formed XML: this is not allowed here.";
    case XML_ERROR_UNCLOSED_TOKEN:
        return "The file ends inside a tag, comment or reference that starts here.";
    case XML_ERROR_PARTIAL_CHAR:
        return "The file ends inside a character.";
    case XML_ERROR_UNCLOSED_CDATA_SECTION:
        return "The file ends inside a CDATA section.";
    case XML_ERROR_TAG_MISMATCH:
        return "The end tag here does not match the element that is open.";
    case XML_ERROR_DUPLICATE_ATTRIBUTE:
        return "An attribute occurs twice in one tag.";
    case XML_ERROR_JUNK_AFTER_DOC_ELEMENT:
        return "Something follows the end of the root element.";
    case XML_ERROR_RECURSIVE_ENTITY_REF:
        return "An entity refers to itself.";
    case XML_ERROR_BAD_CHAR_REF:
        return "A character reference names a character that XML does not allow.";
    case XML_ERROR_INCORRECT_ENCODING:
        return "The declared encoding contradicts the file's bytes.";
    case XML_ERROR_ATTRIBUTE_EXTERNAL_ENTITY_REF:
        return "An attribute refers to an external entity.";
    case XML_ERROR_MISPLACED_XML_PI:
        return "The XML declaration is not at the very start of the file.";
    case XML_ERROR_AMPLIFICATION_LIMIT_BREACH:
        return "Its entities expand to far more text than a model can need.";
    default:
        return fmt::format("This is not well-formed XML: {}.", XML_ErrorString(code));
    }
}

/// One pass of expat over a document. What goes wrong inside a callback is kept until expat has returned, because no
/// exception may cross its C frames.
class XmlStream {
public:
    XmlStream(std::string fileName, XmlHandler& handler, const char* encoding)
        : m_fileName(std::move(fileName)), m_handler(handler), m_parser(XML_ParserCreate(encoding)) {
        if (!m_parser) throw std::bad_alloc();
        XML_SetUserData(parser(), this);
        XML_SetElementHandler(parser(), onStart, onEnd);
        XML_SetCharacterDataHandler(parser(), onCharacters);
        XML_SetUnknownEncodingHandler(parser(), onUnknownEncoding, this);
        XML_SetDoctypeDeclHandler(parser(), onDoctype, onDoctypeEnd);
        XML_SetEntityDeclHandler(parser(), onEntityDeclaration);
        XML_SetSkippedEntityHandler(parser(), onSkippedEntity);
        // An external DTD is never asked for, as the parsing of parameter entities stays off; only a reference to an
        // external entity comes here.
        XML_SetExternalEntityRefHandler(parser(), onExternalEntity);
    }

    /// Takes the document from `read`, which fills a buffer and returns fewer bytes than asked for only at the end.
    template <class Read>
    void pump(Read read) {
        std::uint64_t fed = 0;
        std::size_t pending = 0; // bytes of an item whose end has not come yet
        for (bool last = false; !last;) {
            // An unfinished item is scanned from its start each time, so it gets pieces that grow with it.
            const std::size_t capacity = std::min(std::max(blockSize, pending), xmlTokenLimit + 1 - pending);
            void* const buffer = XML_GetBuffer(parser(), static_cast<int>(capacity));
            if (buffer == nullptr) throw std::bad_alloc();
            const std::size_t count = read(static_cast<char*>(buffer), capacity);
            last = count < capacity;
            fed += count;
            if (XML_ParseBuffer(parser(), static_cast<int>(count), last ? 1 : 0) != XML_STATUS_OK) throwFault();
            pending = static_cast<std::size_t>(fed - std::min(fed, positionInFile()));
            if (pending > xmlTokenLimit) fail("A single tag, comment or declaration is too long.");
        }
    }

private:
    [[nodiscard]] XML_Parser parser() const { return m_parser.get(); }
    [[nodiscard]] std::uint64_t positionInFile() const {
        return static_cast<std::uint64_t>(std::max<XML_Index>(XML_GetCurrentByteIndex(parser()), 0));
    }
    [[nodiscard]] Place place() const {
        return {m_fileName, XML_GetCurrentLineNumber(parser()), XML_GetCurrentColumnNumber(parser()) + 1};
    }

    [[noreturn]] void fail(const std::string& problem) const {
        throw OrreryError(problem, place(), "Correct the file there, or save it again in the program that wrote it.");
    }

    [[noreturn]] void throwFault() const {
        if (m_fault) std::rethrow_exception(m_fault);
        const XML_Error code = XML_GetErrorCode(parser());
        if (code == XML_ERROR_NO_MEMORY) throw std::bad_alloc();
        if (code == XML_ERROR_UNKNOWN_ENCODING) {
            fail("The encoding " + quoted(m_unknownEncoding) +
                 " is not known here; UTF-8, UTF-16, ISO-8859-1, US-ASCII and macintosh are.");
        }
        if (code == XML_ERROR_UNDEFINED_ENTITY) failUndeclared(referenceIn(withoutNul(rawInput(longestReference))));
        fail(problemInWords(code, m_hasElement));
    }

    [[noreturn]] void failUndeclared(std::string_view entity) const {
        fail("The entity " + quoted(fmt::format("&{};", entity)) + " is not declared in this file.");
    }

    /// At most `length` bytes of the file from the current item on, as far as expat holds them.
    [[nodiscard]] std::string_view rawInput(std::size_t length) const {
        int offset = 0;
        int size = 0;
        const char* const context = XML_GetInputContext(parser(), &offset, &size);
        if (context == nullptr || offset < 0 || offset >= size) return {};
        return {context + offset, std::min(length, static_cast<std::size_t>(size - offset))};
    }

    /// The ASCII characters of raw input, of UTF-16 too.
    static std::string withoutNul(std::string_view bytes) {
        std::string text(bytes);
        std::erase(text, '\0');
        return text;
    }

    /// The name of the first entity reference; empty without one.
    static std::string_view referenceIn(std::string_view bytes) {
        const std::size_t start = bytes.find('&');
        if (start == std::string_view::npos) return {};
        return bytes.substr(start + 1, std::min(bytes.find(';', start), bytes.size()) - start - 1);
    }

    /// Expat drops a reference that only an external DTD could declare, without a word where it stands in an attribute.
    void requireDeclaredReferences(std::string_view bytes) const {
        for (std::size_t at = bytes.find_first_of("&<"); at < bytes.size(); at = bytes.find_first_of("&<", at)) {
            if (bytes[at] == '<') {
                at += lengthWithoutReferences(bytes.substr(at));
                continue;
            }
            const std::string_view name = referenceIn(bytes.substr(at));
            if (!name.starts_with('#') && m_entities.find(name) == m_entities.end()) failUndeclared(name);
            ++at;
        }
    }

    /// Of what begins with this "<": the whole of a section, comment or instruction, where "&" is text, else 1.
    static std::size_t lengthWithoutReferences(std::string_view bytes) {
        constexpr std::pair<std::string_view, std::string_view> ends[] = {
            {"<![CDATA[", "]]>"}, {"<!--", "-->"}, {"<?", "?>"}};
        for (const auto& [start, end] : ends) {
            if (bytes.starts_with(start)) {
                return std::min(bytes.find(end, start.size()), bytes.size() - 1) + 1; // the rest of the end is text
            }
        }
        return 1;
    }

    void startElement(const char* name, const char** attributes) {
        m_hasElement = true;
        if (++m_depth > xmlDepthLimit) fail(fmt::format("Elements are nested more than {} deep.", xmlDepthLimit));
        m_attributes.clear();
        for (; *attributes != nullptr; attributes += 2)
            m_attributes.emplace_back(attributes[0], attributes[1]);
        if (m_hasDoctype && !m_attributes.empty()) {
            const auto length = static_cast<std::size_t>(std::max(XML_GetCurrentByteCount(parser()), 0));
            const std::string_view tag = rawInput(length);
            if (tag.find('&') != std::string_view::npos) requireDeclaredReferences(withoutNul(tag));
        }
        m_handler.startElement(name, m_attributes, XML_GetCurrentLineNumber(parser()));
    }

    /// Runs the body of a callback unless an earlier one has failed.
    template <class Body>
    static void guarded(void* self, Body body) noexcept {
        auto& stream = *static_cast<XmlStream*>(self);
        if (stream.m_fault) return;
        try {
            body(stream);
        } catch (...) {
            stream.m_fault = std::current_exception();
            XML_StopParser(stream.parser(), XML_FALSE);
        }
    }

    static void XMLCALL onStart(void* self, const char* name, const char** attributes) {
        guarded(self, [&](XmlStream& stream) { stream.startElement(name, attributes); });
    }
    static void XMLCALL onEnd(void* self, const char* name) {
        guarded(self, [&](XmlStream& stream) {
            --stream.m_depth;
            stream.m_handler.endElement(name);
        });
    }
    static void XMLCALL onCharacters(void* self, const char* text, int length) {
        guarded(self, [&](XmlStream& stream) {
            stream.m_handler.characters({text, static_cast<std::size_t>(length)});
        });
    }
    static void XMLCALL onDoctype(void* self, const char* /*name*/, const char* /*system*/, const char* /*public*/,
                                  int /*hasInternalSubset*/) {
        static_cast<XmlStream*>(self)->m_hasDoctype = true;
    }
    static void XMLCALL onDoctypeEnd(void* self) {
        guarded(self, [](XmlStream& stream) {
            for (const std::string& value : stream.m_entityValues)
                stream.requireDeclaredReferences(value);
            stream.m_entityValues.clear();
        });
    }
    static void XMLCALL onEntityDeclaration(void* self, const char* name, int isParameterEntity, const char* value,
                                            int length, const char* /*base*/, const char* /*system*/,
                                            const char* /*public*/, const char* /*notation*/) {
        if (isParameterEntity != 0) return;
        guarded(self, [&](XmlStream& stream) {
            stream.m_entities.emplace(name);
            if (value != nullptr) stream.m_entityValues.emplace_back(value, static_cast<std::size_t>(length));
        });
    }
    static void XMLCALL onSkippedEntity(void* self, const char* name, int isParameterEntity) {
        if (isParameterEntity != 0) return; // declarations that stand elsewhere; what they would declare is refused
        guarded(self, [&](XmlStream& stream) { stream.failUndeclared(name); });
    }
    static int XMLCALL onExternalEntity(XML_Parser parser, const char* /*context*/, const char* /*base*/,
                                        const char* system, const char* /*public*/) {
        guarded(XML_GetUserData(parser), [&](XmlStream& stream) {
            stream.fail("The text refers to another file, " + quoted(system == nullptr ? "" : system) +
                        ", which is not read.");
        });
        return XML_STATUS_ERROR;
    }
    static int XMLCALL onUnknownEncoding(void* self, const char* name, XML_Encoding* encoding) {
        if (!isMacRomanName(name)) {
            guarded(self, [&](XmlStream& stream) { stream.m_unknownEncoding = name; });
            return XML_STATUS_ERROR;
        }
        for (int byte = 0; byte < 256; ++byte) {
            encoding->map[byte] = static_cast<int>(macRomanCodePoint(static_cast<unsigned char>(byte)));
        }
        encoding->data = nullptr;
        encoding->convert = nullptr;
        encoding->release = nullptr;
        return XML_STATUS_OK;
    }

    std::string m_fileName;
    XmlHandler& m_handler;
    std::unique_ptr<XML_ParserStruct, decltype([](XML_Parser parser) { XML_ParserFree(parser); })> m_parser;
    std::exception_ptr m_fault;
    std::string m_unknownEncoding;
    std::size_t m_depth = 0;
    bool m_hasElement = false;
    bool m_hasDoctype = false;
    std::vector<XmlHandler::Attribute> m_attributes;
    std::set<std::string, std::less<>> m_entities = {"amp", "lt", "gt", "quot", "apos"};
    std::vector<std::string> m_entityValues;
};

/// Builds the tree of a whole document.
class TreeBuilder : public XmlHandler {
public:
    void startElement(std::string_view name, const std::vector<Attribute>& attributes, std::size_t /*line*/) override {
        XmlElement& element = m_document.elementWithName(std::string(name));
        for (const auto& [key, value] : attributes)
            element.addAttribute(std::string(key), std::string(value));
        if (m_open.empty()) {
            m_document.setRootElement(element);
        } else {
            m_open.back()->addChild(element);
        }
        m_open.push_back(&element);
    }
    void endElement(std::string_view /*name*/) override { m_open.pop_back(); }
    void characters(std::string_view text) override { m_open.back()->addText(text); }

    XmlDocument takeDocument() { return std::move(m_document); }

private:
    XmlDocument m_document;
    std::vector<XmlElement*> m_open;
};

bool hasUtf16Form(std::string_view bytes) {
    return bytes.starts_with("\xFE\xFF") || bytes.starts_with("\xFF\xFE") ||
           (bytes.size() > 1 && (bytes[0] == '\0' || bytes[1] == '\0'));
}

bool declaresEncoding(std::string_view bytes) {
    return bytes.starts_with("<?xml") && bytes.substr(0, bytes.find("?>")).find("encoding") != std::string_view::npos;
}

/// The encoding that holds whatever the document declares: a byte order mark's, else the fallback's; nullptr when the
/// document is to tell it.
const char* imposedEncoding(std::string_view bytes, XmlFallbackEncoding fallback) {
    if (bytes.starts_with(utf8Mark)) return "UTF-8";
    const bool mayBeMacRoman = fallback == XmlFallbackEncoding::Utf8OrMacRoman;
    if (!mayBeMacRoman || hasUtf16Form(bytes) || declaresEncoding(bytes) || isValidUtf8(bytes)) return nullptr;
    return macRomanName;
}

} // namespace

XmlDocument parseXml(std::string_view bytes, const std::string& fileName, XmlFallbackEncoding fallback) {
    TreeBuilder builder;
    XmlStream stream(fileName, builder, imposedEncoding(bytes, fallback));
    stream.pump([&bytes](char* buffer, std::size_t capacity) {
        const std::size_t count = bytes.copy(buffer, capacity);
        bytes.remove_prefix(count);
        return count;
    });
    return builder.takeDocument();
}

void streamXmlFile(const std::string& path, XmlHandler& handler, const ReadProgress& progress) {
    const ReadableFile file(path);
    const auto size = static_cast<double>(std::max<std::uint64_t>(file.size(), 1));
    const Date date = file.modificationDate();
    std::string start(utf8Mark.size(), '\0');
    start.resize(file.readAt(start.data(), start.size(), 0));
    XmlStream stream(path, handler, imposedEncoding(start, XmlFallbackEncoding::Utf8));
    std::uint64_t offset = 0;
    const auto readNext = [&](char* buffer, std::size_t capacity) {
        const std::size_t count = file.readAt(buffer, capacity, offset);
        offset += count;
        const double fractionDone = std::min(static_cast<double>(offset) / size, 1.0); // it may have grown
        if (progress && !progress(fractionDone)) throw ReadingCancelled(path);
        return count;
    };
    try {
        stream.pump(readNext);
    } catch (const ReadingCancelled&) {
        throw;
    } catch (const OrreryError&) {
        if (file.modificationDate() != date) requireUnchanged(file, offset, date); // that is the better reason
        throw;
    }
    requireUnchanged(file, offset, date);
}

} // namespace orrery

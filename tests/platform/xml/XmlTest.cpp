#include "platform/Files.h"
#include "platform/values/MacRoman.h"
#include "platform/values/OrreryError.h"
#include "platform/xml/XmlDocument.h"
#include "support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <stdexcept>

namespace orrery {
namespace {

using testing::HasSubstr;

std::string repeated(std::string_view text, std::size_t count) {
    std::string whole;
    for (std::size_t i = 0; i < count; ++i)
        whole += text;
    return whole;
}

std::string utf16(std::string_view ascii, bool bigEndian) {
    std::string bytes = bigEndian ? "\xFE\xFF" : "\xFF\xFE";
    for (const char c : ascii)
        bytes += bigEndian ? std::string{'\0', c} : std::string{c, '\0'};
    return bytes;
}

const std::string macRomanDeclared = "<?xml version='1.0' encoding='Macintosh'?>";

TEST(ParseXml, GivesElementsTextAndAttributes) {
    struct Row {
        const char* name;
        std::string bytes;
        std::string text; // of the document written again
    };
    const std::vector<Row> rows = {
        {"whiteSpaceIsText", "<a> <b/>\n</a>", "<a> <b></b>\n</a>"},
        {"cdataIsText", "<a>1<![CDATA[<&]]>2</a>", "<a>1&lt;&amp;2</a>"},
        {"commentsAndInstructionsAreNot", "<?p x?><a>1<!-- - --><?p y?>2</a><!--x-->", "<a>12</a>"},
        {"lineEnds", "<a x='1\r\n2'>\r\n\r&#13;</a>", "<a x=\"1 2\">\n\n&#13;</a>"},
        {"references", "<a x='&lt;&#9;&quot;'>&#x20AC;&apos;</a>", "<a x=\"&lt;&#9;&quot;\">€'</a>"},
        {"externalDtd", "<!DOCTYPE a SYSTEM 'file:///nowhere/x.dtd'><a x='&amp;'/>", "<a x=\"&amp;\"></a>"},
        {"publicDtd", "<!DOCTYPE a PUBLIC '-//X//Y' 'http://x.invalid/y.dtd'><a>&#65;</a>", "<a>A</a>"},
        {"textInAnEntitysCdata",
         "<!DOCTYPE a SYSTEM 'x' [<!ENTITY e '<![CDATA[ &foo; ]]><!-- &foo; --><?p &foo;?>&lt;'>]><a>&e;</a>",
         "<a> &amp;foo; &lt;</a>"},
        {"internalEntity", "<!DOCTYPE a SYSTEM 'x' [<!ENTITY e '1&#38;amp;<b/>'>]><a x='&amp;'>&e;</a>",
         "<a x=\"&amp;\">1&amp;<b></b></a>"},
        {"utf8Mark", "\xEF\xBB\xBF<a>é</a>", "<a>é</a>"},
        {"utf8MarkBeatsDeclaration", "\xEF\xBB\xBF" + macRomanDeclared + "<a>é</a>", "<a>é</a>"},
        {"utf16Little", utf16("<a x='1'>2</a>", false), "<a x=\"1\">2</a>"},
        {"utf16Big", utf16("<!DOCTYPE a SYSTEM 'x'><a x='&lt;'>2</a>", true), "<a x=\"&lt;\">2</a>"},
        {"latin1", "<?xml version='1.0' encoding='ISO-8859-1'?><a>\xE9</a>", "<a>é</a>"},
        {"macRoman", macRomanDeclared + "<a x='\xDB'>\x8E</a>", "<a x=\"€\">é</a>"},
        {"macRomanOtherName", "<?xml version='1.0' encoding='x-mac-roman'?><a>\x8E</a>", "<a>é</a>"},
        {"fallbackNotNeeded", "<a>é</a>", "<a>é</a>"},
        {"fallback", "<a>\x8E\xDB</a>", "<a>é€</a>"},
        {"fallbackAfterDeclarationWithout", "<?xml version='1.0'?><a>\x8E</a>", "<a>é</a>"},
        {"deepest", repeated("<a>", xmlDepthLimit) + repeated("</a>", xmlDepthLimit),
         repeated("<a>", xmlDepthLimit) + repeated("</a>", xmlDepthLimit)},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(parseXml(row.bytes, "f.xml", XmlFallbackEncoding::Utf8OrMacRoman).xmlString(), row.text);
    }
}

TEST(ParseXml, RefusesWithThePlaceAndTheReason) {
    struct Row {
        const char* name;
        std::string bytes;
        std::string message; // its beginning
    };
    const std::string dtd = "<!DOCTYPE a SYSTEM 'x.dtd' [<!ENTITY e SYSTEM 'file:///etc/passwd'>]>";
    std::string bomb = "<!DOCTYPE a [<!ENTITY l0 'lol'>";
    for (int i = 1; i < 10; ++i) {
        const std::string number = std::to_string(i - 1);
        bomb += "<!ENTITY l" + std::to_string(i) + " '" + repeated("&l" + number + ";", 10) + "'>";
    }
    const std::string quadratic =
        "<!DOCTYPE a [<!ENTITY b '" + std::string(150000, 'x') + "'>]><a>" + repeated("&b;", 50000) + "</a>";
    const std::vector<Row> rows = {
        {"empty", "", "f.xml:1:1: The file has no XML element."},
        {"noRootEnd", "<a>\n<b/>", "f.xml:2:5: The file ends before its root element is closed."},
        {"mismatch", "<a>\n <b></a>", "f.xml:2:7: The end tag here does not match"},
        {"second root", "<a/>\n<b/>", "f.xml:2:1: Something follows the end of the root element."},
        {"nul", std::string("<a>\n\0</a>", 9), "f.xml:2:1: This is not well-formed XML"},
        {"control", "<a>\n1\x01</a>", "f.xml:2:2: This is not well-formed XML"},
        {"noncharacter", "<a>\xEF\xBF\xBE</a>", "f.xml:1:4: This is not well-formed XML"},
        {"surrogate", "<a>&#xD800;</a>", "f.xml:1:4: A character reference names a character"},
        {"notUtf8", "<?xml version='1.0' encoding='UTF-8'?>\n<a>\x8E</a>", "f.xml:2:4: This is not well-formed XML"},
        {"unknownEncoding", "<?xml version='1.0' encoding='KOI8'?><a/>", "f.xml:1:31: The encoding “KOI8” is not"},
        {"wrongEncoding", "<?xml version='1.0' encoding='UTF-16'?><a/>",
         "f.xml:1:31: The declared encoding contradicts"},
        {"undeclared", "<a>1 &foo;</a>", "f.xml:1:6: The entity “&foo;” is not declared"},
        {"skipped", "<!DOCTYPE a SYSTEM 'x'>\n<a>1 &foo;</a>", "f.xml:2:6: The entity “&foo;” is not declared"},
        {"skippedInAttribute", "<!DOCTYPE a SYSTEM 'x'>\n<a x='&amp;1&foo;'/>", "f.xml:2:1: The entity “&foo;”"},
        {"skippedUtf16", utf16("<!DOCTYPE a SYSTEM 'x'>\n<a x='1&foo;'/>", false), "f.xml:2:1: The entity “&foo;”"},
        {"skippedBehindCdata", "<!DOCTYPE a SYSTEM 'x' [<!ENTITY e '<![CDATA[&x;]]>&foo;'>]><a>&e;</a>",
         "f.xml:1:60: The entity “&foo;”"},
        {"skippedInEntity", "<!DOCTYPE a SYSTEM 'x' [<!ENTITY e '&foo;'>]><a x='&e;'/>",
         "f.xml:1:45: The entity “&foo;”"},
        {"external", dtd + "<a>&e;</a>",
         "f.xml:1:73: The text refers to another file, “file:///etc/passwd”, which is not"},
        {"externalInAttribute", dtd + "<a x='&e;'/>", "f.xml:1:76: An attribute refers to an external entity."},
        {"recursive", "<!DOCTYPE a [<!ENTITY e '&e;'>]><a>&e;</a>", "f.xml:1:36: An entity refers to itself."},
        {"bomb", bomb + "]><a>&l9;</a>", "f.xml:1:532: Its entities expand to far more text"},
        {"quadratic", quadratic, "f.xml:1:150330: Its entities expand to far more text"},
        {"tooDeep", repeated("<a>", 100000), "f.xml:1:3001: Elements are nested more than 1000 deep."},
        {"longAttribute", "<a x='" + std::string(xmlTokenLimit, 'y') + "'/>", "f.xml:1:1: A single tag, comment"},
        {"longComment", "<a>\n<!--" + std::string(xmlTokenLimit, 'y'), "f.xml:2:1: A single tag, comment"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        try {
            (void)parseXml(row.bytes, "f.xml");
            ADD_FAILURE() << "accepted";
        } catch (const OrreryError& error) {
            EXPECT_THAT(error.what(), testing::StartsWith(row.message));
            EXPECT_FALSE(error.remedy().empty());
        }
    }
}

TEST(ParseXml, RefusesADocumentCutAnywhere) {
    const std::string whole =
        "<?xml version='1.0'?><!DOCTYPE a [<!ENTITY e 'x'>]><a x='1'><!-- c --><![CDATA[d]]>&e;é</a>";
    for (std::size_t length = 0; length < whole.size(); ++length) {
        EXPECT_THROW((void)parseXml(whole.substr(0, length), "f.xml"), OrreryError) << length;
    }
}

TEST(XmlString, ReadsBackExactly) {
    for (const std::string text : {"", " ", "\r", "\n\r\t\r\n ]]>&<>\"'é€😀a&amp; "}) {
        XmlDocument document;
        XmlElement& root = document.elementWithName("a", text);
        root.addAttribute("x", text);
        document.setRootElement(root);
        const XmlDocument again = parseXml(document.xmlString(), "f.xml");
        EXPECT_EQ(again.rootElement()->stringValue(), text);
        EXPECT_EQ(again.rootElement()->attributes().at(0).second, text);
    }
}

TEST(XmlString, RefusesWhatXmlCannotCarry) {
    for (const std::string& text :
         {std::string("a\0", 2), std::string("\x1B"), std::string("\xE9"), std::string("\xEF\xBF\xBF")}) {
        XmlDocument document;
        document.setRootElement(document.elementWithName("Value", text));
        EXPECT_THROW((void)document.xmlString(), OrreryError);
    }
}

/// Writes what it is told on one line.
struct Recorder : XmlHandler {
    void startElement(std::string_view name, const std::vector<Attribute>& attributes, std::size_t line) override {
        if (name == "throw") throw std::out_of_range("thrown by a handler");
        told += '<' + std::string(name) + '@' + std::to_string(line);
        for (const auto& [key, value] : attributes)
            told += ' ' + std::string(key) + '=' + std::string(value);
    }
    void endElement(std::string_view name) override { told += '/' + std::string(name); }
    void characters(std::string_view text) override { told += text; }
    std::string told;
};

TEST(StreamXmlFile, ReportsInDocumentOrderAcrossBlocks) {
    const test::TemporaryFolder folder;
    const std::string longText = repeated("0123456789é", 30000);
    const std::string path = folder.write("f.xml", "<a>\n<b i='" + longText + "'/>" + longText + "</a>");
    Recorder recorder;
    streamXmlFile(path, recorder);
    EXPECT_EQ(recorder.told, "<a@1\n<b@2 i=" + longText + "/b" + longText + "/a");
}

TEST(StreamXmlFile, PassesThroughWhatTheHandlerThrows) {
    const test::TemporaryFolder folder;
    const std::string path = folder.write("f.xml", "<a><throw/><b/></a>");
    Recorder recorder;
    EXPECT_THROW(streamXmlFile(path, recorder), std::out_of_range);
    EXPECT_EQ(recorder.told, "<a@1");
}

TEST(StreamXmlFile, TellsWhenTheFileChangesMeanwhile) {
    const test::TemporaryFolder folder;
    const std::string path = folder.write("f.xml", "<a><b/></a>");
    struct Changer : Recorder {
        void endElement(std::string_view /*name*/) override { EXPECT_EQ(truncate(path.c_str(), 5), 0); }
        std::string path;
    } changer;
    changer.path = path;
    EXPECT_THAT([&] { streamXmlFile(path, changer); },
                testing::ThrowsMessage<OrreryError>(HasSubstr("changed while it was read. Try again.")));
}

TEST(StreamXmlFile, NeverOpensWhatADocumentNames) {
    const test::TemporaryFolder folder;
    const std::string pipe = folder.path() + "pipe"; // opening it for reading would hang
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    const std::string doctype = "<!DOCTYPE a SYSTEM 'file://" + pipe + "' [<!ENTITY % p SYSTEM 'file://" + pipe +
                                "'> %p; <!ENTITY e SYSTEM 'file://" + pipe + "'>]>";
    Recorder recorder;
    streamXmlFile(folder.write("fine.xml", doctype + "<a>1</a>"), recorder);
    EXPECT_EQ(recorder.told, "<a@11/a");
    EXPECT_THROW(streamXmlFile(folder.write("bad.xml", doctype + "<a>&e;</a>"), recorder), OrreryError);
    EXPECT_THROW(streamXmlFile(pipe, recorder), OrreryError);
}

} // namespace
} // namespace orrery

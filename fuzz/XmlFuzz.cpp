// Any bytes are a document or an OrreryError, and a document written again reads back as it was.
#include "FuzzTarget.h"
#include "platform/values/OrreryError.h"
#include "platform/xml/XmlDocument.h"

namespace {

void parseAndWrite(std::string_view bytes, orrery::XmlFallbackEncoding fallback) {
    orrery::XmlDocument document;
    try {
        document = orrery::parseXml(bytes, "input", fallback);
    } catch (const orrery::OrreryError&) {
        return;
    }
    const std::string written = document.xmlString();
    // Written as UTF-8, so with a mark that says so.
    const orrery::XmlDocument again = orrery::parseXml("\xEF\xBB\xBF" + written, "written");
    const bool sameText = again.rootElement()->stringValue() == document.rootElement()->stringValue();
    orrery::fuzz::require(sameText && again.xmlString() == written, "a written document reads back as it was");
}

} // namespace

int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    const std::string_view bytes = orrery::fuzz::asText(data, size);
    parseAndWrite(bytes, orrery::XmlFallbackEncoding::Utf8);
    parseAndWrite(bytes, orrery::XmlFallbackEncoding::Utf8OrMacRoman);
    return 0;
}

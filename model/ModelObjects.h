#pragma once

#include "platform/Log.h"
#include "platform/values/OrreryError.h"
#include "platform/xml/XmlDocument.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orrery {

/// What is said of a setup without a model.
inline constexpr std::string_view noModelChosen = "No model is chosen.";

/// What a model file says of its objects (the children of its top "database" element), as it streams by. Each object
/// is started, given part by part and ended. Views are valid during the call only.
class ModelObjectHandler {
public:
    using XmlAttributes = std::vector<XmlHandler::Attribute>;

    virtual ~ModelObjectHandler() = default;
    virtual void startObject(const XmlAttributes& attributes, std::size_t line) = 0;
    /// An "attribute" child: what its tag says, then all the text in it.
    virtual void startAttribute(const XmlAttributes& attributes) = 0;
    virtual void endAttribute(std::string_view text) = 0;
    virtual void relationship(const XmlAttributes& attributes) = 0;
    virtual void endObject() = 0;
};

/// Streams the model file at the path through the handler. @throws OrreryError as streamXmlFile
void streamModelObjects(const std::string& path, ModelObjectHandler& handler, const ReadProgress& progress = {});

/// Calls read(), which reads the file. Why the file cannot be read, after logging that; empty when it could.
/// @throws ReadingCancelled
template <class Read>
std::string faultOfReading(const std::string& path, Read read) {
    try {
        read();
        return {};
    } catch (const ReadingCancelled&) {
        throw;
    } catch (const OrreryError& error) {
        logLine("Error opening XML document " + path);
        logLine(error.what());
        return error.what();
    }
}

/// The attribute's text; std::nullopt when there is none of that name.
[[nodiscard]] std::optional<std::string_view> attributeText(const ModelObjectHandler::XmlAttributes& attributes,
                                                            std::string_view name);

/// Calls visit(part) for each part of the text between single blanks, empty ones included.
template <class Visit>
void splitAtBlanks(std::string_view text, Visit visit) {
    for (std::size_t blank = text.find(' '); blank != std::string_view::npos; blank = text.find(' ')) {
        visit(text.substr(0, blank));
        text.remove_prefix(blank + 1);
    }
    visit(text);
}

} // namespace orrery

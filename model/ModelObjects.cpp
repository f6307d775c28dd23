#include "model/ModelObjects.h"

namespace orrery {

namespace {

/// Finds the database/object elements as they stream by, each with its attribute and relationship children.
class ObjectFinder : public XmlHandler {
public:
    explicit ObjectFinder(ModelObjectHandler& handler) : m_handler(handler) {}

    void startElement(std::string_view name, const std::vector<Attribute>& attributes, std::size_t line) override {
        ++m_depth;
        if (m_depth == 1) {
            m_inDatabase = name == "database";
        } else if (m_depth == 2) {
            m_inObject = m_inDatabase && name == "object";
            if (m_inObject) m_handler.startObject(attributes, line);
        } else if (m_depth == 3 && m_inObject) {
            startPartOfObject(name, attributes);
        }
    }

    void endElement(std::string_view /*name*/) override {
        if (m_depth == 3 && m_inAttribute) {
            m_handler.endAttribute(m_text);
            m_text.clear();
            m_inAttribute = false;
        } else if (m_depth == 2 && m_inObject) {
            m_handler.endObject();
        }
        --m_depth;
    }

    void characters(std::string_view text) override {
        if (m_inAttribute) m_text += text;
    }

private:
    void startPartOfObject(std::string_view name, const std::vector<Attribute>& attributes) {
        if (name == "attribute") {
            m_handler.startAttribute(attributes);
            m_inAttribute = true;
        } else if (name == "relationship") {
            m_handler.relationship(attributes);
        }
    }

    ModelObjectHandler& m_handler;
    std::string m_text; // of the present attribute element
    std::size_t m_depth = 0;
    bool m_inDatabase = false;
    bool m_inObject = false; // meaningful from depth 2 on
    bool m_inAttribute = false;
};

} // namespace

void streamModelObjects(const std::string& path, ModelObjectHandler& handler, const ReadProgress& progress) {
    if (path.empty()) throw OrreryError(std::string(noModelChosen), {}, "Choose one.");
    ObjectFinder finder(handler);
    streamXmlFile(path, finder, progress);
}

std::optional<std::string_view> attributeText(const ModelObjectHandler::XmlAttributes& attributes,
                                              std::string_view name) {
    for (const auto& [key, text] : attributes) {
        if (key == name) return text;
    }
    return std::nullopt;
}

} // namespace orrery

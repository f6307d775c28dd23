#include "model/ModelRecord.h"

#include "platform/Log.h"
#include "platform/OrreryError.h"
#include "platform/XmlDocument.h"

#include <utility>

namespace orrery {

namespace {

using Attributes = std::vector<XmlHandler::Attribute>;

std::optional<std::string> attributeText(const Attributes& attributes, std::string_view name) {
    for (const auto& [key, text] : attributes) {
        if (key == name) return std::string(text);
    }
    return std::nullopt;
}

std::vector<std::string> splitAtBlanks(std::string_view text) {
    std::vector<std::string> parts;
    for (std::size_t blank = text.find(' '); blank != std::string_view::npos; blank = text.find(' ')) {
        parts.emplace_back(text.substr(0, blank));
        text.remove_prefix(blank + 1);
    }
    parts.emplace_back(text);
    return parts;
}

ModelRelationship relationshipOf(const Attributes& attributes) {
    ModelRelationship relationship;
    relationship.type = attributeText(attributes, "type");
    if (const auto references = attributeText(attributes, "idrefs")) {
        relationship.targets = splitAtBlanks(*references);
    }
    return relationship;
}

/// Collects database/object elements as they stream by, each with its attribute and relationship children.
class RecordCollector : public XmlHandler {
public:
    void startElement(std::string_view name, const std::vector<Attribute>& attributes, std::size_t line) override {
        ++m_depth;
        if (m_depth == 1) {
            m_inDatabase = name == "database";
        } else if (m_depth == 2) {
            m_inObject = m_inDatabase && name == "object";
            if (m_inObject) startObject(attributes, line);
        } else if (m_depth == 3 && m_inObject) {
            startPartOfObject(name, attributes);
        }
    }

    void endElement(std::string_view /*name*/) override {
        if (m_depth == 3 && m_inAttribute) {
            m_records.back().attributes.back().set("value", std::exchange(m_text, {}));
            m_inAttribute = false;
        }
        --m_depth;
    }

    void characters(std::string_view text) override {
        if (m_inAttribute) m_text += text;
    }

    [[nodiscard]] std::vector<ModelRecord> takeRecords() { return std::move(m_records); }

private:
    void startObject(const Attributes& attributes, std::size_t line) {
        ModelRecord& record = m_records.emplace_back();
        record.className = attributeText(attributes, "type");
        record.identifier = attributeText(attributes, "id");
        record.line = line;
    }

    void startPartOfObject(std::string_view name, const Attributes& attributes) {
        ModelRecord& record = m_records.back();
        if (name == "attribute") {
            StringMap& map = record.attributes.emplace_back();
            map.reserve(attributes.size() + 1);
            for (const auto& [key, text] : attributes) {
                map.append(std::string(key), std::string(text)); // XML allows a name once per element
            }
            m_inAttribute = true;
        } else if (name == "relationship") {
            // Relationships are looked up by name, so one without a name can mean nothing.
            if (auto key = attributeText(attributes, "name")) {
                record.relationships.insert_or_assign(std::move(*key), relationshipOf(attributes));
            }
        }
    }

    std::vector<ModelRecord> m_records;
    std::string m_text; // of the present attribute element
    std::size_t m_depth = 0;
    bool m_inDatabase = false;
    bool m_inObject = false; // meaningful from depth 2 on
    bool m_inAttribute = false;
};

} // namespace

const std::vector<std::string>* ModelRecord::targets(std::string_view relationship) const {
    const auto found = relationships.find(relationship);
    return found == relationships.end() || !found->second.targets ? nullptr : &*found->second.targets;
}

std::optional<std::vector<ModelRecord>> dictionariesFromModelFile(const std::string& path) {
    if (path.empty()) return std::nullopt;
    try {
        return readModelFile(path);
    } catch (const OrreryError& error) {
        logLine("Error opening XML document " + path);
        logLine(error.what());
        return std::nullopt;
    }
}

std::vector<ModelRecord> readModelFile(const std::string& path) {
    if (path.empty()) throw OrreryError("The setup names no model file.", {}, "Choose a model.");
    RecordCollector collector;
    streamXmlFile(path, collector);
    return collector.takeRecords();
}

} // namespace orrery

#include "model/ModelRecord.h"

#include "model/ModelObjects.h"

#include <utility>

namespace orrery {

namespace {

using XmlAttributes = ModelObjectHandler::XmlAttributes;

std::optional<std::string> textOf(const XmlAttributes& attributes, std::string_view name) {
    const auto text = attributeText(attributes, name);
    return text ? std::optional<std::string>(*text) : std::nullopt;
}

/// Keeps the objects as records.
class RecordCollector : public ModelObjectHandler {
public:
    void startObject(const XmlAttributes& attributes, std::size_t line) override {
        ModelRecord& record = m_records.emplace_back();
        record.className = textOf(attributes, "type");
        record.identifier = textOf(attributes, "id");
        record.line = line;
    }

    void startAttribute(const XmlAttributes& attributes) override {
        StringMap& map = m_records.back().attributes.emplace_back();
        map.reserve(attributes.size() + 1);
        for (const auto& [key, text] : attributes) {
            map.append(std::string(key), std::string(text)); // XML allows a name once per element
        }
    }

    void endAttribute(std::string_view text) override {
        m_records.back().attributes.back().set("value", std::string(text));
    }

    void relationship(const XmlAttributes& attributes) override {
        // Relationships are looked up by name, so one without a name can mean nothing.
        if (auto name = textOf(attributes, "name")) {
            m_records.back().relationships.insert_or_assign(std::move(*name), relationshipOf(attributes));
        }
    }

    void endObject() override {}

    [[nodiscard]] std::vector<ModelRecord> takeRecords() { return std::move(m_records); }

private:
    static ModelRelationship relationshipOf(const XmlAttributes& attributes) {
        ModelRelationship relationship{.type = textOf(attributes, "type"), .targets = {}};
        if (const auto references = attributeText(attributes, "idrefs")) {
            auto& targets = relationship.targets.emplace();
            splitAtBlanks(*references, [&](std::string_view target) { targets.emplace_back(target); });
        }
        return relationship;
    }

    std::vector<ModelRecord> m_records;
};

} // namespace

const std::vector<std::string>* ModelRecord::targets(std::string_view relationship) const {
    const auto found = relationships.find(relationship);
    return found == relationships.end() || !found->second.targets ? nullptr : &*found->second.targets;
}

std::optional<std::vector<ModelRecord>> dictionariesFromModelFile(const std::string& path) {
    if (path.empty()) return std::nullopt;
    std::optional<std::vector<ModelRecord>> records;
    (void)faultOfReading(path, [&] { records = readModelFile(path); });
    return records;
}

std::vector<ModelRecord> readModelFile(const std::string& path) {
    RecordCollector collector;
    streamModelObjects(path, collector);
    return collector.takeRecords();
}

} // namespace orrery

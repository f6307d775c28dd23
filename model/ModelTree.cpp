#include "model/ModelTree.h"

#include "model/ModelObjects.h"
#include "model/ModelTreeBuilder.h"
#include "platform/values/OrreryError.h"

#include <exception>
#include <utility>

namespace orrery {

namespace {

/// Hands the objects of a file to a builder. A file that is not a whole XML document is reported first, so what the
/// builder finds wrong waits until the end.
class BuildingHandler : public ModelObjectHandler {
public:
    explicit BuildingHandler(ModelTreeBuilder& builder) : m_builder(builder) {}

    void startObject(const XmlAttributes& attributes, std::size_t line) override {
        m_builder.startObject(attributeText(attributes, "type"), attributeText(attributes, "id"), line);
    }
    void startAttribute(const XmlAttributes& attributes) override {
        const auto name = attributeText(attributes, "name");
        m_named = name.has_value();
        m_name = name.value_or("");
    }
    void endAttribute(std::string_view text) override {
        if (m_named) m_builder.attribute(m_name, text);
    }
    void relationship(const XmlAttributes& attributes) override {
        if (const auto name = attributeText(attributes, "name")) {
            m_builder.relationship(*name, attributeText(attributes, "idrefs"));
        }
    }
    void endObject() override {
        if (m_failure) return;
        try {
            m_builder.endObject();
        } catch (const OrreryError&) {
            m_failure = std::current_exception();
        }
    }

    void throwFailure() const {
        if (m_failure) std::rethrow_exception(m_failure);
    }

private:
    ModelTreeBuilder& m_builder;
    std::exception_ptr m_failure;
    std::string m_name; // of the present attribute element
    bool m_named = false;
};

std::string joined(const std::vector<std::string>& targets) {
    std::string text;
    for (const std::string& target : targets) {
        text += (&target == &targets.front() ? "" : " ") + target;
    }
    return text;
}

void addRecord(ModelTreeBuilder& builder, const ModelRecord& record) {
    builder.startObject(record.className, record.identifier, record.line);
    for (const StringMap& attribute : record.attributes) {
        if (attribute.contains("name") && attribute.contains("value")) {
            builder.attribute(attribute.text("name"), attribute.text("value"));
        }
    }
    for (const auto& [name, relationship] : record.relationships) {
        if (relationship.targets) builder.relationship(name, joined(*relationship.targets));
    }
    builder.endObject();
}

} // namespace

ModelTree nodesFromDictionaries(std::vector<ModelRecord> records, const std::string& fileName) {
    ModelTreeBuilder builder(fileName);
    for (ModelRecord& record : records) {
        addRecord(builder, std::exchange(record, {})); // which frees its memory
    }
    return builder.build();
}

ModelTree nodesFromDictionaries(std::optional<std::vector<ModelRecord>> records, const std::string& fileName) {
    return records ? nodesFromDictionaries(std::move(*records), fileName) : ModelTree();
}

ModelTree readModelTree(const std::string& path, const ReadProgress& progress) {
    ModelTreeBuilder builder(path);
    BuildingHandler handler(builder);
    streamModelObjects(path, handler, progress);
    handler.throwFailure();
    return builder.build();
}

ImportedModel importModel(const std::string& path, const ReadProgress& progress) {
    if (path.empty()) return {};
    ModelTreeBuilder builder(path);
    BuildingHandler handler(builder);
    if (std::string fault = faultOfReading(path, [&] { streamModelObjects(path, handler, progress); });
        !fault.empty()) {
        return {{}, std::move(fault)};
    }
    handler.throwFailure();
    return {builder.build(), {}};
}

} // namespace orrery

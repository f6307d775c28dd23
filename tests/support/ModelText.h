#pragma once

#include <fmt/format.h>

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

namespace orrery::test {

using Attributes = std::vector<std::pair<std::string, std::string>>;

/// Writes the text of a small model: parts in one level, each with its ports. All outputs are recorded.
class ModelText {
public:
    struct Port {
        std::string name;
        Attributes attributes{};
        std::string source{}; // "Part/port" of an output, or an identifier
    };

    explicit ModelText(std::string level = "Root") : m_level(std::move(level)) {}

    ModelText& part(const std::string& className, const std::string& name, const std::vector<Port>& inputs,
                    const std::vector<Port>& outputs, const Attributes& attributes = {}) {
        m_parts.push_back(name);
        std::string relationships = relationship("parent", "root");
        relationships += relationship("inputs", ports("KSINPUT", name, inputs));
        relationships += relationship("outputs", ports("KSOUTPUT", name, outputs));
        m_objects += object(className, name, name, attributes, relationships);
        return *this;
    }

    [[nodiscard]] std::string text() const {
        std::string children;
        for (const std::string& part : m_parts) {
            children += (children.empty() ? "" : " ") + part;
        }
        return "<database>\n" + object("KSLEVEL", "root", m_level, {}, relationship("children", children)) + m_objects +
               "</database>\n";
    }

private:
    static std::string relationship(const std::string& name, const std::string& targets) {
        if (targets.empty()) {
            return {};
        }
        return "<relationship name=\"" + name + "\" type=\"0/0\" idrefs=\"" + targets + "\"/>";
    }

    static std::string object(const std::string& className, const std::string& identifier, const std::string& name,
                              const Attributes& attributes, const std::string& relationships) {
        std::string text = "<object type=\"" + className + "\" id=\"" + identifier + "\">";
        text += "<attribute name=\"name\">" + name + "</attribute>";
        for (const auto& [key, value] : attributes) {
            text += fmt::format("<attribute name=\"{}\"><![CDATA[{}]]></attribute>", key, value);
        }
        return text + relationships + "</object>\n";
    }

    std::string ports(const std::string& className, const std::string& part, const std::vector<Port>& ports) {
        std::string identifiers;
        for (const Port& port : ports) {
            std::string identifier = part + "/" + port.name;
            std::ranges::replace(identifier, ' ', '_');
            identifiers += (identifiers.empty() ? "" : " ") + identifier;
            Attributes attributes = port.attributes;
            if (className == "KSOUTPUT") {
                attributes.emplace_back("recordp", "1");
            }
            m_objects += object(className, identifier, port.name, attributes,
                                relationship("parent", part) + relationship("source", port.source));
        }
        return identifiers;
    }

    std::string m_level;
    std::vector<std::string> m_parts;
    std::string m_objects;
};

} // namespace orrery::test

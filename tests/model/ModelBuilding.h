#pragma once

#include "model/ModelTree.h"

#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace orrery {

/// A model object as a test writes it down: type, identifier, attributes, relationships (targets separated by blanks).
struct ObjectText {
    const char* type;
    const char* identifier;
    std::vector<std::pair<std::string, std::string>> attributes = {};
    std::vector<std::pair<std::string, std::string>> relationships = {};
};

inline std::vector<std::string> words(const std::string& text) {
    std::vector<std::string> found;
    std::istringstream stream(text + " ");
    for (std::string word; std::getline(stream, word, ' ');) {
        found.push_back(word);
    }
    return found;
}

inline std::vector<ModelRecord> records(const std::vector<ObjectText>& objects) {
    std::vector<ModelRecord> made;
    for (const ObjectText& object : objects) {
        ModelRecord& record = made.emplace_back();
        if (object.type != nullptr) record.className = object.type;
        if (object.identifier != nullptr) record.identifier = object.identifier;
        for (const auto& [name, value] : object.attributes) {
            record.attributes.push_back({{"name", name}, {"value", value}});
        }
        for (const auto& [name, targets] : object.relationships) {
            record.relationships[name].targets = words(targets);
        }
        record.line = made.size();
    }
    return made;
}

} // namespace orrery

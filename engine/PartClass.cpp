#include "engine/PartClass.h"

#include "platform/values/Quoted.h"

#include <algorithm>
#include <array>

namespace orrery::engine {

namespace {

std::string label(const char* kind, const std::string& path, std::string_view attribute) {
    std::string text = std::string(kind) + " " + quoted(path);
    if (!attribute.empty()) {
        text += ", attribute " + quoted(attribute);
    }
    return text;
}

} // namespace

PartClass partClass(const NetworkPart& part) {
    struct Row {
        std::string_view name;
        PartClass value;
    };
    static constexpr std::array rows{
        Row{"KSEXPRESSION", PartClass::Formula}, Row{"KSTVDD", PartClass::Delay},
        Row{"KS2DTVDD", PartClass::Delay},       Row{"KSHTL", PartClass::Lookup},
        Row{"KSLOOKUP", PartClass::Lookup},      Row{"KSRANDOM", PartClass::Random},
        Row{"KSWEATHER", PartClass::Weather},    Row{"KSFILE", PartClass::FileColumn},
        Row{"KSLEVEL", PartClass::Level},
    };
    const auto* const row = std::ranges::find(rows, part.className(), &Row::name);
    return row == rows.end() ? PartClass::Passing : row->value;
}

bool isComputed(const NetworkPart& part, const NetworkPort& output) {
    const auto given = [&](std::string_view key) { return !output.attribute(key).empty(); };
    switch (partClass(part)) {
    case PartClass::Formula:
        return given("expression") || given("rate");
    case PartClass::Delay:
        return !part.inputs.empty();
    case PartClass::Lookup:
        return given("table") || !part.attribute("table").empty();
    case PartClass::Random:
        return true;
    case PartClass::Weather:
        return given("mean");
    case PartClass::FileColumn:
        return !part.attribute("file").empty();
    case PartClass::Level:
    case PartClass::Passing:
        return false;
    }
    return false;
}

std::string portLabel(const NetworkPort& port, std::string_view attribute) {
    return label("port", port.path, attribute);
}

std::string partLabel(const NetworkPart& part, std::string_view attribute) {
    return label("part", part.path, attribute);
}

} // namespace orrery::engine

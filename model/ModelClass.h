#pragma once

#include <array>
#include <string_view>

namespace orrery {

enum class ModelNodeKind {
    Part,      ///< computes something; children: its two port groups
    Level,     ///< holds parts and levels, then its two port groups
    PortGroup, ///< record {"name": "inputs"} or {"name": "outputs"}; children: ports
    Port,      ///< no children
};

/// A class of model objects that become nodes of the tree.
struct ModelClass {
    std::string_view name; // as a model file says it in an object's "type"
    ModelNodeKind kind;
    const char* word;   // what people call it
    char letter = '\0'; // on the icon of a part
};

inline constexpr std::string_view levelClass = "KSLEVEL";
inline constexpr std::string_view inputClass = "KSINPUT";
inline constexpr std::string_view outputClass = "KSOUTPUT";

/// All of them; what is read, shown and drawn follows.
inline constexpr std::array modelClasses = {
    ModelClass{"KSEXPRESSION", ModelNodeKind::Part, "expression", 'f'},
    ModelClass{"KSTVDD", ModelNodeKind::Part, "time-varying distributed delay", 'D'},
    ModelClass{"KS2DTVDD", ModelNodeKind::Part, "two-dimensional distributed delay", '2'},
    ModelClass{"KSHTL", ModelNodeKind::Part, "HTL part", 'H'},
    ModelClass{levelClass, ModelNodeKind::Level, "level"},
    ModelClass{inputClass, ModelNodeKind::Port, "input port"},
    ModelClass{outputClass, ModelNodeKind::Port, "output port"},
    ModelClass{"KSLOOKUP", ModelNodeKind::Part, "lookup table", 'L'},
    ModelClass{"KSFILE", ModelNodeKind::Part, "file", 'F'},
    ModelClass{"KSINPUTSPLITTER", ModelNodeKind::Part, "input splitter", 'S'},
    ModelClass{"KSWEATHER", ModelNodeKind::Part, "weather", 'W'},
    ModelClass{"KSRANDOM", ModelNodeKind::Part, "random numbers", 'R'},
};

/// The class of that name. An object may lack one: an attribute called "class" takes the place of its type's name.
[[nodiscard]] constexpr const ModelClass* findModelClass(std::string_view name) {
    for (const ModelClass& each : modelClasses) {
        if (each.name == name) return &each;
    }
    return nullptr;
}

} // namespace orrery

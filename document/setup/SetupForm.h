#pragma once

#include "document/setup/SetupDictionary.h"

#include <array>
#include <optional>
#include <span>
#include <string>
#include <string_view>

/// What a setup holds, and its shape in the file.
namespace orrery::setup_form {

/// A value: its key in the dictionary or entry, its element in the file, and what the user calls it.
struct Field {
    std::string_view key;
    std::string_view element;
    std::string_view userWord;
};

/// What a setting is, which says how it is entered and how it is checked.
enum class Kind { ModelPath, Date, Number, Pair, Text };

/// In which documents a change of a setting counts as a change of the document.
enum class Counted { Nowhere, InOpenedOnes, Everywhere };

/// A value of the setup itself. Its reader, its writer, its observers, the tool's options, the checks before a run and
/// the setup tab follow this row; on the tab its control has the key as its name.
struct Setting : Field {
    Kind kind = Kind::Text;
    bool required = false; // in a file; its first element counts. Of the others exactly one must be there
    Counted counted = Counted::Everywhere;
    std::optional<std::string_view> atFirst = {};   // in a new setup
    std::optional<std::string_view> otherwise = {}; // where a file has not exactly one
    std::string_view countsAs = {};                 // what becomes of a text that is no number, in words
};

/// The settings in the order of the file.
inline constexpr std::array settings = {
    Setting{{setup_key::modelPath, "ModelPath", "model path"}, Kind::ModelPath, true},
    Setting{{setup_key::stepsPerDay, "StepsPerDay", "steps per day"},
            Kind::Number,
            false,
            Counted::Everywhere,
            "10",
            {},
            "0, so the run has no rows"},
    Setting{{setup_key::startDay, "StartDay", "start day"}, Kind::Date, false, Counted::InOpenedOnes},
    Setting{
        {setup_key::runLength, "RunLength", "run length"}, Kind::Number, true, Counted::Everywhere, "100", {}, "1 day"},
    Setting{{setup_key::reportStep, "ReportStep", "report step"},
            Kind::Number,
            true,
            Counted::Everywhere,
            "10",
            {},
            "0, so the run has no rows"},
    Setting{{setup_key::dimensions, "Dimensions", "dimensions"}, Kind::Pair, true, Counted::Everywhere, "{ 1, 1 }"},
    Setting{{setup_key::gcd, "GCD", "GCD"}, Kind::Text, false, Counted::Nowhere, {}, "0"},
};

/// The text of the setting's value; empty when it is absent.
[[nodiscard]] std::string settingText(const SetupDictionary& setup, const Setting& setting);

inline constexpr Field portPath{"portPath", "PortPath", "port"};
inline constexpr std::array outputFields = {portPath, Field{"outputPath", "OutputPathName", "result file"}};
inline constexpr std::array initializationFields = {portPath, Field{"coordinates", "Coordinates", "coordinates"},
                                                    Field{"value", "Value", "value"}};
inline constexpr std::array stepperFields = {portPath, Field{"start", "Start", "start"}, Field{"step", "Step", "step"},
                                             Field{"stop", "Stop", "stop"}};

/// A port list: one element per entry, holding the entry's fields in this order.
struct List {
    std::string_view key;
    std::string_view element;
    std::string_view userWord;
    std::span<const Field> fields;
    bool acceptsPartAndPort; // old files may name the port by "PartName" and "PortName"
};

/// The port lists in the order of the file.
inline constexpr std::array lists = {
    List{setup_key::outputs, "Output", "output", outputFields, true},
    List{setup_key::initializations, "Initialization", "initialization", initializationFields, true},
    List{setup_key::steppers, "Steppers", "stepper", stepperFields, false},
};

} // namespace orrery::setup_form

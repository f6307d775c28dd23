#pragma once

#include "document/setup/SetupDictionary.h"

#include <array>
#include <optional>
#include <span>
#include <string>
#include <string_view>

/// What a setup holds, and its shape in the file.
namespace orrery::setup_form {

/// A value of an entry: its key, its element in the file, and what the user calls it.
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
struct Setting {
    std::string_view key;
    std::string_view element;
    std::string_view userWord;
    Kind kind = Kind::Text;
    bool required = false; // in a file; its first element counts. Of the others exactly one must be there
    Counted counted = Counted::Everywhere;
    std::optional<std::string_view> atFirst = {};   // in a new setup
    std::optional<std::string_view> otherwise = {}; // where a file has not exactly one
    std::string_view countsAs = {};                 // what becomes of a text that is not a number, in words
};

/// The settings in the order of the file.
inline constexpr std::array settings = {
    Setting{.key = setup_key::modelPath,
            .element = "ModelPath",
            .userWord = "model path",
            .kind = Kind::ModelPath,
            .required = true},
    Setting{.key = setup_key::stepsPerDay,
            .element = "StepsPerDay",
            .userWord = "steps per day",
            .kind = Kind::Number,
            .atFirst = "10",
            .countsAs = "0, so the run has no rows"},
    Setting{.key = setup_key::startDay,
            .element = "StartDay",
            .userWord = "start day",
            .kind = Kind::Date,
            .counted = Counted::InOpenedOnes},
    Setting{.key = setup_key::runLength,
            .element = "RunLength",
            .userWord = "run length",
            .kind = Kind::Number,
            .required = true,
            .atFirst = "100",
            .countsAs = "1 day"},
    Setting{.key = setup_key::reportStep,
            .element = "ReportStep",
            .userWord = "report step",
            .kind = Kind::Number,
            .required = true,
            .atFirst = "10",
            .countsAs = "0, so the run has no rows"},
    Setting{.key = setup_key::dimensions,
            .element = "Dimensions",
            .userWord = "dimensions",
            .kind = Kind::Pair,
            .required = true,
            .atFirst = "{ 1, 1 }"},
    Setting{.key = setup_key::gcd, .element = "GCD", .userWord = "GCD", .counted = Counted::Nowhere, .otherwise = "0"},
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

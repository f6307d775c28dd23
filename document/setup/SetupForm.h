#pragma once

#include "document/setup/SetupDictionary.h"

#include <array>
#include <span>
#include <string_view>

/// The shape of the setup file, as its reader and its writer share it.
namespace orrery::setup_form {

/// A value: its key in the dictionary or entry, its element in the file, and what the user calls it.
struct Field {
    std::string_view key;
    std::string_view element;
    std::string_view userWord;
};

/// The settings in the order of the file.
inline constexpr std::array settings = {
    Field{setup_key::modelPath, "ModelPath", "model path"},
    Field{setup_key::stepsPerDay, "StepsPerDay", "steps per day"},
    Field{setup_key::startDay, "StartDay", "start day"},
    Field{setup_key::runLength, "RunLength", "run length"},
    Field{setup_key::reportStep, "ReportStep", "report step"},
    Field{setup_key::dimensions, "Dimensions", "dimensions"},
    Field{setup_key::gcd, "GCD", "GCD"},
};

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

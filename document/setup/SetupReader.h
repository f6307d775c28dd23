#pragma once

#include "document/setup/SetupDictionary.h"
#include "platform/xml/XmlDocument.h"

#include <string>
#include <string_view>

namespace orrery {

/// Builds a setup from the children of the document's root element, whose own name is not checked. Lenient where old
/// files need it: "Dt" (a step length in days) in place of "StepsPerDay", "PartName" and "PortName" in place of
/// "PortPath". Settings take the first element of their name, or need exactly one (GCD, StartDay, StepsPerDay, Dt);
/// fields of an entry take the last.
/// @param fileName for messages only
/// @throws OrreryError naming every missing one of ModelPath, Dimensions, RunLength and ReportStep. An empty document
///         (bytes that did not parse) gives GCD "0", the reference date and three empty lists.
[[nodiscard]] SetupDictionary setupFromXml(const XmlDocument& document, const std::string& fileName);

struct LoadedSetup {
    SetupDictionary dictionary;
    bool parsed = true; // false: the bytes were no XML document, and the dictionary is the one of an empty document
    std::string fault;  // why they did not parse, with the place
};

/// Reads a setup file's bytes. A byte order mark or a declared encoding is taken at its word; otherwise the bytes are
/// UTF-8 when they are valid UTF-8 and Mac OS Roman when not.
/// @throws OrreryError as setupFromXml; bytes that do not parse are no error, as `parsed` tells
[[nodiscard]] LoadedSetup readSetup(std::string_view bytes, const std::string& fileName);

} // namespace orrery

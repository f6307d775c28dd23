#pragma once

#include "document/setup/SetupDictionary.h"
#include "platform/xml/XmlDocument.h"

#include <string>

namespace orrery {

/// The setup as a tree: root "Simulation", the settings in a fixed order, then all outputs, all initializations and
/// all steppers in list order. Every element is written, also for an absent value. Values as held.
[[nodiscard]] XmlDocument setupToXml(const SetupDictionary& setup);

/// The setup file's bytes: the tree as compact XML without a declaration, in Mac OS Roman. Where those bytes would be
/// valid UTF-8 as well, a reader could not tell them apart, so characters outside ASCII become references there.
/// @param fileName for messages only
/// @throws OrreryError naming the field and the character that Mac OS Roman (or XML) lacks
[[nodiscard]] std::string setupFileBytes(const SetupDictionary& setup, const std::string& fileName);

} // namespace orrery

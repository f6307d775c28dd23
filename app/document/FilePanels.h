#pragma once

#include "platform/UserDefaults.h"

#include <functional>
#include <string>
#include <vector>

class QWidget;

namespace orrery {

/// The panel that asks for setups to open, as a sheet of the window. `chosen` comes later with one or more paths, and
/// never when the user cancels. It starts in the folder that was used last.
void beginOpenSetupPanel(QWidget* window, UserDefaults& defaults,
                         std::function<void(const std::vector<std::string>&)> chosen);

/// The panel that asks where to save a setup; overwriting is asked by the panel. `answered` comes once, later, with
/// the path, or with the empty text when the user cancels. `suggestion`: a path or just a name.
void beginSaveSetupPanel(QWidget* window, UserDefaults& defaults, const std::string& suggestion,
                         std::function<void(const std::string&)> answered);

/// The same for results files, which have a folder of their own.
void beginOpenResultsPanel(QWidget* window, UserDefaults& defaults,
                           std::function<void(const std::vector<std::string>&)> chosen);
void beginSaveResultsPanel(QWidget* window, UserDefaults& defaults, const std::string& suggestion,
                           std::function<void(const std::string&)> answered);

} // namespace orrery

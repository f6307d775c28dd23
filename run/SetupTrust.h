#pragma once

#include "document/setup/SetupDictionary.h"
#include "platform/UserDefaults.h"

#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace orrery {

/// Setup files whose runs may write over files outside their own folder unasked: those that this user's Orrery wrote,
/// and those that the user has allowed. They are known by a hash of their bytes, kept under the user default
/// "trustedSetups", the last 500 of them; so a file that someone else has changed is not known any more.
class SetupTrust {
public:
    /// Without defaults nothing is known and nothing kept. They are not owned.
    explicit SetupTrust(UserDefaults* defaults) : m_defaults(defaults) {}

    [[nodiscard]] bool knows(std::string_view setupBytes) const;
    void add(std::string_view setupBytes);

private:
    UserDefaults* m_defaults;
};

/// The result files that a run of the setup writes outside the folder of the setup's file, links followed: only where
/// its dimensions are not (1, 1), a relative path seen from that folder.
[[nodiscard]] std::vector<std::string> outputsOutside(const SetupDictionary& setup, const std::string& setupPath);

/// Whether the setup file may be run as it is now. `ask` is called with the existing files that would be written over
/// when the file is not known; it is known from then on where the answer is yes, and where there was nothing to ask.
[[nodiscard]] bool mayRunSetup(SetupTrust& trust, const std::string& setupPath,
                               const std::function<bool(const std::vector<std::string>& files)>& ask);

} // namespace orrery

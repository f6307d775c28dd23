#pragma once

#include "platform/UserDefaults.h"

#include <cstddef>
#include <string>
#include <vector>

namespace orrery {

/// The setups that were opened or saved last, most recent first, kept in the user defaults as URLs, one a line.
class RecentDocuments {
public:
    static constexpr std::size_t longest = 10;

    explicit RecentDocuments(UserDefaults& defaults) : m_defaults(defaults) {}

    [[nodiscard]] std::vector<std::string> paths() const; // those whose files are still there
    void note(const std::string& path);                   // now the most recent one
    void clear();

private:
    UserDefaults& m_defaults;
};

} // namespace orrery

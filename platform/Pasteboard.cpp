#include "platform/Pasteboard.h"

#include <algorithm>

namespace orrery {

void MemoryPasteboard::declareTypes(const std::vector<std::string>& types) {
    m_types = types;
    m_data.assign(types.size(), {});
}

void MemoryPasteboard::setData(std::string_view data, const std::string& type) {
    const auto found = std::ranges::find(m_types, type);
    if (found == m_types.end()) return; // only what was declared can be carried
    m_data[static_cast<std::size_t>(found - m_types.begin())] = data;
}

std::vector<std::string> MemoryPasteboard::types() const {
    return m_types;
}

std::string MemoryPasteboard::dataForType(const std::string& type) const {
    const auto found = std::ranges::find(m_types, type);
    return found == m_types.end() ? std::string() : m_data[static_cast<std::size_t>(found - m_types.begin())];
}

} // namespace orrery

#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace orrery {

/// What an engine printed, for the record of its run: all of it, or its first and last part where it printed more than
/// anybody will read.
class EngineText {
public:
    static constexpr std::size_t headBytes = 1U << 20U;
    static constexpr std::size_t tailBytes = 15U << 20U;

    void append(std::string_view text);
    /// With a line that says how much was left out.
    [[nodiscard]] std::string text() const;

private:
    std::string m_head;
    std::string m_tail; // grows to twice its length before it is cut
    std::size_t m_leftOut = 0;
};

} // namespace orrery

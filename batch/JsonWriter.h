#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace orrery {

class Output;

/// Writes one JSON text as it goes, so that a million numbers need no tree in memory.
///
/// Floats are the shortest text that reads back as the same single, null when not finite. Text that is not UTF-8 has
/// its malformed bytes replaced by U+FFFD. Arrays and objects must be closed in the order in which they were opened.
class JsonWriter {
public:
    explicit JsonWriter(Output& output) : m_output(output) {}

    void beginObject() { begin('{'); }
    void endObject() { end('}'); }
    void beginArray() { begin('['); }
    void endArray() { end(']'); }
    void key(std::string_view name);

    void value(std::string_view text);
    void value(const char* text) { value(std::string_view(text)); }
    void value(float number);
    void value(std::uint32_t number);
    void value(std::uint64_t number); // exact for readers up to 2 to the power of 53
    void value(bool flag);
    void values(std::span<const float> numbers);         // as an array
    void values(std::span<const std::uint32_t> numbers); // as an array
    void values(const std::vector<std::string>& texts);  // as an array

    template <typename Value>
    void member(std::string_view name, const Value& content) {
        key(name);
        value(content);
    }

private:
    void begin(char bracket);
    void end(char bracket);
    void separate();

    Output& m_output;
    bool m_first = true; // nothing stands before the next item in its array or object
};

} // namespace orrery

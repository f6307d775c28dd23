#include "batch/JsonWriter.h"

#include "batch/Output.h"

#include <nlohmann/json.hpp>

#include <array>
#include <charconv>
#include <cmath>

namespace orrery {
namespace {

template <typename Number>
void writeNumber(Output& output, Number number) {
    std::array<char, 32> text{};
    const auto result = std::to_chars(text.data(), text.data() + text.size(), number);
    output.write({text.data(), result.ptr});
}

} // namespace

void JsonWriter::key(std::string_view name) {
    value(name);
    m_output.write(":");
    m_first = true; // its value follows without a comma
}

void JsonWriter::value(std::string_view text) {
    separate();
    m_output.write(nlohmann::json(text).dump(-1, ' ', false, nlohmann::json::error_handler_t::replace));
}

void JsonWriter::value(float number) {
    separate();
    if (!std::isfinite(number)) {
        m_output.write("null");
    } else if (number == 0 && std::signbit(number)) {
        m_output.write("-0.0"); // readers take "-0" for an integer, which has no sign
    } else {
        writeNumber(m_output, number);
    }
}

void JsonWriter::value(std::uint32_t number) {
    separate();
    writeNumber(m_output, number);
}

void JsonWriter::value(std::uint64_t number) {
    separate();
    writeNumber(m_output, number);
}

void JsonWriter::value(bool flag) {
    separate();
    m_output.write(flag ? "true" : "false");
}

void JsonWriter::values(std::span<const float> numbers) {
    beginArray();
    for (const float number : numbers) {
        value(number);
    }
    endArray();
}

void JsonWriter::values(std::span<const std::uint32_t> numbers) {
    beginArray();
    for (const std::uint32_t number : numbers) {
        value(number);
    }
    endArray();
}

void JsonWriter::values(const std::vector<std::string>& texts) {
    beginArray();
    for (const std::string& text : texts) {
        value(text);
    }
    endArray();
}

void JsonWriter::begin(char bracket) {
    separate();
    m_output.write({&bracket, 1});
    m_first = true;
}

void JsonWriter::end(char bracket) {
    m_output.write({&bracket, 1});
    m_first = false;
}

void JsonWriter::separate() {
    if (!m_first) {
        m_output.write(",");
    }
    m_first = false;
}

} // namespace orrery

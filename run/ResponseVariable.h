#pragma once

#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <variant>

namespace orrery {

/// A colour in the device's colour space, components 0 … 1.
struct Color {
    float red = 0;
    float green = 0;
    float blue = 0;
    float alpha = 1;
    friend bool operator==(const Color&, const Color&) = default;
};

/// The colour of hue, saturation and brightness (each 0 … 1; hue 0 and 1 are red).
[[nodiscard]] Color colorFromHsb(float hue, float saturation, float brightness, float alpha);

/// A response variable: one recorded quantity, a record with the keys
///   "name" (text), "id" (text), "includep" (drawn or not), "scale" (float factor) and "color".
/// Its position in its list is its column in the result rows. Copies are the same record: where a label stands twice in
/// a table's header, both columns are drawn, scaled and coloured together.
class ResponseVariable {
public:
    using Value = std::variant<std::string, bool, float, Color>;

    ResponseVariable() : ResponseVariable(std::string(), std::string()) {}
    /// Not drawn, scale 1, black.
    ResponseVariable(std::string name, std::string identifier);

    /// The value under one of the keys above. @throws AssertionFailure for any other key
    [[nodiscard]] const Value& value(std::string_view key) const;
    /// Replaces the value under the key. @throws AssertionFailure for another key or a value of another type
    void setValue(std::string_view key, Value value);

    [[nodiscard]] const std::string& name() const { return std::get<std::string>(value("name")); }
    [[nodiscard]] const std::string& identifier() const { return std::get<std::string>(value("id")); }
    [[nodiscard]] bool includep() const { return std::get<bool>(value("includep")); }
    [[nodiscard]] float scale() const { return std::get<float>(value("scale")); }
    [[nodiscard]] const Color& color() const { return std::get<Color>(value("color")); }

private:
    using Values = std::map<std::string, Value, std::less<>>;
    std::shared_ptr<Values> m_values;
};

} // namespace orrery

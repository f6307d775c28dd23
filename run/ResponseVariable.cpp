#include "run/ResponseVariable.h"

#include "platform/values/OrreryError.h"

#include <array>
#include <cmath>

namespace orrery {

Color colorFromHsb(float hue, float saturation, float brightness, float alpha) {
    const float sixths = (hue - std::floor(hue)) * 6.0F;
    const float sector = std::floor(sixths);
    const float fraction = sixths - sector;
    const float low = brightness * (1.0F - saturation);
    const float falling = brightness * (1.0F - saturation * fraction);
    const float rising = brightness * (1.0F - saturation * (1.0F - fraction));
    const std::array<Color, 6> bySector = {{{brightness, rising, low, alpha},
                                            {falling, brightness, low, alpha},
                                            {low, brightness, rising, alpha},
                                            {low, falling, brightness, alpha},
                                            {rising, low, brightness, alpha},
                                            {brightness, low, falling, alpha}}};
    return bySector.at(static_cast<std::size_t>(sector) % bySector.size());
}

ResponseVariable::ResponseVariable(std::string name, std::string identifier)
    : m_values(std::make_shared<Values>(Values{{"name", std::move(name)},
                                               {"id", std::move(identifier)},
                                               {"includep", false},
                                               {"scale", 1.0F},
                                               {"color", Color{}}})) {}

const ResponseVariable::Value& ResponseVariable::value(std::string_view key) const {
    const auto found = m_values->find(key);
    if (found == m_values->end()) {
        throw AssertionFailure("A response variable has no \"" + std::string(key) + "\".");
    }
    return found->second;
}

void ResponseVariable::setValue(std::string_view key, Value value) {
    const auto found = m_values->find(key);
    if (found == m_values->end() || found->second.index() != value.index()) {
        throw AssertionFailure("A response variable has no \"" + std::string(key) + "\" of that type.");
    }
    found->second = std::move(value);
}

} // namespace orrery

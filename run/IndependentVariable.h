#pragma once

#include <cstdint>
#include <string>
#include <utility>

namespace orrery {

/// A sweep variable: one axis of the grid that the engine sweeps.
///
/// Its value at index i is start + i × step, for i from 0 to stridesPerCycle − 1; two rows of the result table that
/// differ by one step of it alone lie `stride` rows apart.
class IndependentVariable {
public:
    [[nodiscard]] const std::string& name() const { return m_name; } // "day", or the stepper's port path
    [[nodiscard]] float start() const { return m_start; }
    [[nodiscard]] float stop() const { return m_stop; } // no count or index uses it
    [[nodiscard]] float step() const { return m_step; }
    [[nodiscard]] float constant() const { return m_constant; } // the value at which it is held off the axes
    [[nodiscard]] std::uint32_t stride() const { return m_stride; }
    [[nodiscard]] std::uint32_t stridesPerCycle() const { return m_stridesPerCycle; } // the number of values
    [[nodiscard]] std::uint32_t function() const { return m_function; } // 0 held at constant, 1 or 2 on a plot axis
    [[nodiscard]] std::uint32_t userOrder() const { return m_userOrder; }

    void setName(std::string name) { m_name = std::move(name); }
    void setStart(float start) { m_start = start; }
    void setStop(float stop) { m_stop = stop; }
    void setStep(float step) { m_step = step; }
    void setConstant(float constant) { m_constant = constant; }
    void setStride(std::uint32_t stride) { m_stride = stride; }
    void setStridesPerCycle(std::uint32_t count) { m_stridesPerCycle = count; }
    void setFunction(std::uint32_t function) { m_function = function; }
    void setUserOrder(std::uint32_t order) { m_userOrder = order; }

    [[nodiscard]] bool onAxis() const { return m_function == 1 || m_function == 2; }

private:
    std::string m_name;
    float m_start = 0;
    float m_stop = 0;
    float m_step = 0;
    float m_constant = 0;
    std::uint32_t m_stride = 0;
    std::uint32_t m_stridesPerCycle = 0;
    std::uint32_t m_function = 0;
    std::uint32_t m_userOrder = 0;
};

} // namespace orrery

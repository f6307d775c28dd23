#pragma once

#include <cstdint>
#include <string>
#include <utility>

namespace orrery {

/// What a sweep variable is to a plot. A variable may hold other values, which mean none of these.
enum class PlotRole : std::uint32_t {
    Held = 0, // at its constant
    Axis1 = 1,
    Axis2 = 2
};

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
    [[nodiscard]] PlotRole function() const { return m_function; }
    [[nodiscard]] std::uint32_t userOrder() const { return m_userOrder; }

    void setName(std::string name) { m_name = std::move(name); }
    void setStart(float start) { m_start = start; }
    void setStop(float stop) { m_stop = stop; }
    void setStep(float step) { m_step = step; }
    void setConstant(float constant) { m_constant = constant; }
    void setStride(std::uint32_t stride) { m_stride = stride; }
    void setStridesPerCycle(std::uint32_t count) { m_stridesPerCycle = count; }
    void setFunction(PlotRole function) { m_function = function; }
    void setUserOrder(std::uint32_t order) { m_userOrder = order; }

    [[nodiscard]] bool onAxis() const { return m_function == PlotRole::Axis1 || m_function == PlotRole::Axis2; }

private:
    std::string m_name;
    float m_start = 0;
    float m_stop = 0;
    float m_step = 0;
    float m_constant = 0;
    std::uint32_t m_stride = 0;
    std::uint32_t m_stridesPerCycle = 0;
    PlotRole m_function = PlotRole::Held;
    std::uint32_t m_userOrder = 0;
};

} // namespace orrery

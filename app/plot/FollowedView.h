#pragma once

#include <functional>
#include <utility>

namespace orrery {

/// A plot view that also tells when a redraw is asked for, which every change to the plot and its camera does.
template <typename View>
class FollowedView : public View {
public:
    template <typename... Arguments>
    explicit FollowedView(std::function<void()> changed, Arguments&&... arguments)
        : View(std::forward<Arguments>(arguments)...), m_changed(std::move(changed)) {}

    void setNeedsDisplay() override {
        View::setNeedsDisplay();
        m_changed();
    }

private:
    std::function<void()> m_changed;
};

} // namespace orrery

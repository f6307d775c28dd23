#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// What a document says to its window, in the document's own words. A window implements these, a test records them,
/// and a document without a window has none.
namespace orrery {

/// Text that comes bit by bit.
class StatusView {
public:
    virtual ~StatusView() = default;
    virtual void setString(std::string_view text) = 0;
    virtual void appendString(std::string_view text) = 0; // arrival order, may split a line
    virtual void setNeedsDisplay() = 0;
};

/// Turns while something of unknown length goes on.
class ProgressWheel {
public:
    virtual ~ProgressWheel() = default;
    virtual void startAnimation() = 0;
    virtual void stopAnimation() = 0;
};

enum class ButtonState { Mixed = -1, Off = 0, On = 1 };

/// A button that stays on or off; a click changes its state before the action is sent.
class TwoStateButton {
public:
    virtual ~TwoStateButton() = default;
    [[nodiscard]] virtual ButtonState state() const = 0;
    virtual void setState(ButtonState state) = 0;
    virtual void setEnabled(bool enabled) = 0;
};

/// A slider; the rotation slider's maximum is the length of a full turn.
class Slider {
public:
    virtual ~Slider() = default;
    [[nodiscard]] virtual double maxValue() const = 0;
    virtual void setNeedsDisplay() = 0;
};

/// A table or outline that shows a list of the document's.
class ListView {
public:
    virtual ~ListView() = default;
    virtual void reloadData() = 0;                                     // the list changed
    virtual void selectRows(const std::vector<std::size_t>& rows) = 0; // exactly these
};

/// The controls in the row of a sweep variable, by their tags.
enum class SettingsTag : int { HeldField = 1, HeldSlider = 2, RoleChooser = 3 };

/// The rows of the sweep or response variables, one per variable in list order.
class SettingsRows {
public:
    virtual ~SettingsRows() = default;
    virtual void reloadData() = 0;
    virtual void setControlEnabled(std::size_t row, SettingsTag tag, bool enabled) = 0;
};

/// Keeps the window alive while the main thread waits for a calculation: after a moment it shows how far that is, and
/// takes Cancel. It lets nothing else in.
class WaitPanel {
public:
    virtual ~WaitPanel() = default;
    virtual void begin(std::string_view what) = 0;
    /// To be called often; returns at once while there is nothing to show. False when the user has cancelled.
    [[nodiscard]] virtual bool update(double fractionDone) = 0;
    virtual void end() = 0;
};

/// A wait on a panel, from begin to end.
class PanelWait {
public:
    PanelWait(WaitPanel& panel, std::string_view what) : m_panel(panel) { m_panel.begin(what); }
    PanelWait(const PanelWait&) = delete;
    PanelWait& operator=(const PanelWait&) = delete;
    ~PanelWait() { m_panel.end(); }

private:
    WaitPanel& m_panel;
};

/// What the icon of an alert says: something to know, a choice without danger, something that failed or may be lost,
/// something that was lost or ends the program.
enum class Severity { Information, Question, Warning, Critical };

/// A question or message. Buttons count from 0 in the order given.
struct AlertText {
    std::string message;
    std::string informative;
    std::vector<std::string> buttons = {"OK"};
    Severity severity = Severity::Warning;
    std::optional<std::size_t> safeButton{}; // the one for Return; "Cancel" if there is one, else the last
    std::string matter{};                    // a window has one sheet about it at a time; by default the message
};

/// Messages to the person at the window.
class Alerts {
public:
    virtual ~Alerts() = default;
    /// Asks and waits for the answer; the application takes nothing else meanwhile. Returns the button's number.
    [[nodiscard]] virtual std::size_t runModal(const AlertText& text) = 0;
    /// Shows a sheet on the document's window and returns at once; `answered` comes later with the button's number, and
    /// with that of Escape when another question about the same matter takes its place.
    virtual void beginSheet(const AlertText& text, std::function<void(std::size_t)> answered) = 0;
    /// Asks for the user's attention once, when the application is not active.
    virtual void requestUserAttention() = 0;
};

/// What an open panel is asked to allow: one file.
struct OpenPanelRequest {
    std::vector<std::string> fileTypes; // endings without the dot, in order
};

class OpenPanel {
public:
    virtual ~OpenPanel() = default;
    /// Shows the panel as a sheet; `chosen` comes later with the path, and never when the user cancels.
    virtual void beginSheet(const OpenPanelRequest& request, std::function<void(const std::string&)> chosen) = 0;
};

/// Stands in for the parts that a window does not have: takes everything, shows nothing and answers nothing.
class SilentOutlet final : public StatusView,
                           public ProgressWheel,
                           public TwoStateButton,
                           public Slider,
                           public ListView,
                           public SettingsRows,
                           public OpenPanel {
public:
    void setString(std::string_view /*text*/) override {}
    void appendString(std::string_view /*text*/) override {}
    void setNeedsDisplay() override {}
    void startAnimation() override {}
    void stopAnimation() override {}
    [[nodiscard]] ButtonState state() const override { return ButtonState::Mixed; }
    void setState(ButtonState /*state*/) override {}
    void setEnabled(bool /*enabled*/) override {}
    [[nodiscard]] double maxValue() const override { return 360; } // a full turn, in degrees
    void reloadData() override {}
    void selectRows(const std::vector<std::size_t>& /*rows*/) override {}
    void setControlEnabled(std::size_t /*row*/, SettingsTag /*tag*/, bool /*enabled*/) override {}
    void beginSheet(const OpenPanelRequest& /*request*/, std::function<void(const std::string&)> /*chosen*/) override {}
};

/// It holds nothing, so one does for all.
inline SilentOutlet& silentOutlet() {
    static SilentOutlet silent;
    return silent;
}

} // namespace orrery

#pragma once

#include "document/MyDocument.h"
#include "platform/ChildProcess.h"
#include "platform/Log.h"
#include "platform/RunLoop.h"
#include "support/ModelText.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace orrery::test {

/// A child that does what the test says. It outlives its wrapper, so a test can look at it afterwards.
struct FakeChildState {
    std::vector<std::string> command;
    ChildProcess::Events events;
    std::string pending; // in the pipe
    bool listening = true;
    bool terminated = false;

    void write(const std::string& text) {
        if (listening) events.output(std::as_bytes(std::span(text)));
    }
    void end(const ProcessEnd& how = {ProcessEnd::Kind::Exited, 0}) {
        if (listening) events.ended(how);
        if (listening) events.endOfOutput();
    }
};

class FakeChild : public ChildProcess {
public:
    explicit FakeChild(std::shared_ptr<FakeChildState> state) : m_state(std::move(state)) {}
    void start(const std::vector<std::string>& command, Events events) override {
        m_state->command = command;
        m_state->events = std::move(events);
    }
    void drain() override { m_state->write(std::exchange(m_state->pending, "")); }
    void stopListening() override { m_state->listening = false; }
    void terminate() override { m_state->terminated = true; }

private:
    std::shared_ptr<FakeChildState> m_state;
};

class FakeLauncher : public ChildProcessLauncher {
public:
    std::unique_ptr<ChildProcess> makeChildProcess(std::string_view /*name*/) override {
        children.push_back(std::make_shared<FakeChildState>());
        return std::make_unique<FakeChild>(children.back());
    }
    FakeChildState& last() { return *children.back(); }
    std::vector<std::shared_ptr<FakeChildState>> children;
};

/// A loop whose timers go off when the test says so.
class ManualRunLoop : public RunLoop {
public:
    std::unique_ptr<Source> repeat(std::chrono::nanoseconds interval, std::function<void()> callback) override {
        return add(interval, std::move(callback));
    }
    std::unique_ptr<Source> after(std::chrono::nanoseconds delay, std::function<void()> callback) override {
        return add(delay, std::move(callback));
    }
    std::unique_ptr<Source> watchReadable(int /*descriptor*/, std::function<void()> callback) override {
        return add({}, std::move(callback));
    }
    void tick() {
        for (const auto& timer : std::vector(timers)) {
            if (auto live = timer.lock()) (*live)();
        }
    }
    [[nodiscard]] std::size_t liveTimers() const {
        return static_cast<std::size_t>(std::ranges::count_if(timers, [](const auto& t) { return !t.expired(); }));
    }
    std::vector<std::weak_ptr<std::function<void()>>> timers;
    std::vector<std::chrono::nanoseconds> intervals;
    bool lastRests = false; // the timer that was last told to rest or wake

private:
    struct Timer : Source {
        explicit Timer(bool& isResting) : resting(isResting) {}
        void setResting(bool isResting) override { resting = isResting; }
        std::shared_ptr<std::function<void()>> callback;
        bool& resting;
    };
    std::unique_ptr<Source> add(std::chrono::nanoseconds interval, std::function<void()> callback) {
        auto timer = std::make_unique<Timer>(lastRests);
        timer->callback = std::make_shared<std::function<void()>>(std::move(callback));
        timers.push_back(timer->callback);
        intervals.push_back(interval);
        return timer;
    }
};

/// Records what a document says to its window, and answers for the person at it.
struct RecordingWindow : StatusView, ProgressWheel, TwoStateButton, Alerts, Slider, SettingsRows {
    std::string status;
    bool wheelTurns = false;
    ButtonState button = ButtonState::Off;
    bool buttonEnabled = false;
    std::vector<AlertText> alerts;
    std::vector<AlertText> sheets;
    std::function<void(std::size_t)> sheetAnswer;
    std::size_t modalAnswer = 0;
    unsigned attention = 0;
    std::vector<std::string> controls; // "row.tag on" or "row.tag off"

    void setString(std::string_view text) override { status = text; }
    void appendString(std::string_view text) override { status += text; }
    void setNeedsDisplay() override {}
    void startAnimation() override { wheelTurns = true; }
    void stopAnimation() override { wheelTurns = false; }
    [[nodiscard]] ButtonState state() const override { return button; }
    void setState(ButtonState state) override { button = state; }
    void setEnabled(bool enabled) override { buttonEnabled = enabled; }
    [[nodiscard]] std::size_t runModal(const AlertText& text) override {
        alerts.push_back(text);
        return modalAnswer;
    }
    void beginSheet(const AlertText& text, std::function<void(std::size_t)> answered) override {
        sheets.push_back(text);
        sheetAnswer = std::move(answered);
    }
    void requestUserAttention() override { ++attention; }
    [[nodiscard]] double maxValue() const override { return 360; }
    void reloadData() override {}
    void setControlEnabled(std::size_t row, SettingsTag tag, bool enabled) override {
        controls.push_back(std::to_string(row) + "." + std::to_string(static_cast<int>(tag)) +
                           (enabled ? " on" : " off"));
    }
};

/// Counts the waits that are shown, and cancels them when the test says so.
struct CancellablePanel : WaitPanel {
    void begin(std::string_view) override { ++open; }
    bool update(double) override { return !cancels; }
    void end() override { --open; }
    int open = 0;
    bool cancels = false;
};

/// A document with a recorded window, a fake engine and folders of its own.
class DocumentTest : public testing::Test {
public:
    ~DocumentTest() override { setLogSink({}); }

protected:
    DocumentTest() {
        setLogSink([this](std::string_view line) { log.emplace_back(line); });
    }

    DocumentServices services() {
        DocumentServices services;
        services.run.launcher = &launcher;
        services.run.runLoop = &loop;
        services.run.enginePath = [this] { return enginePath; };
        services.run.temporaryDirectory = temporary.path();
        services.userDefaults = &defaults;
        return services;
    }
    /// Shows the document in the recorded window.
    void show(MyDocument& shown, WaitPanel* panel = nullptr) {
        DocumentOutlets outlets;
        outlets.statusView = &window;
        outlets.progressWheel = &window;
        outlets.startStopButton = &window;
        outlets.alerts = &window;
        outlets.yRotationSlider = &window;
        outlets.independentVariableSettings = &window;
        outlets.glView = &plot;
        outlets.waitPanel = panel;
        shown.setOutlets(outlets);
    }

    TemporaryFolder temporary; // the engine's temporary directory
    TemporaryFolder files;
    FakeLauncher launcher;
    ManualRunLoop loop;
    MemoryUserDefaults defaults;
    RecordingWindow window;
    StoredPlotView plot;
    std::optional<std::string> enginePath = "/opt/engine/Zephyr";
    std::vector<std::string> log;
    MyDocument document{services()};
};

/// A model of one level "Field" with the part "Crop" and its recorded outputs "biomass" and "yield".
inline const std::string cropModel =
    ModelText("Field")
        .part("KSEXPRESSION", "Crop", {{"rain"}}, {{"biomass", {{"varid", "1"}}}, {"yield", {{"varid", "2"}}}})
        .text();

/// A shown document: a crop setup of 2 (rain) × 3 (day) rows.
class CropTest : public DocumentTest {
protected:
    CropTest() {
        document.readFromFile(files.write(
            "crop.orrery", "<Simulation><ModelPath>" + files.write("crop.xml", cropModel) +
                               "</ModelPath><Dimensions>{1,1}</Dimensions><RunLength>3</RunLength>"
                               "<ReportStep>10</ReportStep><StepsPerDay>10</StepsPerDay><Steppers><PortPath>"
                               "/Field/Crop/rain</PortPath><Start>0</Start><Step>1</Step><Stop>1</Stop>"
                               "</Steppers></Simulation>"));
        show(document);
        document.awakeFromNib();
    }
};

/// With results of two responses.
class ResultsTest : public CropTest {
protected:
    ResultsTest() {
        temporary.write("Zephyr.txt", "a\tb\tc\tbiomass\tyield\n0 0 1\t1\t10\n0 0 2\t2\t20\n0 0 3\t4\t40\n"
                                      "0 1 1\t1\t5\n0 1 2\t2\t6\n0 1 3\t3\t7\n");
        document.reading().build();
    }
};

} // namespace orrery::test

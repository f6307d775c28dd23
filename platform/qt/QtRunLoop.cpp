#include "platform/qt/QtRunLoop.h"

#include "platform/qt/FailureEdge.h"

#include <QSocketNotifier>
#include <QTimer>
#include <algorithm>

namespace orrery {
namespace {

int pauses = 0; // main thread only
constexpr auto retryInterval = std::chrono::milliseconds(20);

/// Shared, so that a callback that destroys its own source runs to its end.
using Callback = std::shared_ptr<const std::function<void()>>;

/// No exception may cross Qt's loop.
void call(const Callback& callback) noexcept {
    const Callback keep = callback; // NOLINT(performance-unnecessary-copy-initialization)
    try {
        (*keep)();
    } catch (...) {
        reportFailure();
    }
}

Callback shared(std::function<void()> callback) {
    return std::make_shared<const std::function<void()>>(std::move(callback));
}

/// Qt's timers count whole milliseconds; each is set for what is left until the next point of an even raster, so that
/// 1/60 s comes out right on average. Points that were missed are left out.
class TimerSource : public RunLoop::Source {
public:
    TimerSource(std::chrono::nanoseconds interval, bool repeats, std::function<void()> callback)
        : m_interval(std::max<std::chrono::nanoseconds>(interval, {})), m_next(Clock::now() + m_interval) {
        m_timer.setTimerType(Qt::PreciseTimer);
        m_timer.setSingleShot(true);
        QObject::connect(&m_timer, &QTimer::timeout, [this, repeats, callback = shared(std::move(callback))] {
            if (pauses > 0) {
                m_timer.start(retryInterval);
                return;
            }
            if (repeats) advance();
            call(callback); // last: it may destroy this
        });
        startTimer();
    }

    void setResting(bool resting) override {
        if (resting) {
            m_timer.stop();
        } else if (!m_timer.isActive()) {
            m_next = Clock::now() + m_interval;
            startTimer();
        }
    }

private:
    using Clock = std::chrono::steady_clock;

    void advance() {
        m_next = std::max(m_next + m_interval, Clock::now());
        startTimer();
    }
    void startTimer() {
        const auto left = std::chrono::round<std::chrono::milliseconds>(m_next - Clock::now());
        m_timer.start(std::max(left, std::chrono::milliseconds(0)));
    }

    std::chrono::nanoseconds m_interval;
    Clock::time_point m_next;
    QTimer m_timer;
};

class ReadableSource : public RunLoop::Source {
public:
    ReadableSource(int descriptor, std::function<void()> callback) : m_notifier(descriptor, QSocketNotifier::Read) {
        QObject::connect(&m_notifier, &QSocketNotifier::activated,
                         [callback = shared(std::move(callback))] { call(callback); });
    }

private:
    QSocketNotifier m_notifier;
};

} // namespace

QtRunLoop::Pause::Pause() {
    ++pauses;
}

QtRunLoop::Pause::~Pause() {
    --pauses;
}

std::unique_ptr<RunLoop::Source> QtRunLoop::repeat(std::chrono::nanoseconds interval, std::function<void()> callback) {
    return std::make_unique<TimerSource>(interval, true, std::move(callback));
}

std::unique_ptr<RunLoop::Source> QtRunLoop::after(std::chrono::nanoseconds delay, std::function<void()> callback) {
    return std::make_unique<TimerSource>(delay, false, std::move(callback));
}

std::unique_ptr<RunLoop::Source> QtRunLoop::watchReadable(int descriptor, std::function<void()> callback) {
    return std::make_unique<ReadableSource>(descriptor, std::move(callback));
}

} // namespace orrery

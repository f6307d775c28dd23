#include "log/LogFile.h"
#include "log/qt/LogPanel.h"
#include "log/qt/LogView.h"
#include "platform/qt/QtWaitPanel.h"

#include <benchmark/benchmark.h>

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <algorithm>
#include <cstdlib>
#include <string>

namespace orrery {
namespace {

std::string piece() {
    std::string text;
    for (int i = 0; text.size() < (1U << 16U); ++i)
        text += "day " + std::to_string(i) + " of 36500: biomass 12.5 t/ha, soil water 0.31\n";
    text.resize(1U << 16U);
    return text;
}

void fill(LogView& view, std::uint64_t bytes, bool oneLine) {
    const std::string text = oneLine ? std::string(1U << 16U, 'x') : piece();
    while (view.logText().end() < bytes)
        view.appendString(text);
}

void append(benchmark::State& state) {
    LogView view;
    const std::string text = piece();
    while (state.KeepRunning()) {
        if (view.logText().end() >= (1ULL << 30U)) {
            state.PauseTiming();
            view.setString("");
            state.ResumeTiming();
        }
        view.appendString(text);
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(text.size()));
}
BENCHMARK(append)->Unit(benchmark::kMicrosecond);

/// A window of 1000 x 700 at the end of 1 GB of lines (0) or of one line (1).
void repaint(benchmark::State& state) {
    LogView view;
    view.resize(1000, 700);
    view.show();
    fill(view, 1ULL << 30U, state.range(0) == 1);
    QImage image(view.size(), QImage::Format_RGB32);
    while (state.KeepRunning())
        view.render(&image);
}
BENCHMARK(repaint)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

/// Through 1 GB for a text that is not there, in slices with the window going on.
void find(benchmark::State& state) {
    LogView view;
    fill(view, 1ULL << 30U, false);
    QSignalSpy finished(&view, &LogView::searchFinished);
    while (state.KeepRunning()) {
        view.find("biomass 99", FindStart::Next);
        finished.wait(60'000);
    }
    state.SetBytesProcessed(state.iterations() * (1LL << 30));
}
BENCHMARK(find)->Unit(benchmark::kMillisecond);

/// The longest time between two turns of the event loop.
class HoldMeter : public QObject {
public:
    HoldMeter() {
        m_since.start();
        startTimer(0);
    }
    [[nodiscard]] double longestMs() const { return static_cast<double>(m_longest) / 1e6; }

protected:
    void timerEvent(QTimerEvent*) override {
        m_longest = std::max(m_longest, m_since.nsecsElapsed());
        m_since.start();
    }

private:
    QElapsedTimer m_since;
    qint64 m_longest = 0;
};

/// 1 GB into a file, and for how long the window is held meanwhile.
void save(benchmark::State& state) {
    LogPanel panel;
    panel.resize(1000, 700);
    panel.show();
    fill(panel.view(), 1ULL << 30U, false);
    const QTemporaryDir folder(QDir::currentPath() + "/log-bench-XXXXXX");
    QtWaitPanel wait(&panel);
    double longest = 0;
    while (state.KeepRunning()) {
        const HoldMeter meter;
        if (!saveLog(panel.view().logText(), folder.filePath("log.txt").toStdString(), wait)) std::abort();
        QCoreApplication::processEvents();
        longest = std::max(longest, meter.longestMs());
    }
    state.SetBytesProcessed(state.iterations() * (1LL << 30));
    state.counters["heldMs"] = longest;
}
BENCHMARK(save)->Unit(benchmark::kMillisecond)->UseRealTime();

/// What the clipboard takes at most.
void copy(benchmark::State& state) {
    LogView view;
    fill(view, 1ULL << 25U, false);
    view.selectAll();
    while (state.KeepRunning())
        view.copy();
}
BENCHMARK(copy)->Unit(benchmark::kMillisecond);

/// The end of a log of 1 GB, when the next run begins.
void clear(benchmark::State& state) {
    LogView view;
    while (state.KeepRunning()) {
        state.PauseTiming();
        fill(view, 1ULL << 30U, false);
        state.ResumeTiming();
        view.setString("");
    }
}
BENCHMARK(clear)->Unit(benchmark::kMillisecond)->Iterations(5);

/// A window of another size over 1 GB.
void resize(benchmark::State& state) {
    LogView view;
    view.show();
    fill(view, 1ULL << 30U, false);
    QImage image(QSize(1000, 900), QImage::Format_RGB32);
    int height = 500;
    while (state.KeepRunning()) {
        view.resize(1000, height = height == 500 ? 900 : 500);
        view.render(&image);
    }
}
BENCHMARK(resize)->Unit(benchmark::kMillisecond);

} // namespace
} // namespace orrery

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}

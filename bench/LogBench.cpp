#include "platform/qt/LogView.h"

#include <benchmark/benchmark.h>

#include <QApplication>
#include <QSignalSpy>
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
    while (view.logText().size() < bytes)
        view.appendString(text);
}

void append(benchmark::State& state) {
    LogView view;
    const std::string text = piece();
    while (state.KeepRunning()) {
        if (view.logText().size() >= (1ULL << 30U)) {
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

} // namespace
} // namespace orrery

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}

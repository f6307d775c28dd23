// How fast the outline of a large model is on the screen after its import, and follows what is typed into the filter.

#include "app/ModelOutlineView.h"
#include "bench/BenchData.h"
#include "document/MyDocument.h"

#include <benchmark/benchmark.h>

#include <QApplication>
#include <QImage>
#include <array>
#include <cstddef>
#include <string>

namespace orrery {
namespace {

constexpr QSize windowSize(300, 700);

/// A document with a model in an outline; 13 nodes a part.
class Outline {
public:
    explicit Outline(std::size_t parts) {
        const std::string path = std::string(ORRERY_BENCH_DATA) + "/outline-" + std::to_string(parts) + ".xml";
        bench::makeOnce(path, [&](std::ostream& file) { bench::writeModel(file, parts, 5); });
        m_view.resize(windowSize);
        m_view.setUniformRowHeights(true);
        m_view.show();
        m_view.setDocument(m_document);
        m_document.makeModelTree(path);
    }
    ModelOutlineView& view() { return m_view; }
    void paint() { m_view.render(&m_image); }

private:
    MyDocument m_document{DocumentServices{}};
    ModelOutlineView m_view;
    QImage m_image{windowSize, QImage::Format_RGB32};
};

void show(benchmark::State& state) {
    Outline outline(static_cast<std::size_t>(state.range(0)));
    while (state.KeepRunning()) {
        outline.view().reloadData();
        outline.paint();
    }
}
BENCHMARK(show)
    ->Name("outline, tree to picture")
    ->ArgName("parts")
    ->Arg(1000)
    ->Arg(7700)
    ->Unit(benchmark::kMillisecond);

/// Eight changes one after the other, the last clears the filter.
void filter(benchmark::State& state) {
    Outline outline(static_cast<std::size_t>(state.range(0)));
    const std::array<QString, 8> texts = {"r", "re", "resp", "resp3", "/", "/Part 12", "nothing", ""};
    while (state.KeepRunning()) {
        for (const QString& text : texts) {
            outline.view().setFilter(text);
            outline.paint();
        }
    }
}
BENCHMARK(filter)
    ->Name("outline, filter by 8 keys")
    ->ArgName("parts")
    ->Arg(1000)
    ->Arg(7700)
    ->Unit(benchmark::kMillisecond);

} // namespace
} // namespace orrery

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}

// How fast the outline of a large model is on the screen after its import, and follows what is typed into the filter.

#include "app/setup/ModelOutlineView.h"
#include "bench/BenchData.h"
#include "document/MyDocument.h"

#include <benchmark/benchmark.h>

#include <QApplication>
#include <QImage>
#include <QKeyEvent>
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
        m_view.setSelectionMode(QAbstractItemView::ExtendedSelection);
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

/// All of a model that is wide open, and then from its first to its last row, as Ctrl+A and Shift+End do; with what the
/// commands ask after each.
void select(benchmark::State& state) {
    Outline outline(static_cast<std::size_t>(state.range(0)));
    outline.view().reloadData();
    outline.view().expandAll();
    const bool byStretch = state.range(1) != 0;
    while (state.KeepRunning()) {
        if (byStretch) {
            outline.view().setCurrentIndex(outline.view().model()->index(0, 0));
            QKeyEvent key(QEvent::KeyPress, Qt::Key_End, Qt::ShiftModifier);
            QCoreApplication::sendEvent(&outline.view(), &key);
        } else {
            outline.view().selectAll();
        }
        benchmark::DoNotOptimize(outline.view().selectedNodes());
        outline.paint();
    }
    state.counters["nodes"] = static_cast<double>(outline.view().selectedNodes().size());
}
BENCHMARK(select)
    ->Name("outline, select all rows")
    ->ArgNames({"parts", "stretched"})
    ->Args({1000, 0})
    ->Args({7700, 0})
    ->Args({7700, 1})
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

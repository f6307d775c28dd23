#pragma once

#include "app/WindowFixture.h"
#include "app/setup/ModelOutlineModel.h"
#include "app/setup/ModelOutlineView.h"
#include "app/setup/PortTableView.h"
#include "platform/qt/QtText.h"

#include <QHeaderView>
#include <QLineEdit>
#include <string>
#include <string_view>
#include <vector>

namespace orrery::test {

/// A window's outline and tables as a test points at them.
class SetupWindowTest : public WindowTest {
protected:
    void openSample(const std::string& name) {
        window = &open(name);
        const QSize roomy(1200, 900);
        window->resize(roomy);
        ASSERT_TRUE(waitFor([&] { return window->size() == roomy; }));
    }

    [[nodiscard]] ModelOutlineView& outline() { return find<ModelOutlineView>(*window, "outlineView"); }
    [[nodiscard]] PortTableView& table(const char* name) { return find<PortTableView>(*window, name); }
    [[nodiscard]] QLineEdit& field(const char* name) { return find<QLineEdit>(*window, name); }

    /// Shows the node and returns its place in the outline: "Weather/outputs/mean temperature".
    QModelIndex showNode(const char* path) {
        const QModelIndex index = static_cast<ModelOutlineModel*>(outline().model())->indexForPath(path);
        EXPECT_TRUE(index.isValid()) << path;
        outline().scrollTo(index);
        return index;
    }
    QPoint nodePoint(const char* path) {
        const QModelIndex index = showNode(path);
        return outline().viewport()->mapToGlobal(outline().visualRect(index).center());
    }
    /// A point in a row, `part` of its height down; the row behind the last is the space below.
    QPoint rowPoint(PortTableView& view, int row, double part = 0.5) {
        const int rows = view.model()->rowCount();
        const int height = view.verticalHeader()->defaultSectionSize();
        const int top = row < rows ? view.rowViewportPosition(row) : rows * height;
        return view.viewport()->mapToGlobal(QPoint(40, top + static_cast<int>(height * part)));
    }

    [[nodiscard]] std::vector<std::string> fieldsOf(PortList list, std::string_view key) {
        std::vector<std::string> values;
        for (const Entry& entry : window->document().controller(list).arrangedObjects()) {
            values.emplace_back(entry.text(key));
        }
        return values;
    }
    [[nodiscard]] std::vector<std::string> ports(PortList list) { return fieldsOf(list, "portPath"); }

    DocumentWindow* window = nullptr;
};

} // namespace orrery::test

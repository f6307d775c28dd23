#pragma once

#include <QLayout>
#include <QPointer>
#include <cstddef>
#include <functional>
#include <vector>

namespace orrery {

/// The rows of settings in a layout. Rows are kept when their list is read anew, so that the focus stays where it is.
template <typename Row>
class RowList {
public:
    RowList(QLayout* layout, std::function<Row*(std::size_t)> make) : m_layout(layout), m_make(std::move(make)) {}
    RowList(const RowList&) = delete;
    RowList& operator=(const RowList&) = delete;
    ~RowList() {
        for (const QPointer<Row>& row : m_rows) {
            delete row.data();
        }
    }

    void resize(std::size_t count) {
        while (m_rows.size() < count) {
            m_rows.push_back(m_make(m_rows.size()));
            m_layout->addWidget(m_rows.back());
        }
        while (m_rows.size() > count) {
            Row* row = m_rows.back();
            m_rows.pop_back();
            row->disconnect(); // hiding a field ends its editing, of a variable that is gone
            row->hide();
            row->deleteLater(); // it may be the one that sent what is going on
        }
    }
    [[nodiscard]] std::size_t size() const { return m_rows.size(); }
    [[nodiscard]] Row& operator[](std::size_t number) const { return *m_rows[number]; }

private:
    QLayout* m_layout;
    std::function<Row*(std::size_t)> m_make;
    std::vector<QPointer<Row>> m_rows;
};

} // namespace orrery

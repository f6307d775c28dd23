#pragma once

#include "document/MyDocument.h"
#include "document/setup/SetupForm.h"

#include <QAbstractTableModel>
#include <span>
#include <string_view>

namespace orrery {

/// Presents one port list of a document, a column per field of its entries, and edits it through the document.
class PortTableModel : public QAbstractTableModel {
    Q_OBJECT

public:
    PortTableModel(MyDocument& document, PortList list, QObject* parent);

    /// The list has changed, or what is known of its ports.
    void reload();
    [[nodiscard]] PortList portList() const { return m_list; }
    /// Whether the column holds single numbers, which the cell formatter reads.
    [[nodiscard]] bool holdsNumbers(int column) const;
    [[nodiscard]] static constexpr int portColumn() { return 0; }
    [[nodiscard]] int columnOf(std::string_view fieldKey) const; // the port's where no column shows the field
    /// The text to start editing with: numbers without the braces that old setups have around them.
    [[nodiscard]] QString editingText(const QModelIndex& index) const;
    /// Takes over what was typed, or returns why not.
    [[nodiscard]] QString acceptText(const QModelIndex& index, const QString& text);

    [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] int columnCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    [[nodiscard]] QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
    [[nodiscard]] Qt::ItemFlags flags(const QModelIndex& index) const override;
    bool setData(const QModelIndex& index, const QVariant& value, int role) override;

private:
    [[nodiscard]] const setup_form::Field& field(int column) const { return m_fields[std::size_t(column)]; }
    [[nodiscard]] QString storedText(const QModelIndex& index) const;
    [[nodiscard]] QVariant portData(const QString& path, int role) const;

    MyDocument& m_document;
    PortList m_list;
    std::span<const setup_form::Field> m_fields;
    int m_rows = 0; // as the views know them
};

} // namespace orrery

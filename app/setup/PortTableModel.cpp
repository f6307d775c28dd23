#include "app/setup/PortTableModel.h"

#include "app/setup/NodeIcons.h"
#include "model/SequenceFormatter.h"
#include "platform/qt/QtText.h"

#include <QApplication>
#include <QFont>
#include <QPalette>
#include <algorithm>
#include <array>

namespace orrery {

namespace {

struct Header {
    std::string_view key;
    const char* title;
    const char* explanation;
};

constexpr std::array headers = {
    Header{"portPath", QT_TRANSLATE_NOOP("PortTable", "Port"), QT_TRANSLATE_NOOP("PortTable", "The port in the model")},
    Header{"outputPath", QT_TRANSLATE_NOOP("PortTable", "Result file"),
           QT_TRANSLATE_NOOP("PortTable",
                             "The file that the engine writes for this output, unless the dimensions are 1, 1")},
    Header{"coordinates", QT_TRANSLATE_NOOP("PortTable", "Coordinates"),
           QT_TRANSLATE_NOOP("PortTable", "The cell of the model's dimensions, such as { 0, 0 }")},
    Header{"value", QT_TRANSLATE_NOOP("PortTable", "Value"), QT_TRANSLATE_NOOP("PortTable", "The initial value")},
    Header{"start", QT_TRANSLATE_NOOP("PortTable", "Start"),
           QT_TRANSLATE_NOOP("PortTable", "First value of the sweep")},
    Header{"step", QT_TRANSLATE_NOOP("PortTable", "Step"),
           QT_TRANSLATE_NOOP("PortTable", "The step from one value to the next")},
    Header{"stop", QT_TRANSLATE_NOOP("PortTable", "Stop"), QT_TRANSLATE_NOOP("PortTable", "Last value of the sweep")},
};

QString translated(const char* text) {
    return QCoreApplication::translate("PortTable", text);
}

} // namespace

PortTableModel::PortTableModel(MyDocument& document, PortList list, QObject* parent)
    : QAbstractTableModel(parent), m_document(document), m_list(list),
      m_fields(std::ranges::find(setup_form::lists, listKey(list), &setup_form::List::key)->fields) {}

/// Rows come and go at the end and all others are reported as changed: what is current stays where it is, so that Tab
/// finds the next cell after an edit.
void PortTableModel::reload() {
    const int rows = static_cast<int>(m_document.controller(m_list).arrangedObjects().size());
    if (rows > m_rows) {
        beginInsertRows({}, m_rows, rows - 1);
        m_rows = rows;
        endInsertRows();
    } else if (rows < m_rows) {
        beginRemoveRows({}, rows, m_rows - 1);
        m_rows = rows;
        endRemoveRows();
    }
    if (rows > 0) emit dataChanged(index(0, 0), index(rows - 1, columnCount() - 1));
}

bool PortTableModel::holdsNumbers(int column) const {
    constexpr std::array<std::string_view, 4> numbers = {"value", "start", "step", "stop"};
    return std::ranges::find(numbers, field(column).key) != numbers.end();
}

int PortTableModel::columnOf(std::string_view fieldKey) const {
    const auto field = std::ranges::find(m_fields, fieldKey, &setup_form::Field::key);
    return field == m_fields.end() ? portColumn() : static_cast<int>(field - m_fields.begin());
}

QString PortTableModel::storedText(const QModelIndex& index) const {
    const EntryList& entries = m_document.controller(m_list).arrangedObjects();
    const auto row = static_cast<std::size_t>(index.row());
    if (!index.isValid() || row >= entries.size()) return {}; // the list is shorter already than the views know
    return qtText(entries[row].text(field(index.column()).key));
}

QString PortTableModel::editingText(const QModelIndex& index) const {
    const QString stored = storedText(index);
    return holdsNumbers(index.column()) ? qtText(SequenceFormatter::editingStringForObjectValue(coreText(stored)))
                                        : stored;
}

QString PortTableModel::acceptText(const QModelIndex& index, const QString& text) {
    const bool isThere = static_cast<std::size_t>(index.row()) < m_document.controller(m_list).arrangedObjects().size();
    if (!isThere || text == editingText(index)) return {};
    std::string typed = coreText(text);
    if (holdsNumbers(index.column()) &&
        !typed.empty()) { // an emptied cell holds nothing, which is no number's business
        const SequenceFormatter::Parsed parsed = SequenceFormatter::getObjectValue(typed);
        if (!parsed.value) return qtText(parsed.errorDescription);
        typed = SequenceFormatter::stringForObjectValue(*parsed.value);
    }
    m_document.setup().editEntry(m_list, static_cast<std::size_t>(index.row()), field(index.column()).key,
                                 std::move(typed));
    return {};
}

bool PortTableModel::setData(const QModelIndex& index, const QVariant& value, int role) {
    return role == Qt::EditRole && index.isValid() && acceptText(index, value.toString()).isEmpty();
}

int PortTableModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : m_rows;
}

int PortTableModel::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(m_fields.size());
}

QVariant PortTableModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid()) return {};
    if (role == Qt::EditRole) return editingText(index);
    const QString text = storedText(index);
    if (index.column() == portColumn()) return portData(text, role);
    switch (role) {
    case Qt::DisplayRole:
    case Qt::ToolTipRole:
        return text;
    case Qt::TextAlignmentRole:
        if (holdsNumbers(index.column())) return QVariant(Qt::AlignRight | Qt::AlignVCenter);
        break;
    default:
        break;
    }
    return {};
}

QVariant PortTableModel::portData(const QString& path, int role) const {
    const QString fault = qtText(m_document.model().portFaults().fault(coreText(path), portDirection(m_list)).words);
    switch (role) {
    case Qt::DisplayRole:
        return path.isEmpty() ? tr("No port yet") : path;
    case Qt::ToolTipRole:
        return fault.isEmpty() ? path : path.isEmpty() ? fault : path + "\n" + fault;
    case Qt::AccessibleDescriptionRole:
        return fault;
    case Qt::DecorationRole:
        return fault.isEmpty() ? portIcon(portDirection(m_list)) : warningIcon();
    case Qt::FontRole:
        if (!fault.isEmpty()) {
            QFont italic = QApplication::font("QAbstractItemView");
            italic.setItalic(true);
            return italic;
        }
        break;
    case Qt::ForegroundRole:
        if (path.isEmpty()) return QApplication::palette().brush(QPalette::PlaceholderText);
        break;
    default:
        break;
    }
    return {};
}

QVariant PortTableModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (orientation != Qt::Horizontal) return {};
    const auto* header = std::ranges::find(headers, field(section).key, &Header::key);
    if (role == Qt::DisplayRole) return translated(header->title);
    if (role == Qt::ToolTipRole) return translated(header->explanation);
    if (role == Qt::TextAlignmentRole)
        return QVariant((holdsNumbers(section) ? Qt::AlignRight : Qt::AlignLeft) | Qt::AlignVCenter);
    return {};
}

Qt::ItemFlags PortTableModel::flags(const QModelIndex& index) const {
    if (!index.isValid()) return Qt::ItemIsDropEnabled;
    return Qt::ItemIsSelectable | Qt::ItemIsEnabled | Qt::ItemIsEditable | Qt::ItemIsDragEnabled |
           Qt::ItemIsDropEnabled;
}

} // namespace orrery

#include "app/setup/OutlineSelection.h"

#include "app/setup/ModelOutlineModel.h"

#include <QItemSelection>

namespace orrery {

namespace {

constexpr qsizetype fewRanges = 200; // Qt compares that many with one another in no time

} // namespace

OutlineSelection::OutlineSelection(ModelOutlineModel& model, QObject* parent)
    : QItemSelectionModel(&model, parent), m_model(model) {}

void OutlineSelection::select(const QItemSelection& selection, SelectionFlags command) {
    if (command == NoUpdate) return;
    m_settled = command.testFlag(Clear)     ? std::vector<bool>()
                : command.testFlag(Current) ? std::move(m_settled)
                                            : positions();
    m_settled.resize(m_model.shownCount());
    m_command = command;
    m_current = m_model.positionsOf(selection);
    const QItemSelection now = m_model.selectionOf(positions());
    // What has changed is reported in full where that is quickly found, otherwise as all gone and all new.
    if (now.size() > fewRanges || this->selection().size() > fewRanges) {
        QItemSelectionModel::select(QItemSelection(), Clear);
    }
    QItemSelectionModel::select(now, ClearAndSelect);
}

void OutlineSelection::reset() {
    m_settled.clear();
    m_current.clear();
    QItemSelectionModel::reset();
}

std::vector<bool> OutlineSelection::positions() const {
    std::vector<bool> chosen = m_settled;
    for (std::size_t position = 0; position < m_current.size(); ++position) {
        if (!m_current[position]) continue;
        chosen[position] = m_command.testFlag(Toggle) ? !chosen[position] : m_command.testFlag(Select);
    }
    return chosen;
}

} // namespace orrery

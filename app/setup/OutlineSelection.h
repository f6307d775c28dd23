#pragma once

#include <QItemSelectionModel>
#include <vector>

namespace orrery {

class ModelOutlineModel;

/// The selection of an outline of any size: every change of it takes a walk over the nodes. Qt's own compares each
/// stretch of brothers with each other one, which takes minutes where a large model is selected.
class OutlineSelection : public QItemSelectionModel {
    Q_OBJECT

public:
    OutlineSelection(ModelOutlineModel& model, QObject* parent);

    using QItemSelectionModel::select;
    void select(const QItemSelection& selection, SelectionFlags command) override;
    void reset() override;

    /// Of the model's positions, which are selected.
    [[nodiscard]] std::vector<bool> positions() const;

private:
    ModelOutlineModel& m_model;
    std::vector<bool> m_settled; // by position, without what a hand still drags or Shift still stretches
    std::vector<bool> m_current; // that, and what it does to the rest
    SelectionFlags m_command = NoUpdate;
};

} // namespace orrery

#include "document/UndoHistory.h"

#include <utility>

namespace orrery {

namespace {

UndoHistory::Change valueOf(const SetupDictionary::Values& values, const std::string& key) {
    const auto found = values.find(key);
    return found == values.end() ? UndoHistory::Change() : UndoHistory::Change(found->second);
}

} // namespace

void UndoHistory::record(std::string name, const SetupDictionary::Values& before, const SetupDictionary::Values& after,
                         bool listChangeCounted) {
    Edit edit{std::move(name), {}, {}, listChangeCounted, {}};
    SetupDictionary::Values all = before;
    all.insert(after.begin(), after.end());
    for (const auto& [key, value] : all) {
        Change old = valueOf(before, key);
        Change present = valueOf(after, key);
        if (old == present) continue;
        edit.before.emplace(key, std::move(old));
        edit.after.emplace(key, std::move(present));
    }
    if (edit.before.empty()) return;
    push(std::move(edit));
}

void UndoHistory::recordPlot(PlotControl control, const PlotChange& change) {
    if (change.empty()) return;
    if (m_moving == control && m_done > 0 && m_done == m_edits.size()) {
        m_edits.back().plot.append(change);
        if (!m_edits.back().plot.empty()) return;
        m_edits.pop_back(); // it was moved back to where it began
        --m_done;
        m_moving.reset();
        return;
    }
    push({std::string(plotActName(control.act)), {}, {}, false, change});
    if (isMove(control.act)) m_moving = control;
}

void UndoHistory::push(Edit edit) {
    m_moving.reset();
    m_edits.resize(m_done);
    m_edits.push_back(std::move(edit));
    ++m_done;
}

void UndoHistory::clear() {
    m_edits.clear();
    m_done = 0;
    m_moving.reset();
}

void UndoHistory::replaceTexts(std::string_view key,
                               const std::function<std::string(const std::string&)>& replacement) {
    for (Edit& edit : m_edits) {
        for (auto* values : {&edit.before, &edit.after}) {
            const auto found = values->find(key);
            if (found == values->end() || !found->second) continue;
            if (auto* text = std::get_if<std::string>(&*found->second)) *text = replacement(*text);
        }
    }
}

const UndoHistory::Edit* UndoHistory::nextUndo() const {
    for (std::size_t i = m_done; i > 0; --i) {
        if (applies(m_edits[i - 1])) return &m_edits[i - 1];
    }
    return nullptr;
}

const UndoHistory::Edit* UndoHistory::nextRedo() const {
    for (std::size_t i = m_done; i < m_edits.size(); ++i) {
        if (applies(m_edits[i])) return &m_edits[i];
    }
    return nullptr;
}

const UndoHistory::Edit& UndoHistory::stepBack() {
    m_moving.reset();
    while (!applies(m_edits[m_done - 1])) {
        m_edits.erase(m_edits.begin() + static_cast<std::ptrdiff_t>(--m_done));
    }
    return m_edits[--m_done];
}

const UndoHistory::Edit& UndoHistory::stepForward() {
    m_moving.reset();
    while (!applies(m_edits[m_done])) {
        m_edits.erase(m_edits.begin() + static_cast<std::ptrdiff_t>(m_done));
    }
    return m_edits[m_done++];
}

} // namespace orrery

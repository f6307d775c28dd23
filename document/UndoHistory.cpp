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
    Edit edit{std::move(name), {}, {}, listChangeCounted};
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
    m_edits.resize(m_done);
    m_edits.push_back(std::move(edit));
    ++m_done;
}

void UndoHistory::clear() {
    m_edits.clear();
    m_done = 0;
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

std::string_view UndoHistory::undoName() const {
    return canUndo() ? std::string_view(m_edits[m_done - 1].name) : std::string_view();
}

std::string_view UndoHistory::redoName() const {
    return canRedo() ? std::string_view(m_edits[m_done].name) : std::string_view();
}

} // namespace orrery

// The user's edits of the document's setup, each one step of undo.
#include "document/MyDocument.h"
#include "document/setup/SetupForm.h"

#include <fmt/format.h>

#include <algorithm>
#include <cctype>
#include <utility>

namespace orrery {

namespace {

std::string titleCase(std::string_view words) {
    std::string title(words);
    bool begins = true;
    for (char& letter : title) {
        if (begins) letter = static_cast<char>(std::toupper(static_cast<unsigned char>(letter)));
        begins = letter == ' ';
    }
    return title;
}

std::string settingWord(std::string_view key) {
    const auto* field = std::ranges::find(setup_form::settings, key, &setup_form::Field::key);
    return titleCase(field == setup_form::settings.end() ? key : field->userWord);
}

std::string entryFieldWord(PortList list, std::string_view key) {
    const auto* form = std::ranges::find(setup_form::lists, listKey(list), &setup_form::List::key);
    const auto field = std::ranges::find(form->fields, key, &setup_form::Field::key);
    return titleCase(fmt::format("{} {}", listWord(list), field == form->fields.end() ? key : field->userWord));
}

} // namespace

bool MyDocument::hasUnsavedChanges() const {
    return isDocumentEdited() || m_dictionary.values() != m_savedValues;
}

void MyDocument::edit(std::string name, const std::function<void()>& change) {
    if (m_isEditing) {
        change();
        return;
    }
    const SetupDictionary::Values before = m_dictionary.values();
    const int countBefore = m_changeCount;
    m_isEditing = true;
    try {
        change();
    } catch (...) {
        m_isEditing = false;
        throw;
    }
    m_isEditing = false;
    m_undo.record(std::move(name), before, m_dictionary.values(), m_changeCount != countBefore);
    setupChanged();
}

void MyDocument::setupChanged() {
    if (m_isEditing) return;
    if (m_setupObserver) m_setupObserver();
}

void MyDocument::editText(std::string_view key, std::string value) {
    if (const std::string* present = m_dictionary.text(key); present != nullptr ? *present == value : value.empty()) {
        return;
    }
    edit("Change " + settingWord(key), [&] { m_dictionary.setText(key, std::move(value)); });
    if (key == setup_key::modelPath && !importModelOfSetup()) stepBack();
}

void MyDocument::editStartDay(std::optional<Date> date) {
    if (date == m_dictionary.startDay()) return;
    edit("Change Start Day", [&] { m_dictionary.setStartDay(date); });
}

void MyDocument::editEntry(PortList list, std::size_t row, std::string_view key, std::string value) {
    const EntryList& entries = controller(list).arrangedObjects();
    if (row < entries.size() && entries[row].text(key) == value) return;
    edit("Change " + entryFieldWord(list, key), [&] { controller(list).setValue(row, key, std::move(value)); });
}

void MyDocument::mend(const SetupPlace& place, const std::string& value) {
    const auto* list = std::ranges::find(setup_form::lists, place.key, &setup_form::List::key);
    if (list == setup_form::lists.end()) return editText(place.key, value);
    for (const ListController& each : m_controllers) {
        const bool isIt = listKey(each.portList()) == place.key && place.row;
        if (isIt && *place.row < each.arrangedObjects().size())
            editEntry(each.portList(), *place.row, place.field, value);
    }
}

void MyDocument::addPorts(PortList list, const std::vector<std::string>& portPaths) {
    if (portPaths.empty()) return;
    edit(fmt::format("Add {}{}", listWord(list), portPaths.size() > 1 ? "s" : ""), [&] {
        controller(list).addPorts(portPaths);
        updateChangeCount(ChangeKind::Done);
    });
}

void MyDocument::moveSelected(PortList list, int direction) {
    const std::vector<std::size_t> rows = controller(list).selection();
    const std::size_t count = controller(list).arrangedObjects().size();
    if (rows.empty() || (direction < 0 ? rows.front() == 0 : rows.back() + 1 == count)) return;
    moveRowsTo(list, rows, direction < 0 ? rows.front() - 1 : rows.back() + 2);
}

void MyDocument::moveRowsTo(PortList list, const std::vector<std::size_t>& rows, std::size_t row) {
    edit(fmt::format("Move {}s", listWord(list)), [&] {
        controller(list).move(rows, row);
        updateChangeCount(ChangeKind::Done);
    });
}

void MyDocument::undo() {
    if (!canUndo()) return;
    if (stepBack() && !importModelOfSetup()) {
        stepForward();
    } else {
        showEdit(m_undo.nextRedo(), Step::Undone);
    }
}

void MyDocument::redo() {
    if (!canRedo()) return;
    if (stepForward() && !importModelOfSetup()) {
        stepBack();
    } else {
        showEdit(m_undo.nextUndo(), Step::Redone);
    }
}

void MyDocument::showEdit(const UndoHistory::Edit* edit, Step step) {
    if (m_historyObserver) m_historyObserver();
    if (edit != nullptr && m_editShower) m_editShower(placeOf(*edit, step));
}

/// Whether the setup names another model now.
bool MyDocument::stepBack() {
    const UndoHistory::Edit& undone = m_undo.stepBack();
    putPlotChange(undone.plot.reversed());
    return restore(undone.before, undone.listChangeCounted);
}

bool MyDocument::stepForward() {
    const UndoHistory::Edit& redone = m_undo.stepForward();
    putPlotChange(redone.plot);
    return restore(redone.after, redone.listChangeCounted);
}

/// Settings count their change through their observers, as any change of them does; lists count one here.
bool MyDocument::restore(const std::map<std::string, UndoHistory::Change, std::less<>>& values, bool countListChange) {
    if (values.empty()) return false; // the setup has no part in it
    bool modelChanged = false;
    m_isEditing = true;
    for (const auto& [key, value] : values) {
        m_dictionary.setValue(key, value);
        modelChanged = modelChanged || key == setup_key::modelPath;
    }
    for (ListController& controller : m_controllers) {
        if (!values.contains(listKey(controller.portList()))) continue;
        if (countListChange) updateChangeCount(ChangeKind::Done);
        controller.rearrangeObjects();
    }
    m_isEditing = false;
    setupChanged();
    return modelChanged;
}

std::string MyDocument::undoMenuItemTitle() const {
    return canUndo() ? fmt::format("Undo {}", m_undo.nextUndo()->name) : "Undo";
}

std::string MyDocument::redoMenuItemTitle() const {
    return canRedo() ? fmt::format("Redo {}", m_undo.nextRedo()->name) : "Redo";
}

} // namespace orrery

#include "document/SetupEditing.h"

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
    const auto* field = std::ranges::find(setup_form::settings, key, &setup_form::Setting::key);
    return titleCase(field == setup_form::settings.end() ? key : field->userWord);
}

std::string entryFieldWord(PortList list, std::string_view key) {
    const auto* form = std::ranges::find(setup_form::lists, listKey(list), &setup_form::List::key);
    const auto field = std::ranges::find(form->fields, key, &setup_form::Field::key);
    return titleCase(fmt::format("{} {}", listWord(list), field == form->fields.end() ? key : field->userWord));
}

} // namespace

SetupEditing::SetupEditing(std::function<bool()> importModel, std::function<void(const PlotChange&)> putPlot)
    : m_importModel(std::move(importModel)), m_putPlot(std::move(putPlot)) {
    for (const PortList list : {PortList::Outputs, PortList::Initializations, PortList::Steppers}) {
        m_controllers.emplace_back(list, [this]() -> SetupDictionary& { return m_dictionary; });
    }
}

void SetupEditing::setDictionary(SetupDictionary dictionary) {
    m_dictionary = std::move(dictionary);
    m_hasDictionary = true;
    m_savedValues = m_dictionary.values();
    m_history.clear();
    for (ListController& controller : m_controllers) {
        controller.rearrangeObjects();
    }
    setupChanged();
}

void SetupEditing::setSaved() {
    m_savedValues = m_dictionary.values();
    updateChangeCount(ChangeKind::Cleared);
}

void SetupEditing::observeSettings(bool opened) {
    for (const setup_form::Setting& setting : setup_form::settings) {
        using setup_form::Counted;
        if (setting.counted == Counted::Nowhere || (setting.counted == Counted::InOpenedOnes && !opened)) continue;
        m_dictionary.addObserver(setting.key, [this](std::string_view) { updateChangeCount(ChangeKind::Done); });
    }
}

void SetupEditing::updateChangeCount(ChangeKind kind) {
    switch (kind) {
    case ChangeKind::Done:
        ++m_changeCount;
        break;
    case ChangeKind::Undone:
        --m_changeCount;
        break;
    case ChangeKind::Cleared:
        m_changeCount = 0;
        break;
    }
    if (m_observers.countChanged) m_observers.countChanged();
}

void SetupEditing::edit(std::string name, const std::function<void()>& change) {
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
    m_history.record(std::move(name), before, m_dictionary.values(), m_changeCount != countBefore);
    setupChanged();
}

void SetupEditing::setupChanged() {
    if (m_isEditing) return;
    if (m_observers.setupChanged) m_observers.setupChanged();
}

void SetupEditing::editText(std::string_view key, std::string value) {
    if (const std::string* present = m_dictionary.text(key); present != nullptr ? *present == value : value.empty()) {
        return;
    }
    edit("Change " + settingWord(key), [&] { m_dictionary.setText(key, std::move(value)); });
    if (key == setup_key::modelPath && !m_importModel()) stepBack();
}

void SetupEditing::editStartDay(std::optional<Date> date) {
    if (date == m_dictionary.startDay()) return;
    edit("Change Start Day", [&] { m_dictionary.setStartDay(date); });
}

void SetupEditing::editEntry(PortList list, std::size_t row, std::string_view key, std::string value) {
    const EntryList& entries = controller(list).arrangedObjects();
    if (row < entries.size() && entries[row].text(key) == value) return;
    edit("Change " + entryFieldWord(list, key), [&] { controller(list).setValue(row, key, std::move(value)); });
}

void SetupEditing::editPlace(const SetupPlace& place, const std::string& value) {
    const auto* list = std::ranges::find(setup_form::lists, place.key, &setup_form::List::key);
    if (list == setup_form::lists.end()) return editText(place.key, value);
    for (const ListController& each : m_controllers) {
        const bool isIt = listKey(each.portList()) == place.key && place.row;
        if (isIt && *place.row < each.arrangedObjects().size())
            editEntry(each.portList(), *place.row, place.field, value);
    }
}

void SetupEditing::addPorts(PortList list, const std::vector<std::string>& portPaths) {
    if (portPaths.empty()) return;
    edit(fmt::format("Add {}{}", listWord(list), portPaths.size() > 1 ? "s" : ""), [&] {
        controller(list).addPorts(portPaths);
        updateChangeCount(ChangeKind::Done);
    });
}

void SetupEditing::moveSelected(PortList list, int direction) {
    const std::vector<std::size_t> rows = controller(list).selection();
    const std::size_t count = controller(list).arrangedObjects().size();
    if (rows.empty() || (direction < 0 ? rows.front() == 0 : rows.back() + 1 == count)) return;
    moveRowsTo(list, rows, direction < 0 ? rows.front() - 1 : rows.back() + 2);
}

void SetupEditing::moveRowsTo(PortList list, const std::vector<std::size_t>& rows, std::size_t row) {
    edit(fmt::format("Move {}s", listWord(list)), [&] {
        controller(list).move(rows, row);
        updateChangeCount(ChangeKind::Done);
    });
}

void SetupEditing::addOrRemove(PortList list, int segment) {
    const std::string name = fmt::format("{} {}", segment == 1 ? "Remove" : "Add", listWord(list));
    edit(name, [&] {
        updateChangeCount(ChangeKind::Done);
        if (segment == 1) {
            controller(list).removeSelected();
        } else if (segment == 0) {
            controller(list).addObject(newEntry(list));
        }
    });
}

void SetupEditing::drop(PortList list, const std::string& portPath, std::size_t row, DropOperation operation) {
    edit(fmt::format("Drop {}", listWord(list)), [&] {
        controller(list).drop(portPath, row, operation);
        updateChangeCount(ChangeKind::Done);
    });
}

void SetupEditing::chooseModel(const std::string& path) {
    const bool isOther = m_dictionary.textOrEmpty(setup_key::modelPath) != path;
    edit("Choose Model", [&] { m_dictionary.setText(setup_key::modelPath, path); });
    if (!m_importModel() && isOther) stepBack();
}

void SetupEditing::replaceModelPaths(const std::function<std::string(const std::string&)>& replacement) {
    m_history.replaceTexts(setup_key::modelPath, replacement);
    const std::string* present = m_dictionary.text(setup_key::modelPath);
    if (present == nullptr) return;
    std::string replaced = replacement(*present);
    if (replaced == *present) return;
    m_dictionary.setText(setup_key::modelPath, std::move(replaced));
    setupChanged();
}

void SetupEditing::undo() {
    if (!m_history.canUndo()) return;
    if (stepBack() && !m_importModel()) {
        stepForward();
    } else {
        showEdit(m_history.nextRedo(), Step::Undone);
    }
}

void SetupEditing::redo() {
    if (!m_history.canRedo()) return;
    if (stepForward() && !m_importModel()) {
        stepBack();
    } else {
        showEdit(m_history.nextUndo(), Step::Redone);
    }
}

void SetupEditing::historyChanged() {
    if (m_observers.historyChanged) m_observers.historyChanged();
}

void SetupEditing::showEdit(const UndoHistory::Edit* edit, Step step) {
    historyChanged();
    if (edit != nullptr && m_observers.showEdit) m_observers.showEdit(placeOf(*edit, step));
}

/// Whether the setup names another model now.
bool SetupEditing::stepBack() {
    const UndoHistory::Edit& undone = m_history.stepBack();
    m_putPlot(undone.plot.reversed());
    return restore(undone.before, undone.listChangeCounted);
}

bool SetupEditing::stepForward() {
    const UndoHistory::Edit& redone = m_history.stepForward();
    m_putPlot(redone.plot);
    return restore(redone.after, redone.listChangeCounted);
}

/// Settings count their change through their observers, as any change of them does; lists count one here.
bool SetupEditing::restore(const std::map<std::string, UndoHistory::Change, std::less<>>& values,
                           bool countListChange) {
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

std::string SetupEditing::undoMenuItemTitle() const {
    return m_history.canUndo() ? fmt::format("Undo {}", m_history.nextUndo()->name) : "Undo";
}

std::string SetupEditing::redoMenuItemTitle() const {
    return m_history.canRedo() ? fmt::format("Redo {}", m_history.nextRedo()->name) : "Redo";
}

} // namespace orrery

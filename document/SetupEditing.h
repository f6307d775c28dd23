#pragma once

#include "document/EditPlace.h"
#include "document/UndoHistory.h"
#include "document/setup/SetupDictionary.h"
#include "document/setup/SetupPlace.h"
#include "model/ListController.h"
#include "model/PortLists.h"
#include "platform/values/Date.h"

#include <cstddef>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orrery {

/// A change to a document's count of changes.
enum class ChangeKind { Done = 0, Undone = 1, Cleared = 2 };

/// A document's setup as it is edited: the dictionary, the lists' controllers, what counts as a change, what was saved,
/// and what can be undone. Owned by its document; main thread.
class SetupEditing {
public:
    /// Told of what the edits lead to. All but `importModel` may be empty.
    struct Observers {
        std::function<void()> countChanged; // the edited state or the count
        std::function<void()> setupChanged;
        std::function<void()> historyChanged; // the next step of undo or redo is another one, the setup the same
        std::function<void(const EditPlace&)> showEdit; // what was undone or redone
    };

    /// `importModel` reads the model that the setup names now; false when the user has cancelled it. `putPlot` makes a
    /// change of the plot that was undone or redone.
    SetupEditing(std::function<bool()> importModel, std::function<void(const PlotChange&)> putPlot);
    SetupEditing(const SetupEditing&) = delete;
    SetupEditing& operator=(const SetupEditing&) = delete;
    ~SetupEditing() = default;

    [[nodiscard]] Observers& observers() { return m_observers; }
    [[nodiscard]] SetupDictionary& dictionary() { return m_dictionary; }
    [[nodiscard]] const SetupDictionary& dictionary() const { return m_dictionary; }
    [[nodiscard]] bool hasDictionary() const { return m_hasDictionary; } // one was set
    void setDictionary(SetupDictionary dictionary);                      // as saved; nothing observes it
    [[nodiscard]] ListController& controller(PortList list) { return m_controllers[static_cast<std::size_t>(list)]; }
    [[nodiscard]] UndoHistory& history() { return m_history; }

    /// Counts the changes of the settings from now on, of a new setup or of one from a file.
    void observeSettings(bool opened);
    void updateChangeCount(ChangeKind kind);
    [[nodiscard]] bool isEdited() const { return m_changeCount != 0; }
    /// Whether a save would lose or gain anything: fields of entries and a new setup's start day count no change.
    [[nodiscard]] bool hasUnsavedChanges() const { return isEdited() || m_dictionary.values() != m_savedValues; }
    void setSaved(); // the setup is in its file as it is now

    /// Each of these is one step of undo under the name; what the change calls of them belongs to the same step.
    void edit(std::string name, const std::function<void()>& change);
    void editText(std::string_view key, std::string value); // the same text again is no edit
    void editStartDay(std::optional<Date> date);
    /// Sets a field of an entry; an empty value leaves the entry without it.
    void editEntry(PortList list, std::size_t row, std::string_view key, std::string value);
    void editPlace(const SetupPlace& place, const std::string& value);
    /// Appends an entry for each port, as a drop behind the last row does, and selects them.
    void addPorts(PortList list, const std::vector<std::string>& portPaths);
    void addPort(PortList list, const std::string& portPath) { addPorts(list, {portPath}); }
    void addOrRemove(PortList list, int segment); // 0 adds, 1 removes the selected
    void drop(PortList list, const std::string& portPath, std::size_t row, DropOperation operation);
    void moveRowsTo(PortList list, const std::vector<std::size_t>& rows, std::size_t row);
    /// Moves the selected rows of the list up (-1) or down (1) by one place; at its end they stay.
    void moveSelected(PortList list, int direction);
    void chooseModel(const std::string& path);
    /// Exchanges the model's path in the setup as well as in what can be undone and done again. No edit.
    void replaceModelPaths(const std::function<std::string(const std::string&)>& replacement);
    // What the setup depends on, or what can be undone, has changed in another way than by an edit. It counts nothing.
    void setupChanged();
    void historyChanged();

    [[nodiscard]] bool canUndo() const { return m_history.canUndo(); }
    [[nodiscard]] bool canRedo() const { return m_history.canRedo(); }
    void undo(); // nothing when there is nothing to undo
    void redo();
    [[nodiscard]] std::string undoMenuItemTitle() const; // "Undo Move Steppers"
    [[nodiscard]] std::string redoMenuItemTitle() const;

private:
    bool stepBack();
    bool stepForward();
    void showEdit(const UndoHistory::Edit* edit, Step step);
    bool restore(const std::map<std::string, UndoHistory::Change, std::less<>>& values, bool countListChange);

    std::function<bool()> m_importModel;
    std::function<void(const PlotChange&)> m_putPlot;
    Observers m_observers;
    SetupDictionary m_dictionary;
    bool m_hasDictionary = false;
    int m_changeCount = 0;
    SetupDictionary::Values m_savedValues; // as the file has them, or as the new setup began
    UndoHistory m_history;
    bool m_isEditing = false;                  // within an edit: what it calls belongs to the same step
    std::vector<ListController> m_controllers; // indexed by PortList
};

} // namespace orrery

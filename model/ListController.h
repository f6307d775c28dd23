#pragma once

#include "document/setup/SetupDictionary.h"
#include "model/PortLists.h"
#include "platform/Outlets.h"

#include <cstddef>
#include <functional>
#include <vector>

namespace orrery {

/// Presents one port list of a setup in its order and keeps its selection. It edits the list in the dictionary itself,
/// creating it on first use, and holds no copy. Owned by the document.
class ListController {
public:
    /// `setup` returns the document's present dictionary, which may be replaced under the controller.
    ListController(PortList list, std::function<SetupDictionary&()> setup);

    [[nodiscard]] PortList portList() const { return m_list; }
    [[nodiscard]] const EntryList& arrangedObjects() const;
    [[nodiscard]] const std::vector<std::size_t>& selection() const {
        return m_selection;
    } // ascending, within the list

    void setView(ListView* view) { m_view = view; } // not owned
    void setSelection(std::vector<std::size_t> rows);

    void add();                                               // appends a new empty entry and selects it
    void addObject(Entry entry);                              // appends the entry and selects it
    void addPorts(const std::vector<std::string>& portPaths); // appends an entry for each and selects them
    void removeSelected();                                    // the controller's remove:
    void drop(const std::string& portPath, std::size_t row, DropOperation operation); // selection keeps its entries
    void move(const std::vector<std::size_t>& rows, std::size_t row);                 // selects the moved entries
    /// Sets one field of an entry, or removes it when the value is empty; an empty key or a row outside the list is a
    /// programmer's mistake.
    void setValue(std::size_t row, std::string_view key, std::string value);
    /// The list was replaced as a whole: forgets the selection and shows it anew.
    void rearrangeObjects();

private:
    [[nodiscard]] EntryList& entries();
    void show();

    PortList m_list;
    std::function<SetupDictionary&()> m_setup;
    ListView* m_view = &silentOutlet();
    std::vector<std::size_t> m_selection;
};

} // namespace orrery

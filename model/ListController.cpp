#include "model/ListController.h"

#include "platform/values/OrreryError.h"

#include <algorithm>
#include <utility>

namespace orrery {

ListController::ListController(PortList list, std::function<SetupDictionary&()> setup)
    : m_list(list), m_setup(std::move(setup)) {}

const EntryList& ListController::arrangedObjects() const {
    return std::as_const(m_setup()).entries(listKey(m_list));
}

void ListController::setSelection(std::vector<std::size_t> rows) {
    std::sort(rows.begin(), rows.end());
    rows.erase(std::unique(rows.begin(), rows.end()), rows.end());
    rows.erase(std::lower_bound(rows.begin(), rows.end(), arrangedObjects().size()), rows.end());
    m_selection = std::move(rows);
}

void ListController::add() {
    addObject(Entry());
}

void ListController::addObject(Entry entry) {
    entries().push_back(std::move(entry));
    m_selection = {arrangedObjects().size() - 1};
    show();
}

void ListController::addPorts(const std::vector<std::string>& portPaths) {
    m_selection.clear();
    for (const std::string& path : portPaths) {
        m_selection.push_back(entries().size());
        entries().push_back(entryForPort(path));
    }
    show();
}

void ListController::removeSelected() {
    if (m_selection.empty()) return;
    removeRows(entries(), m_selection);
    m_selection.clear();
    show();
}

void ListController::drop(const std::string& portPath, std::size_t row, DropOperation operation) {
    const std::size_t count = arrangedObjects().size();
    dropPort(entries(), portPath, row, operation);
    if (arrangedObjects().size() > count) {
        for (std::size_t& selected : m_selection) {
            if (selected >= row) ++selected; // the entry it means was pushed down
        }
    }
    show();
}

void ListController::move(const std::vector<std::size_t>& rows, std::size_t row) {
    m_selection = moveRows(entries(), rows, row);
    show();
}

void ListController::setValue(std::size_t row, std::string_view key, std::string value) {
    if (key.empty() || row >= arrangedObjects().size()) throw AssertionFailure("No such field in the list");
    Entry& entry = entries()[row];
    value.empty() ? entry.remove(key) : entry.set(key, std::move(value));
    show();
}

void ListController::rearrangeObjects() {
    m_selection.clear();
    show();
}

EntryList& ListController::entries() {
    return m_setup().mutableList(listKey(m_list));
}

void ListController::show() {
    m_view->reloadData();
    m_view->selectRows(m_selection);
}

} // namespace orrery

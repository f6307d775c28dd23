#pragma once

#include "model/ModelTree.h"
#include "model/PortFaults.h"
#include "platform/Outlets.h"
#include "platform/values/Date.h"

#include <cstddef>
#include <exception>
#include <functional>
#include <optional>
#include <string>

namespace orrery {

/// The model that a document's setup names: its tree as it was last read, and when its file had been changed then.
///
/// A long import is done on another thread behind the wait panel, where there is one, and the user may cancel it.
/// Owned by its document; main thread.
class DocumentModel {
public:
    /// `changed` is called when there is another tree, `tell` with the text of a sheet.
    DocumentModel(std::function<void()> changed, std::function<void(const AlertText&)> tell)
        : m_changed(std::move(changed)), m_tell(std::move(tell)) {}
    DocumentModel(const DocumentModel&) = delete;
    DocumentModel& operator=(const DocumentModel&) = delete;
    ~DocumentModel() = default;

    /// The outline that shows the tree, and the panel to wait with, if any.
    void setOutlets(ListView* outline, WaitPanel* panel);

    [[nodiscard]] const ModelTree& tree() const { return m_tree; }
    void setTree(ModelTree tree); // one that was read already; tells nobody
    [[nodiscard]] PortFaults& portFaults() { return m_portFaults; }
    [[nodiscard]] std::size_t recorders() const { return m_recorders; } // ports of the tree that are recorded
    [[nodiscard]] const std::optional<Date>& modification() const { return m_modification; }
    void setModification(std::optional<Date> date) { m_modification = date; }

    /// Imports the file; an empty path gives an empty tree. @throws OrreryError as nodesFromDictionaries,
    /// ReadingCancelled; the old tree then stays
    void makeTree(const std::string& path);
    /// Imports the file anew when it was changed since the last time. @throws as makeTree
    void update(const std::string& path);
    /// The same, a failure shown in a sheet.
    void refresh(const std::string& path);
    /// Imports the file and takes its date, a failure shown in a sheet. False when the user has cancelled it, which
    /// changes nothing.
    bool importFrom(const std::string& path);
    /// The user does not want the file read: coming back to the application is no reason to try again. The tree goes
    /// unless it is that of the same model.
    void leaveUnread(const std::string& path, bool treeIsOfSameModel);

private:
    void install(ModelTree tree, std::size_t recorders);
    void whileWaiting(const std::function<void(const ReadProgress&)>& work);
    void tellFailure(const std::exception& failure);
    void showTree();

    std::function<void()> m_changed;
    std::function<void(const AlertText&)> m_tell;
    ListView* m_outline = &silentOutlet();
    WaitPanel* m_panel = nullptr;
    ModelTree m_tree;
    PortFaults m_portFaults{m_tree};
    std::size_t m_recorders = 0;
    std::optional<Date> m_modification; // of the file at the last import
};

} // namespace orrery

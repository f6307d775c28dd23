#include "document/DocumentModel.h"

#include "platform/Files.h"
#include "platform/Log.h"
#include "platform/Workers.h"
#include "run/ResponseVariables.h"

#include <atomic>
#include <utility>

namespace orrery {

namespace {

/// A model that stays broken is read again at every activation: its sheet is one and shows the latest.
AlertText modelSheet(std::string message, std::string informative, Severity severity = Severity::Warning) {
    return {std::move(message), std::move(informative), {"OK"}, severity, {}, "model"};
}

} // namespace

void DocumentModel::setOutlets(ListView* outline, WaitPanel* panel) {
    m_outline = outline;
    m_panel = panel;
}

void DocumentModel::setTree(ModelTree tree) {
    m_tree = std::move(tree);
    m_portFaults.forget();
    m_recorders = recorderCount(m_tree);
}

void DocumentModel::makeTree(const std::string& path) {
    ImportedModel imported;
    std::size_t recorders = 0;
    {
        std::optional<PanelWait> open;
        if (m_panel != nullptr) open.emplace(*m_panel, "Reading the model\u2026");
        whileWaiting([&](const ReadProgress& progress) {
            imported = importModel(path, progress);
            recorders = recorderCount(imported.tree);
        });
        install(std::move(imported.tree), recorders);
    }
    if (!imported.fault.empty()) m_tell(modelSheet("The model could not be read.", imported.fault));
}

/// On another thread where there is a panel to wait with.
void DocumentModel::whileWaiting(const std::function<void(const ReadProgress&)>& work) {
    if (m_panel == nullptr) {
        work({});
        return;
    }
    std::atomic<double> done = 0;
    std::atomic<bool> cancelled = !m_panel->update(0);
    const auto progress = [&](double fractionDone) {
        done = fractionDone;
        return !cancelled;
    };
    runBeside([&] { work(progress); },
              [&] {
                  if (!m_panel->update(done)) cancelled = true;
              });
}

/// Within a wait. To free the old tree takes long, too, when it is large.
void DocumentModel::install(ModelTree tree, std::size_t recorders) {
    std::swap(m_tree, tree);
    m_portFaults.forget();
    m_recorders = recorders;
    showTree();
    if (!tree.empty()) whileWaiting([&tree](const ReadProgress&) { tree = {}; });
}

void DocumentModel::showTree() {
    m_outline->reloadData();
    m_changed();
}

void DocumentModel::update(const std::string& path) {
    if (path.empty()) return;
    const std::optional<Date> date = modificationDate(path);
    if (!date || date == m_modification) return;
    makeTree(path);
    m_modification = date;
}

void DocumentModel::refresh(const std::string& path) {
    try {
        update(path);
    } catch (const ReadingCancelled&) {
        leaveUnread(path, true);
        m_tell(modelSheet("The model has changed, but was not imported again.",
                          "The import was cancelled. The window shows the model as it was before.",
                          Severity::Information));
    } catch (const std::exception& failure) {
        tellFailure(failure);
    }
}

bool DocumentModel::importFrom(const std::string& path) {
    try {
        makeTree(path);
        m_modification = path.empty() ? std::nullopt : modificationDate(path);
    } catch (const ReadingCancelled&) {
        m_tell(modelSheet("The model was not imported.",
                          "The import was cancelled. To import it later, choose it again with "
                          "Setup > Choose Model\u2026",
                          Severity::Information));
        return false;
    } catch (const std::exception& failure) {
        tellFailure(failure);
    }
    return true;
}

void DocumentModel::leaveUnread(const std::string& path, bool treeIsOfSameModel) {
    m_modification = modificationDate(path);
    if (treeIsOfSameModel) return;
    setTree({});
    showTree();
}

void DocumentModel::tellFailure(const std::exception& failure) {
    logLine(failure.what());
    m_tell(modelSheet("The model could not be imported.", failure.what()));
}

} // namespace orrery

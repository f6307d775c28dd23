#pragma once

#include "platform/Outlets.h"

#include <QPointer>
#include <QWidget>

namespace orrery {

/// The desktop's panel to choose a file, as a sheet of one window. It starts where the last file was chosen.
class QtOpenPanel : public OpenPanel {
public:
    explicit QtOpenPanel(QWidget* window) : m_window(window) {}
    void beginSheet(const OpenPanelRequest& request, std::function<void(const std::string&)> chosen) override;

    /// Named for the panel's title and filter: "Choose a model", "Models".
    void setWords(const QString& title, const QString& kind) {
        m_title = title;
        m_kind = kind;
    }

private:
    QPointer<QWidget> m_window;
    QString m_title;
    QString m_kind;
};

} // namespace orrery

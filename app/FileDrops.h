#pragma once

#include <QObject>
#include <functional>
#include <string>
#include <vector>

namespace orrery {

/// Takes files that are dropped anywhere on one of the application's main windows, whatever control lies there. Drags
/// of other kinds pass on to the controls. Watches the events of the whole application while it lives.
class FileDrops : public QObject {
    Q_OBJECT

public:
    explicit FileDrops(std::function<void(const std::vector<std::string>&)> dropped);
    bool eventFilter(QObject* object, QEvent* event) override;

private:
    std::function<void(const std::vector<std::string>&)> m_dropped;
};

} // namespace orrery

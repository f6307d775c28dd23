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
    using Files = std::vector<std::string>;

    explicit FileDrops(const std::function<void(const Files&)>& dropped);
    bool eventFilter(QObject* object, QEvent* event) override;

signals:
    void filesDropped(const std::vector<std::string>& files);
};

} // namespace orrery

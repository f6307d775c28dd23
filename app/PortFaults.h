#pragma once

#include "document/MyDocument.h"
#include "model/PortPaths.h"

#include <QHash>
#include <QString>

namespace orrery {

/// What is wrong with the ports that a list names, looked up once for each path and model: a suggestion for a wrong
/// path takes a walk through the whole model.
class PortFaults {
public:
    explicit PortFaults(const MyDocument& document) : m_document(document) {}
    [[nodiscard]] const QString& fault(const QString& portPath, PortDirection direction); // empty when there is none
    void forget() { m_known.clear(); }                                                    // the model is another one

private:
    const MyDocument& m_document;
    QHash<std::pair<QString, int>, QString> m_known;
};

} // namespace orrery

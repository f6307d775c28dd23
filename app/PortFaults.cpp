#include "app/PortFaults.h"

#include "platform/qt/QtText.h"

namespace orrery {

const QString& PortFaults::fault(const QString& portPath, PortDirection direction) {
    const std::pair key(portPath, static_cast<int>(direction));
    if (const auto known = m_known.constFind(key); known != m_known.constEnd()) return *known;
    return *m_known.insert(key, qtText(portFault(m_document.modelTree(), coreText(portPath), direction)));
}

} // namespace orrery

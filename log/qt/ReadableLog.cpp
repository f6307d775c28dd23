#include "log/qt/ReadableLog.h"

#include "log/qt/LogView.h"
#include "platform/qt/ReadableText.h"

namespace orrery {
namespace {

QAccessibleInterface* interfaceFor(const QString& className, QObject* object) {
    auto* log = className == "orrery::LogView" ? qobject_cast<LogView*>(object) : nullptr;
    if (log == nullptr) return nullptr;
    return new ReadableText(*log, QAccessible::EditableText, [log] { return log->text(); });
}

} // namespace

void installLogAccessibility() {
    QAccessible::installFactory(interfaceFor);
}

} // namespace orrery

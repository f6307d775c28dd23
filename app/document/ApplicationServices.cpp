#include "app/document/ApplicationServices.h"

#include "app/widgets/Icons.h"
#include "log/qt/ReadableLog.h"
#include "platform/Files.h"
#include "platform/TemporaryDirectory.h"
#include "platform/qt/ReadableText.h"
#include "platform/values/OrreryError.h"

#include <QtGlobal>
#include <utility>

/// A library's resources have to be asked for; outside any namespace, as Qt's macro wants it.
static void registerResources() {
    Q_INIT_RESOURCE(orrery);
}

namespace orrery {

ApplicationServices::ApplicationServices(std::unique_ptr<UserDefaults> defaults) : m_defaults(std::move(defaults)) {
    try {
        m_temporaryDirectory = orrery::temporaryDirectory();
    } catch (const OrreryError& error) {
        m_temporaryDirectoryFault = error.what();
    }
    registerResources();
    useOwnIcons();
    installAccessibility();
    installLogAccessibility();
}

DocumentServices ApplicationServices::forDocuments() {
    DocumentServices services;
    services.run.launcher = &m_launcher;
    services.run.runLoop = &m_loop;
    services.run.enginePath = [] { return pathForAuxiliaryExecutable("Zephyr"); };
    services.run.temporaryDirectory = m_temporaryDirectory;
    services.run.temporaryDirectoryFault = m_temporaryDirectoryFault;
    services.userDefaults = m_defaults.get();
    services.namedServices = &m_namedServices;
    services.storeDirectory = m_storeDirectory;
    return services;
}

} // namespace orrery

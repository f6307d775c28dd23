#include "document/ResultHandover.h"

#include "platform/values/OrreryError.h"
#include "run/Export.h"

#include <string_view>
#include <utility>

namespace orrery {

void ResultHandover::start() {
    if (m_services.namedServices == nullptr) return sendTo(nullptr);
    if (std::exchange(m_looksForCompanion, true)) return;
    m_services.namedServices->findRootProxy(
        std::string(companionServiceName),
        [this, alive = std::weak_ptr<int>(m_alive)](const std::shared_ptr<RemoteObject>& companion) {
            if (alive.expired()) return;
            m_looksForCompanion = false;
            sendTo(companion.get());
        });
}

void ResultHandover::sendTo(RemoteObject* companion) {
    if (companion == nullptr) {
        m_messages.showSheet(
            {"Could not open communication with Dorado.", "Please start Dorado if it is not already running.", {"OK"}});
        return;
    }
    try {
        companion->importWaves(m_files(), [this, alive = std::weak_ptr<int>(m_alive)](std::string_view failure) {
            if (alive.expired() || failure.empty()) return;
            m_messages.showSheet({"Dorado did not accept the files.", std::string(failure)});
        });
    } catch (const OrreryError& error) {
        m_messages.showSheet({"The results cannot be sent to Dorado.", error.what()});
    }
}

} // namespace orrery

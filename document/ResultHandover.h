#pragma once

#include "document/DocumentMessages.h"
#include "document/DocumentServices.h"
#include "platform/Services.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace orrery {

/// Hands a document's result files to the companion program. Owned by its document; main thread.
class ResultHandover {
public:
    /// The files to hand over now. @throws OrreryError as exportPaths
    using Files = std::function<std::vector<std::string>()>;

    /// The services and messages are the document's, and outlive this.
    ResultHandover(const DocumentServices& services, const DocumentMessages& messages, Files files)
        : m_services(services), m_messages(messages), m_files(std::move(files)) {}
    ResultHandover(const ResultHandover&) = delete;
    ResultHandover& operator=(const ResultHandover&) = delete;
    ~ResultHandover() = default;

    /// Returns at once, and does nothing while the last one still looks for the companion. What fails is said in a
    /// sheet.
    void start();
    /// The window closes: what is still to come says nothing any more.
    void close() { m_alive.reset(); }

private:
    void sendTo(RemoteObject* companion);

    const DocumentServices& m_services;
    const DocumentMessages& m_messages;
    Files m_files;
    bool m_looksForCompanion = false;
    std::shared_ptr<int> m_alive = std::make_shared<int>(0); // expires with the window: the companion answers later
};

} // namespace orrery

#pragma once

#include "platform/Services.h"

#include <chrono>
#include <memory>
#include <string>
#include <vector>

namespace orrery {

/// Programs that own a name on the D-Bus session bus.
///
/// A registered name becomes a bus name by its blanks becoming dots: "Dorado Server" is `Dorado.Server`, with its
/// object at `/Dorado/Server` and the interface `Dorado.Server`. Owned by the program's main; used while the
/// application object exists. A call outlives this object and the remote object: `done` still comes, from the
/// application's loop.
class QtNamedServices : public NamedServices {
public:
    /// @param timeout how long a call waits for its answer
    explicit QtNamedServices(std::chrono::milliseconds timeout = std::chrono::seconds(5));
    QtNamedServices(const QtNamedServices&) = delete;
    QtNamedServices& operator=(const QtNamedServices&) = delete;
    ~QtNamedServices() override;

    /// Asks the bus alone whether the name has an owner. nullptr also when there is no bus or when it does not answer
    /// within 2 s; the next call tries the bus again.
    void findRootProxy(const std::string& registeredName, Found found) override;

private:
    class Bus;

    std::chrono::milliseconds m_timeout;
    std::shared_ptr<Bus> m_bus; // its answers may come when this object is gone
};

} // namespace orrery

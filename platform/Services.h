#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orrery {

/// An object that another program has published.
class RemoteObject {
public:
    virtual ~RemoteObject() = default;
    /// Hands over the paths, in order. Returns at once; `done` comes later with the empty text, or with why it failed
    /// (no answer within 5 s included).
    /// @throws OrreryError naming a path that cannot be sent; nothing was sent then
    virtual void importWaves(const std::vector<std::string>& paths, std::function<void(std::string_view)> done) = 0;
};

/// Programs of this machine that published an object under a name.
class NamedServices {
public:
    using Found = std::function<void(std::shared_ptr<RemoteObject>)>;

    virtual ~NamedServices() = default;
    /// Looks for the object published under the name. Returns at once; `found` comes later, once, on this thread, with
    /// the object or nullptr when there is none.
    virtual void findRootProxy(const std::string& registeredName, Found found) = 0;
};

} // namespace orrery

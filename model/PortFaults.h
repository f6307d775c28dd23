#pragma once

#include "model/ModelTree.h"
#include "model/PortPaths.h"

#include <array>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>

namespace orrery {

/// Why an entry's port cannot be used.
struct PortFault {
    std::string words;   // for the user; empty when nothing is wrong
    std::string nearest; // the port that was perhaps meant; may be empty
};

/// What is said everywhere of a path that is no port of the model: "The model has no input port “a/b”. Did you mean
/// “a/c”?", without the question when nothing is near.
[[nodiscard]] std::string noSuchPort(const ModelTree& tree, std::string_view portPath, PortDirection direction);

/// Which ports of setups the model has, for lists of a hundred thousand entries: the model is walked through once for
/// all look-ups, and once more for each wrong path that is to be explained. It follows a tree that stays where it is.
class PortFaults {
public:
    explicit PortFaults(const ModelTree& tree) : m_tree(tree) {}

    /// The same as findPort.
    [[nodiscard]] const ModelNode* port(std::string_view portPath, PortDirection direction);
    /// Whether fault() has words, without the search for them.
    [[nodiscard]] bool isFaulty(std::string_view portPath, PortDirection direction);
    /// The words of portFault and where they come from, looked up once for each path.
    [[nodiscard]] const PortFault& fault(std::string_view portPath, PortDirection direction);
    [[nodiscard]] const ModelTree& tree() const { return m_tree; }
    void forget(); // the tree is another one

private:
    using Index = std::unordered_map<std::uint64_t, const ModelNode*>; // by the hash of a port's path

    void indexTree();
    void indexPort(const ModelNode& port, std::uint64_t ownerHash);

    const ModelTree& m_tree;
    bool m_isIndexed = false;
    std::array<Index, 2> m_ports; // inputs and outputs
    std::map<std::pair<PortDirection, std::string>, PortFault, std::less<>> m_known;
};

} // namespace orrery

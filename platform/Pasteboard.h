#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace orrery {

/// What a drag carries: the types that were declared on it, and the payload of each.
class Pasteboard {
public:
    virtual ~Pasteboard() = default;
    /// Empties the pasteboard and declares the types.
    virtual void declareTypes(const std::vector<std::string>& types) = 0;
    virtual void setData(std::string_view data, const std::string& type) = 0;
    [[nodiscard]] virtual std::vector<std::string> types() const = 0;
    [[nodiscard]] virtual std::string dataForType(const std::string& type) const = 0; // empty when absent
};

/// A pasteboard in memory.
class MemoryPasteboard : public Pasteboard {
public:
    void declareTypes(const std::vector<std::string>& types) override;
    void setData(std::string_view data, const std::string& type) override;
    [[nodiscard]] std::vector<std::string> types() const override;
    [[nodiscard]] std::string dataForType(const std::string& type) const override;

private:
    std::vector<std::string> m_types;
    std::vector<std::string> m_data; // same order
};

} // namespace orrery

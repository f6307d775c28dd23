#pragma once

#include "platform/FileUse.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace orrery {

/// The root or another group of a NetCDF file. Numbers of dimensions and variables are the library's own.
/// @throws OrreryError with the library's words from every member, unless it returns an optional
class NetCdfGroup {
public:
    static constexpr int global = -1; // in place of a variable: an attribute of the group itself

    NetCdfGroup(int identifier, const std::string& file) : m_id(identifier), m_file(&file) {}

    [[nodiscard]] int defineDimension(const std::string& name, std::size_t length) const;
    // Contiguous, without fill values: all of it is to be written.
    [[nodiscard]] int defineFloats(const std::string& name, std::span<const int> dimensions) const;
    /// Bytes in compressed chunks of that shape.
    [[nodiscard]] int defineBytes(const std::string& name, std::span<const int> dimensions,
                                  std::span<const std::size_t> chunk) const;
    [[nodiscard]] NetCdfGroup defineGroup(const std::string& name) const;

    void setText(int variable, const char* name, std::string_view text) const;
    void setTexts(int variable, const char* name, const std::vector<std::string>& texts) const;
    void setFloats(int variable, const char* name, std::span<const float> values) const;
    void setBytes(int variable, const char* name, std::span<const std::int8_t> values) const;
    void setInteger(int variable, const char* name, std::int64_t value) const;

    /// A block of the variable from `start`, `count` long in each dimension.
    void writeFloats(int variable, std::span<const std::size_t> start, std::span<const std::size_t> count,
                     const float* values) const;
    void writeBytes(int variable, std::span<const std::size_t> start, std::span<const std::size_t> count,
                    const std::int8_t* values) const;
    void readFloats(int variable, std::span<const std::size_t> start, std::span<const std::size_t> count,
                    float* values) const;
    /// All of a variable of one dimension.
    [[nodiscard]] std::string readText(int variable) const;

    [[nodiscard]] std::optional<NetCdfGroup> group(const char* name) const;
    [[nodiscard]] std::optional<int> findVariable(const std::string& name) const;
    [[nodiscard]] std::vector<int> variables() const;
    [[nodiscard]] std::string variableName(int variable) const;
    [[nodiscard]] std::vector<int> dimensionsOf(int variable) const;
    [[nodiscard]] std::string dimensionName(int dimension) const;
    [[nodiscard]] std::size_t dimensionLength(int dimension) const;

    // Attributes; std::nullopt when there is none of that name and kind.
    [[nodiscard]] std::optional<std::string> text(int variable, const char* name) const;
    [[nodiscard]] std::vector<std::string> texts(int variable, const char* name) const; // none without the attribute
    [[nodiscard]] std::optional<std::vector<float>> floats(int variable, const char* name) const;
    [[nodiscard]] std::optional<std::int64_t> integer(int variable, const char* name) const;

private:
    void check(int status) const;
    [[nodiscard]] bool has(int variable, const char* name, int type) const;

    int m_id;
    const std::string* m_file; // for messages; its file outlives this
};

/// An open NetCDF file. Move-only; closing it without close() gives up what was not written.
class NetCdfFile {
public:
    /// A new file of the fourth format in place of the one at the path. @param shownAs for messages
    [[nodiscard]] static NetCdfFile create(const std::string& path, const std::string& shownAs);
    /// One to read, which is in shared use as long as it is open.
    /// @throws OrreryError also when it is not a NetCDF file, or a cut one, or about to be removed
    [[nodiscard]] static NetCdfFile open(const std::string& path);
    NetCdfFile(NetCdfFile&& other) noexcept;
    NetCdfFile& operator=(NetCdfFile&& other) = delete;
    NetCdfFile(const NetCdfFile&) = delete;
    NetCdfFile& operator=(const NetCdfFile&) = delete;
    ~NetCdfFile();

    [[nodiscard]] NetCdfGroup root() const { return {m_id, m_name}; }
    /// @throws OrreryError when not all could be written
    void close();

private:
    NetCdfFile(int identifier, std::string name, std::optional<FileUse> use = {})
        : m_id(identifier), m_name(std::move(name)), m_use(std::move(use)) {}

    int m_id;
    std::string m_name;
    std::optional<FileUse> m_use;
    bool m_isOpen = true;
};

} // namespace orrery

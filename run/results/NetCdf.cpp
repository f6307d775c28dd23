#include "run/results/NetCdf.h"

#include "platform/Files.h"
#include "platform/values/OrreryError.h"
#include "platform/values/Quoted.h"

#include <fmt/format.h>
#include <netcdf.h>

#include <array>
#include <utility>

namespace orrery {

namespace {

static_assert(NetCdfGroup::global == NC_GLOBAL);

constexpr int compressionLevel = 4; // the usual one: higher ones take much longer for a few percent

std::string words(int status) {
    return fmt::format("the NetCDF library reports {}", quoted(nc_strerror(status)));
}

} // namespace

void NetCdfGroup::check(int status) const {
    if (status == NC_NOERR) return;
    throw OrreryError(fmt::format("The results file cannot be used: {}.", words(status)), {.file = *m_file},
                      "Look whether the disk is full, or whether the file is damaged.");
}

int NetCdfGroup::defineDimension(const std::string& name, std::size_t length) const {
    int dimension = 0;
    check(nc_def_dim(m_id, name.c_str(), length, &dimension));
    return dimension;
}

int NetCdfGroup::defineFloats(const std::string& name, std::span<const int> dimensions) const {
    int variable = 0;
    check(nc_def_var(m_id, name.c_str(), NC_FLOAT, static_cast<int>(dimensions.size()), dimensions.data(), &variable));
    check(nc_def_var_chunking(m_id, variable, NC_CONTIGUOUS, nullptr));
    check(nc_def_var_fill(m_id, variable, NC_NOFILL, nullptr));
    return variable;
}

int NetCdfGroup::defineBytes(const std::string& name, std::span<const int> dimensions,
                             std::span<const std::size_t> chunk) const {
    int variable = 0;
    check(nc_def_var(m_id, name.c_str(), NC_BYTE, static_cast<int>(dimensions.size()), dimensions.data(), &variable));
    check(nc_def_var_chunking(m_id, variable, NC_CHUNKED, chunk.data()));
    check(nc_def_var_deflate(m_id, variable, NC_NOSHUFFLE, 1, compressionLevel));
    return variable;
}

NetCdfGroup NetCdfGroup::defineGroup(const std::string& name) const {
    int identifier = 0;
    check(nc_def_grp(m_id, name.c_str(), &identifier));
    return {identifier, *m_file};
}

void NetCdfGroup::setText(int variable, const char* name, std::string_view text) const {
    check(nc_put_att_text(m_id, variable, name, text.size(), text.data()));
}

void NetCdfGroup::setTexts(int variable, const char* name, const std::vector<std::string>& texts) const {
    if (texts.empty()) return; // an attribute of no texts cannot be read by some programs
    std::vector<const char*> pointers;
    pointers.reserve(texts.size());
    for (const std::string& each : texts) {
        pointers.push_back(each.c_str());
    }
    check(nc_put_att_string(m_id, variable, name, pointers.size(), pointers.data()));
}

void NetCdfGroup::setFloats(int variable, const char* name, std::span<const float> values) const {
    check(nc_put_att_float(m_id, variable, name, NC_FLOAT, values.size(), values.data()));
}

void NetCdfGroup::setBytes(int variable, const char* name, std::span<const std::int8_t> values) const {
    check(nc_put_att_schar(m_id, variable, name, NC_BYTE, values.size(), values.data()));
}

void NetCdfGroup::setInteger(int variable, const char* name, std::int64_t value) const {
    const auto number = static_cast<long long>(value);
    check(nc_put_att_longlong(m_id, variable, name, NC_INT64, 1, &number));
}

void NetCdfGroup::writeFloats(int variable, std::span<const std::size_t> start, std::span<const std::size_t> count,
                              const float* values) const {
    check(nc_put_vara_float(m_id, variable, start.data(), count.data(), values));
}

void NetCdfGroup::writeBytes(int variable, std::span<const std::size_t> start, std::span<const std::size_t> count,
                             const std::int8_t* values) const {
    check(nc_put_vara_schar(m_id, variable, start.data(), count.data(), values));
}

void NetCdfGroup::readFloats(int variable, std::span<const std::size_t> start, std::span<const std::size_t> count,
                             float* values) const {
    check(nc_get_vara_float(m_id, variable, start.data(), count.data(), values));
}

std::string NetCdfGroup::readText(int variable) const {
    std::size_t length = 1;
    for (const int dimension : dimensionsOf(variable)) {
        length *= dimensionLength(dimension);
    }
    if (length > largestWholeFile) {
        throw OrreryError(fmt::format("The text {} is too large.", quoted(variableName(variable))), {.file = *m_file},
                          "The file is damaged; use another copy.");
    }
    std::string text(length, '\0');
    check(nc_get_var_schar(m_id, variable, reinterpret_cast<signed char*>(text.data())));
    return text;
}

std::optional<NetCdfGroup> NetCdfGroup::group(const char* name) const {
    int identifier = 0;
    return nc_inq_grp_ncid(m_id, name, &identifier) == NC_NOERR ? std::optional(NetCdfGroup(identifier, *m_file))
                                                                : std::nullopt;
}

std::optional<int> NetCdfGroup::findVariable(const std::string& name) const {
    int variable = 0;
    return nc_inq_varid(m_id, name.c_str(), &variable) == NC_NOERR ? std::optional(variable) : std::nullopt;
}

std::vector<int> NetCdfGroup::variables() const {
    int count = 0;
    check(nc_inq_varids(m_id, &count, nullptr));
    std::vector<int> all(static_cast<std::size_t>(count));
    check(nc_inq_varids(m_id, &count, all.data()));
    return all;
}

std::string NetCdfGroup::variableName(int variable) const {
    std::array<char, NC_MAX_NAME + 1> name{};
    check(nc_inq_varname(m_id, variable, name.data()));
    return name.data();
}

std::vector<int> NetCdfGroup::dimensionsOf(int variable) const {
    int count = 0;
    check(nc_inq_varndims(m_id, variable, &count));
    std::vector<int> all(static_cast<std::size_t>(count));
    check(nc_inq_vardimid(m_id, variable, all.data()));
    return all;
}

std::string NetCdfGroup::dimensionName(int dimension) const {
    std::array<char, NC_MAX_NAME + 1> name{};
    check(nc_inq_dimname(m_id, dimension, name.data()));
    return name.data();
}

std::size_t NetCdfGroup::dimensionLength(int dimension) const {
    std::size_t length = 0;
    check(nc_inq_dimlen(m_id, dimension, &length));
    return length;
}

bool NetCdfGroup::has(int variable, const char* name, int type) const {
    nc_type found = NC_NAT;
    return nc_inq_atttype(m_id, variable, name, &found) == NC_NOERR && found == type;
}

std::optional<std::string> NetCdfGroup::text(int variable, const char* name) const {
    if (!has(variable, name, NC_CHAR)) return std::nullopt;
    std::size_t length = 0;
    check(nc_inq_attlen(m_id, variable, name, &length));
    std::string text(length, '\0');
    check(nc_get_att_text(m_id, variable, name, text.data()));
    return text;
}

std::vector<std::string> NetCdfGroup::texts(int variable, const char* name) const {
    if (!has(variable, name, NC_STRING)) return {};
    std::size_t count = 0;
    check(nc_inq_attlen(m_id, variable, name, &count));
    std::vector<char*> pointers(count, nullptr);
    check(nc_get_att_string(m_id, variable, name, pointers.data()));
    std::vector<std::string> texts;
    texts.reserve(count);
    for (const char* each : pointers) {
        texts.emplace_back(each == nullptr ? "" : each);
    }
    check(nc_free_string(count, pointers.data()));
    return texts;
}

std::optional<std::vector<float>> NetCdfGroup::floats(int variable, const char* name) const {
    if (!has(variable, name, NC_FLOAT)) return std::nullopt;
    std::size_t count = 0;
    check(nc_inq_attlen(m_id, variable, name, &count));
    std::vector<float> values(count);
    check(nc_get_att_float(m_id, variable, name, values.data()));
    return values;
}

std::optional<std::int64_t> NetCdfGroup::integer(int variable, const char* name) const {
    std::size_t count = 0;
    if (!has(variable, name, NC_INT64) || nc_inq_attlen(m_id, variable, name, &count) != NC_NOERR || count != 1) {
        return std::nullopt;
    }
    long long number = 0;
    check(nc_get_att_longlong(m_id, variable, name, &number));
    return number;
}

NetCdfFile NetCdfFile::create(const std::string& path, const std::string& shownAs) {
    int identifier = 0;
    const int status = nc_create(path.c_str(), NC_NETCDF4 | NC_CLOBBER, &identifier);
    if (status != NC_NOERR) {
        throw OrreryError(fmt::format("The results file cannot be made: {}.", words(status)), {.file = shownAs},
                          "Look whether the disk is full, or choose another folder.");
    }
    return {identifier, shownAs};
}

NetCdfFile NetCdfFile::open(const std::string& path) {
    const std::string absolute = absolutePath(path); // a name that looks like an address would go to the network
    auto use = FileUse::tryBegin(absolute, FileUse::Kind::Shared);
    if (!use) {
        throw OrreryError("Another Orrery is writing this file, or removing it.", {.file = path},
                          "Try again in a moment.");
    }
    int identifier = 0;
    const int status = nc_open(absolute.c_str(), NC_NOWRITE, &identifier);
    if (status == NC_ENOTNC) {
        throw OrreryError("This is not a results file.", {.file = path},
                          "Choose a file that was kept by Orrery; its name usually ends in .nc.");
    }
    if (status != NC_NOERR) {
        throw OrreryError(fmt::format("The results file is cut or damaged: {}.", words(status)), {.file = path},
                          "Use another copy of it, or run the simulation again.");
    }
    return {identifier, path, std::move(use)};
}

NetCdfFile::NetCdfFile(NetCdfFile&& other) noexcept
    : m_id(other.m_id), m_name(std::move(other.m_name)), m_use(std::move(other.m_use)),
      m_isOpen(std::exchange(other.m_isOpen, false)) {}

NetCdfFile::~NetCdfFile() {
    if (m_isOpen) nc_close(m_id);
}

void NetCdfFile::close() {
    m_isOpen = false;
    if (const int status = nc_close(m_id); status != NC_NOERR) {
        throw OrreryError(fmt::format("The results file could not be written: {}.", words(status)), {.file = m_name},
                          "Make room there, or keep it on another disk.");
    }
}

} // namespace orrery

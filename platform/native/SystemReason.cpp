#include "platform/SystemReason.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <system_error>

namespace orrery {
namespace {

struct Reason {
    int error;
    const char* words;
};

constexpr std::array reasons{
    Reason{ENOENT, "there is no such file or directory"},
    Reason{EACCES, "you do not have permission"},
    Reason{EPERM, "the system does not permit it"},
    Reason{EROFS, "the disk is read-only"},
    Reason{ENOSPC, "the disk is full"},
    Reason{EDQUOT, "your disk quota is used up"},
    Reason{EFBIG, "it would be larger than files may be here"},
    Reason{EIO, "the disk reports an error"},
    Reason{EISDIR, "it is a directory"},
    Reason{ENOTDIR, "part of its path is not a directory"},
    Reason{ENAMETOOLONG, "its name is too long"},
    Reason{ELOOP, "its links lead in a circle"},
    Reason{EMFILE, "Orrery has too many files open"},
    Reason{ENFILE, "the system has too many files open"},
    Reason{ENOMEM, "there is not enough memory"},
    Reason{ENOEXEC, "it is not a program for this computer"},
    Reason{ETXTBSY, "it is being written"},
};

} // namespace

std::string systemReason(int error) {
    const auto* const known = std::ranges::find(reasons, error, &Reason::error);
    return known != reasons.end() ? known->words : std::generic_category().message(error);
}

} // namespace orrery

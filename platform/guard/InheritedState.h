#pragma once

#include <fcntl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstddef>

namespace orrery {

// For a child between fork and exec: async-signal-safe calls only.

/// Every descriptor above the standard ones is closed when a program is executed. `limit`: the highest one there can
/// be, for systems that cannot mark them all at once.
inline void closeOthersOnExec(int limit) noexcept {
    constexpr unsigned closeOnExec = 1U << 2U; // CLOSE_RANGE_CLOEXEC, Linux 5.11
    if (syscall(SYS_close_range, STDERR_FILENO + 1, ~0U, closeOnExec) == 0) return;
    for (int descriptor = STDERR_FILENO + 1; descriptor < limit; ++descriptor)
        fcntl(descriptor, F_SETFD, FD_CLOEXEC);
}

/// By the system call, since the C library keeps two signals to itself, which a parent may have left ignored.
inline void resetSignalActions() noexcept {
    constexpr std::size_t kernelSetSize = 8;
    const std::array<unsigned long, 8> defaults{}; // at least the kernel's record, in which 0 is the default action
    for (int number = 1; number < NSIG; ++number)
        syscall(SYS_rt_sigaction, number, defaults.data(), nullptr, kernelSetSize);
}

} // namespace orrery

#pragma once

namespace orrery {

/// The program that stands between us and a child, see main.cpp beside this.
///
/// Its three arguments are numbers of descriptors that it inherits: its end of a socket of packets, over which these
/// messages go; a file with the command, each word closed by a NUL; and the writing end of the child's output. What
/// else it inherits it keeps open until nothing of the run lives.
inline constexpr const char* runGuardName = "orrery-run-guard";

/// From the guard, one packet each.
struct GuardReport {
    enum class Kind : int {
        NotStarted, // number: the system's error number
        Ended       // number: the child's status as wait() gives it
    };
    Kind kind = Kind::Ended;
    int number = 0;
};

/// To the guard, one packet each. When the socket's other end is gone, that is an order, too.
enum class GuardOrder : char {
    End = 'e', // ask everything of the run to end, and end what is left 2 s later
    Kill = 'k' // end what is left now
};

} // namespace orrery

#pragma once

namespace orrery {

/// How a child ended.
struct ProcessEnd {
    enum class Kind {
        Unknown,    // it was still running when its output ended, or nobody saw its end
        NotStarted, // its program could not be executed
        Exited,
        Signalled
    };
    Kind kind = Kind::Unknown;
    int number = 0; // the exit code or the signal

    friend bool operator==(const ProcessEnd&, const ProcessEnd&) = default;
};

} // namespace orrery

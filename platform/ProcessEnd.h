#pragma once

#include <string>

namespace orrery {

/// How a child ended. It is shown to people and decides nothing: a run ends with its output.
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

/// "the engine ended with exit code 3", for the middle of a sentence.
[[nodiscard]] std::string engineEndInWords(const ProcessEnd& end);

} // namespace orrery

#pragma once

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <string>

namespace orrery::test {

/// An X server without a screen for this process, in DISPLAY while the object lives and dead with the process.
class VirtualDisplay {
public:
    explicit VirtualDisplay(const char* screen = "1280x1024x24") {
        const int turn = waitForTurn();
        int ends[2] = {-1, -1};
        if (::pipe(ends) != 0) ADD_FAILURE() << "no pipe";
        m_server = ::fork();
        if (m_server == 0) {
            ::prctl(PR_SET_PDEATHSIG, SIGTERM);
            const std::string descriptor = std::to_string(ends[1]);
            ::execlp("Xvfb", "Xvfb", "-displayfd", descriptor.c_str(), "-screen", "0", screen, "-nolisten", "tcp",
                     nullptr);
            ::_exit(127);
        }
        ::close(ends[1]);
        std::string number; // the server writes it, with a line end, once it can be used
        for (char c = 0; ::read(ends[0], &c, 1) == 1 && c != '\n';)
            number += c;
        ::close(ends[0]);
        ::close(turn);
        if (number.empty()) ADD_FAILURE() << "Xvfb did not start";
        ::setenv("DISPLAY", (":" + number).c_str(), 1);
        ::setenv("QT_QPA_PLATFORM", "xcb", 1);
    }
    VirtualDisplay(const VirtualDisplay&) = delete;
    VirtualDisplay& operator=(const VirtualDisplay&) = delete;
    ~VirtualDisplay() {
        ::kill(m_server, SIGTERM);
        ::waitpid(m_server, nullptr, 0);
        ::unsetenv("DISPLAY");
    }

private:
    /// Servers that start at the same time may take the same number, so each test's starts alone.
    static int waitForTurn() {
        const std::string path = "/tmp/orrery-test-displays." + std::to_string(::getuid());
        const int lock = ::open(path.c_str(), O_CREAT | O_RDWR | O_CLOEXEC, 0600);
        if (lock < 0 || ::flock(lock, LOCK_EX) != 0) ADD_FAILURE() << "no lock";
        return lock;
    }

    pid_t m_server = -1;
};

} // namespace orrery::test

#pragma once

#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <string>

namespace orrery::test {

/// A D-Bus session bus for this process and its children, in DBUS_SESSION_BUS_ADDRESS and dead with the process.
class SessionBus {
public:
    SessionBus() { start(); }
    SessionBus(const SessionBus&) = delete;
    SessionBus& operator=(const SessionBus&) = delete;
    ~SessionBus() {
        stop();
        ::setenv("DBUS_SESSION_BUS_ADDRESS", "disabled:", 1);
    }

    /// Again at the same address.
    void start() {
        int ends[2] = {-1, -1};
        if (::pipe(ends) != 0) ADD_FAILURE() << "no pipe";
        m_daemon = ::fork();
        if (m_daemon == 0) runDaemon(ends[1]);
        ::close(ends[1]);
        char first = 0; // the daemon writes the address once it can be used
        if (::read(ends[0], &first, 1) != 1) ADD_FAILURE() << "dbus-daemon did not start";
        ::close(ends[0]);
        ::setenv("DBUS_SESSION_BUS_ADDRESS", m_address.c_str(), 1);
    }
    void signal(int number) const { ::kill(m_daemon, number); }
    void stop() {
        if (m_daemon == -1) return;
        ::kill(m_daemon, SIGTERM);
        ::waitpid(m_daemon, nullptr, 0);
        m_daemon = -1;
    }

private:
    [[noreturn]] void runDaemon(int descriptor) const {
        ::prctl(PR_SET_PDEATHSIG, SIGTERM);
        const std::string address = "--address=" + m_address;
        const std::string print = "--print-address=" + std::to_string(descriptor);
        ::execlp("dbus-daemon", "dbus-daemon", "--session", "--nofork", "--nopidfile", "--nosyslog", address.c_str(),
                 print.c_str(), nullptr);
        ::_exit(127);
    }

    TemporaryFolder m_folder;
    std::string m_address = "unix:path=" + m_folder.path() + "bus";
    pid_t m_daemon = -1;
};

} // namespace orrery::test

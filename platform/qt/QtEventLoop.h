#pragma once

#include "platform/qt/QtRunLoop.h"
#include "platform/qt/TerminationSignals.h"

#include <exception>
#include <functional>
#include <memory>
#include <string>

class QCoreApplication;

namespace orrery {

/// The main loop of a program without a window, and the signals that ask it to end. One at a time, made by main.
///
/// Numbers keep the C locale's form, and the application object reads none of the program's arguments.
class QtEventLoop {
public:
    explicit QtEventLoop(std::string programName);
    QtEventLoop(const QtEventLoop&) = delete;
    QtEventLoop& operator=(const QtEventLoop&) = delete;
    ~QtEventLoop();

    [[nodiscard]] RunLoop& runLoop() { return m_runLoop; }

    /// Runs until quit() and returns its code. What a callback throws ends it and is thrown from here.
    int run();
    void quit(int code); // also legal before run()

    /// From now on SIGINT, SIGTERM and SIGHUP no longer end the program: each is passed on here, from the loop.
    /// A SIGHUP that the program was started to ignore stays ignored. Legal once.
    void onTerminationSignal(std::function<void(int signalNumber)> callback);

private:
    std::exception_ptr m_failure;
    std::string m_programName;
    int m_argumentCount = 1;
    char* m_arguments[2];
    std::unique_ptr<QCoreApplication> m_application;
    QtRunLoop m_runLoop;
    std::unique_ptr<RunLoop::Source> m_quitting;
    std::unique_ptr<TerminationSignals> m_signals;
};

} // namespace orrery

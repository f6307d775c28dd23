#include "run/TaskWrapper.h"

#include "platform/Log.h"

#include <utility>

namespace orrery {

TaskWrapper::TaskWrapper(TaskWrapperController* controller, std::vector<std::string> arguments,
                         ChildProcessLauncher& launcher, std::vector<int> held)
    : m_controller(controller), m_arguments(std::move(arguments)), m_launcher(launcher), m_held(std::move(held)) {}

TaskWrapper::~TaskWrapper() {
    if (m_state == State::Stopping) {
        finish(); // destroyed by what it delivered while stopping
    } else {
        stopProcess();
    }
}

void TaskWrapper::startProcess() {
    const std::weak_ptr<char> alive = m_alive;
    m_state = State::Running;
    if (m_controller != nullptr) m_controller->processStarted();
    if (alive.expired() || m_state != State::Running) return; // stopped by what it was told
    m_task = m_launcher.makeChildProcess("engine");
    m_task->hold(m_held);
    m_task->start(m_arguments, {.output = [this](std::span<const std::byte> bytes) { getData(bytes); },
                                .ended = [this](const ProcessEnd& end) { m_end = end; },
                                .endOfOutput = [this] { stopProcess(); },
                                .left = [](std::string_view line) { logLine(line); }});
}

void TaskWrapper::stopProcess() {
    if (m_state != State::Running) return;
    const std::weak_ptr<char> alive = m_alive;
    m_state = State::Stopping;
    if (m_task != nullptr) m_task->drain();
    if (!alive.expired()) finish();
}

void TaskWrapper::finish() {
    const std::weak_ptr<char> alive = m_alive;
    deliver(m_decoder.finish());
    if (alive.expired()) return; // the destructor has done the rest
    m_state = State::Stopped;
    const std::unique_ptr<ChildProcess> task = std::move(m_task);
    if (task != nullptr) {
        task->stopListening();
        task->terminate();
    }
    TaskWrapperController* const controller = std::exchange(m_controller, nullptr);
    if (controller == nullptr) return;
    if (m_end.kind != ProcessEnd::Kind::Unknown) controller->engineEnded(m_end);
    controller->processFinished(); // last: it may destroy this
}

void TaskWrapper::getData(std::span<const std::byte> bytes) {
    deliver(m_decoder.decode({reinterpret_cast<const char*>(bytes.data()), bytes.size()}));
}

void TaskWrapper::deliver(std::string_view text) {
    if (!text.empty() && m_controller != nullptr) m_controller->appendOutput(text);
}

} // namespace orrery

#include "platform/Workers.h"

#include <pthread.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <exception>
#include <future>
#include <thread>
#include <vector>

namespace orrery {

namespace {

constexpr auto waitingInterval = std::chrono::milliseconds(5);

/// Threads that are started meanwhile take no signals.
class SignalsBlocked {
public:
    SignalsBlocked() {
        sigset_t all{};
        sigfillset(&all);
        pthread_sigmask(SIG_BLOCK, &all, &m_before);
    }
    SignalsBlocked(const SignalsBlocked&) = delete;
    SignalsBlocked& operator=(const SignalsBlocked&) = delete;
    ~SignalsBlocked() { pthread_sigmask(SIG_SETMASK, &m_before, nullptr); }

private:
    sigset_t m_before{};
};

/// Starts parts 1 and up, as many as the system gives threads for. Room for all must be reserved.
void startThreads(std::vector<std::thread>& threads, unsigned count, const std::function<void(unsigned)>& run) {
    const SignalsBlocked blocked;
    try {
        for (unsigned part = 1; part < count; ++part) {
            threads.emplace_back(run, part);
        }
    } catch (const std::exception&) { // the calling thread does the others
        return;
    }
}

} // namespace

void runApart(const std::function<void()>& work) {
    const SignalsBlocked blocked;
    try {
        std::thread(work).detach();
    } catch (const std::exception&) {
        work();
    }
}

void runTogether(unsigned count, const std::function<void(unsigned)>& work) {
    std::vector<std::exception_ptr> failures(count);
    const std::function<void(unsigned)> run = [&](unsigned part) {
        try {
            work(part);
        } catch (...) {
            failures[part] = std::current_exception();
        }
    };
    std::vector<std::thread> threads;
    threads.reserve(count);
    startThreads(threads, count, run);
    for (unsigned part = 0; part < count; part += part == 0 ? 1 + static_cast<unsigned>(threads.size()) : 1) {
        run(part);
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    const auto failure = std::ranges::find_if(failures, [](const auto& held) { return held != nullptr; });
    if (failure != failures.end()) {
        std::rethrow_exception(*failure);
    }
}

void runBeside(const std::function<void()>& work, const std::function<void()>& waiting) {
    std::packaged_task<void()> task(work);
    std::future<void> done = task.get_future();
    std::vector<std::thread> threads;
    threads.reserve(1);
    startThreads(threads, 2, [&task](unsigned) { task(); });
    if (threads.empty()) task();
    std::exception_ptr failure;
    try {
        while (done.wait_for(waitingInterval) != std::future_status::ready)
            waiting();
    } catch (...) {
        failure = std::current_exception();
    }
    for (std::thread& thread : threads)
        thread.join();
    if (failure) std::rethrow_exception(failure);
    done.get();
}

unsigned workersFor(std::size_t pieces, unsigned most) {
    const unsigned processors = std::clamp(std::thread::hardware_concurrency(), 1U, most);
    return static_cast<unsigned>(std::clamp<std::size_t>(pieces, 1, processors));
}

} // namespace orrery

#pragma once

#include <cstddef>
#include <functional>

namespace orrery {

/// Calls work(0) … work(count − 1) at the same time, work(0) on the calling thread, and returns when all have returned.
///
/// For pure calculations that the main thread waits for: the other threads live no longer than the call, and no signal
/// is delivered to them. A part for which the system gives no thread runs on the calling one after work(0).
/// An exception of a part leaves the call after all have ended; of several that of the lowest part.
void runTogether(unsigned count, const std::function<void(unsigned)>& work);

/// Calls work() on another thread, and waiting() on this one every few milliseconds until work() has returned. An
/// exception of either leaves the call then. Where the system gives no thread, work() runs here and nobody waits.
void runBeside(const std::function<void()>& work, const std::function<void()>& waiting);

/// Calls work() on another thread, and does not wait for it. It throws nothing and touches nothing of this thread's;
/// the program's end may cut it off. Where the system gives no thread, it runs here.
void runApart(const std::function<void()>& work);

/// How many parts a calculation is worth that can be cut into pieces of which each pays for a thread's start: at least
/// 1, at most `most` and the number of the machine's processors.
[[nodiscard]] unsigned workersFor(std::size_t pieces, unsigned most = 4);

} // namespace orrery

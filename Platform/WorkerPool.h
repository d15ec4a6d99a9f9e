#pragma once

#include "Platform/Task.h"

#include <functional>
#include <memory>
#include <mutex>

namespace Platform {

/// Threads that run work in the order in which it comes. A thread is added where none is free, up to a bound, and as long as the
/// system gives any; those that have had nothing to do for two seconds end, but for one.
class WorkerPool {
public:
    using Step = std::function<void()>;

    /// @param priority  of the threads: those for background work run where nothing else wants to
    /// @param deliver   is given, on these threads, what the work gives, as long as the pool lives
    WorkerPool(int maximumThreads, TaskPriority priority, std::function<void(Step)> deliver);
    WorkerPool(const WorkerPool&) = delete;
    WorkerPool& operator=(const WorkerPool&) = delete;

    /// Cancels the tasks of the work that runs, drops the work that waits, and gives what runs half a second to
    /// end. What does not, stuck on a disk that does not answer, is left behind and must then look at its task only.
    ~WorkerPool();

    /// Runs the work once, and delivers the step that it gives, if any. Any thread.
    void run(const Task& task, std::function<Step()> work);

private:
    struct State;

    static void addThread(const std::shared_ptr<State>& state);
    static bool waitForWork(State& state, std::unique_lock<std::mutex>& lock);
    static void serve(const std::shared_ptr<State>& state);

    const std::shared_ptr<State> m_state; // shared with the threads, which may outlive the pool
};

} // namespace Platform

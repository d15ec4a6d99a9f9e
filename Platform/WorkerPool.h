#pragma once

#include "Platform/Task.h"

#include <condition_variable>
#include <deque>
#include <functional>
#include <list>
#include <mutex>
#include <thread>
#include <vector>

namespace Platform {

/// Threads that run work in the order in which it comes. A thread is added where none is free, up to a bound.
class WorkerPool {
public:
    /// @param niceness  the threads' priority for the operating system: 19 is the lowest, 0 the process's own
    WorkerPool(int maximumThreads, int niceness) : m_maximumThreads(maximumThreads), m_niceness(niceness) {}
    WorkerPool(const WorkerPool&) = delete;
    WorkerPool& operator=(const WorkerPool&) = delete;

    /// Cancels the tasks of the work that runs, drops the work that waits, and returns when all threads have ended.
    ~WorkerPool();

    /// Runs the work once. Any thread.
    void run(const Task& task, std::function<void()> work);

private:
    struct Job {
        Task task;
        std::function<void()> work;
    };

    void serve();

    const int m_maximumThreads;
    const int m_niceness;
    std::mutex m_mutex; // guards all below
    std::condition_variable m_hasWork;
    std::deque<Job> m_waiting;
    std::list<Task> m_running;
    std::vector<std::thread> m_threads;
    std::size_t m_idleThreads = 0;
    bool m_isEnding = false;
};

} // namespace Platform

#include "Platform/WorkerPool.h"

#include <sys/resource.h>
#include <unistd.h>

namespace Platform {

WorkerPool::~WorkerPool() {
    {
        const std::lock_guard lock(m_mutex);
        m_isEnding = true;
        m_waiting.clear();
        for (const Task& task : m_running) {
            task.cancel();
        }
    }
    m_hasWork.notify_all();
    for (std::thread& thread : m_threads) {
        thread.join();
    }
}

void WorkerPool::run(const Task& task, std::function<void()> work) {
    {
        const std::lock_guard lock(m_mutex);
        m_waiting.push_back({task, std::move(work)});
        if (m_waiting.size() > m_idleThreads && m_threads.size() < static_cast<std::size_t>(m_maximumThreads)) {
            m_threads.emplace_back(&WorkerPool::serve, this);
        }
    }
    m_hasWork.notify_one();
}

void WorkerPool::serve() {
    if (m_niceness != 0) {
        // On Linux a thread has a niceness of its own; lowering its priority is always allowed.
        setpriority(PRIO_PROCESS, static_cast<id_t>(gettid()), m_niceness);
    }
    std::unique_lock lock(m_mutex);
    while (true) {
        ++m_idleThreads;
        m_hasWork.wait(lock, [this] { return m_isEnding || !m_waiting.empty(); });
        --m_idleThreads;
        if (m_isEnding) {
            return;
        }
        Job job = std::move(m_waiting.front());
        m_waiting.pop_front();
        const auto running = m_running.insert(m_running.end(), job.task);
        lock.unlock();
        job.work();
        job.work = nullptr; // what it holds is released outside the lock
        lock.lock();
        m_running.erase(running);
    }
}

} // namespace Platform

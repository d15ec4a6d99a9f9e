#include "Platform/WorkerPool.h"

#include <sys/resource.h>
#include <unistd.h>

#include <chrono>
#include <condition_variable>
#include <deque>
#include <list>
#include <mutex>
#include <thread>

namespace Platform {

namespace {

constexpr std::chrono::seconds patienceAtTheEnd{1};

struct Job {
    Task task;
    std::function<void()> work;
};

} // namespace

struct WorkerPool::State {
    State(int threadLimit, int threadNiceness) : maximumThreads(threadLimit), niceness(threadNiceness) {}

    const int maximumThreads;
    const int niceness;
    std::mutex mutex; // guards all below
    std::condition_variable hasWork;
    std::condition_variable hasEnded;
    std::deque<Job> waiting;
    std::list<Task> running;
    int threads = 0;
    int idleThreads = 0;
    bool isEnding = false;
};

WorkerPool::WorkerPool(int maximumThreads, int niceness)
    : m_state(std::make_shared<State>(maximumThreads, niceness)) {}

WorkerPool::~WorkerPool() {
    std::deque<Job> dropped; // released outside the lock
    std::unique_lock lock(m_state->mutex);
    m_state->isEnding = true;
    dropped.swap(m_state->waiting);
    for (const Task& task : m_state->running) {
        task.cancel();
    }
    m_state->hasWork.notify_all();
    m_state->hasEnded.wait_for(lock, patienceAtTheEnd, [this] { return m_state->threads == 0; });
}

void WorkerPool::run(const Task& task, std::function<void()> work) {
    {
        const std::lock_guard lock(m_state->mutex);
        m_state->waiting.push_back({task, std::move(work)});
        if (std::ssize(m_state->waiting) > m_state->idleThreads &&
            m_state->threads < m_state->maximumThreads) {
            std::thread(&WorkerPool::serve, m_state).detach();
            ++m_state->threads;
        }
    }
    m_state->hasWork.notify_one();
}

void WorkerPool::serve(const std::shared_ptr<State>& state) {
    if (state->niceness != 0) {
        // On Linux a thread has a niceness of its own; lowering its priority is always allowed.
        setpriority(PRIO_PROCESS, static_cast<id_t>(gettid()), state->niceness);
    }
    std::unique_lock lock(state->mutex);
    while (true) {
        ++state->idleThreads;
        state->hasWork.wait(lock, [&] { return state->isEnding || !state->waiting.empty(); });
        --state->idleThreads;
        if (state->isEnding) {
            break;
        }
        Job job = std::move(state->waiting.front());
        state->waiting.pop_front();
        const auto running = state->running.insert(state->running.end(), job.task);
        lock.unlock();
        job.work();
        job.work = nullptr; // what it holds is released outside the lock
        lock.lock();
        state->running.erase(running);
    }
    --state->threads;
    state->hasEnded.notify_all();
}

} // namespace Platform

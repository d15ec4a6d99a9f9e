#include "Platform/WorkerPool.h"

#include <sched.h>
#include <sys/resource.h>
#include <unistd.h>

#include <chrono>
#include <condition_variable>
#include <deque>
#include <list>
#include <mutex>
#include <system_error>
#include <thread>
#include <utility>

namespace Platform {

namespace {

// A cancelled decode ends within milliseconds. What does not end in this time is stuck; the application must not seem so.
constexpr std::chrono::milliseconds patienceAtTheEnd{500};

// As long as somebody walks from photo to photo, threads are needed again at once.
constexpr std::chrono::seconds idleTime{2};

struct Job {
    Task task;
    std::function<WorkerPool::Step()> work;
};

/// Lets the calling thread, and those that it will make, run where nothing else wants to. To be merely nice would not do:
/// a core with a nice thread counts as taken, and whoever wakes up queues elsewhere behind others; one with an idle
/// thread counts as free.
void becomeIdle() {
    const sched_param parameters{};
    if (sched_setscheduler(0, SCHED_IDLE, &parameters) != 0) {
        constexpr int nicest = 19;
        setpriority(PRIO_PROCESS, static_cast<id_t>(gettid()), nicest); // of this thread alone
    }
}

} // namespace

struct WorkerPool::State {
    State(int threadLimit, TaskPriority threadPriority, std::function<void(Step)> delivery)
        : maximumThreads(threadLimit), priority(threadPriority), deliver(std::move(delivery)) {}

    const int maximumThreads;
    const TaskPriority priority;
    const std::function<void(Step)> deliver; // not called any more once the pool is ending
    std::mutex mutex;                        // guards all below
    std::condition_variable hasWork;
    std::condition_variable hasEnded;
    std::deque<Job> waiting;
    std::list<Task> running;
    int threads = 0;
    int idleThreads = 0;
    bool isEnding = false;
};

/// Waits until there is work. False where the thread is to end: with the pool, or because it had nothing to do and another
/// waits as well.
bool WorkerPool::waitForWork(State& state, std::unique_lock<std::mutex>& lock) {
    const auto isOver = [&] { return state.isEnding || !state.waiting.empty(); };
    ++state.idleThreads;
    if (!state.hasWork.wait_for(lock, idleTime, isOver)) {
        if (state.idleThreads > 1) {
            --state.idleThreads;
            return false;
        }
        state.hasWork.wait(lock, isOver);
    }
    --state.idleThreads;
    return !state.isEnding;
}

WorkerPool::WorkerPool(int maximumThreads, TaskPriority priority, std::function<void(Step)> deliver)
    : m_state(std::make_shared<State>(maximumThreads, priority, std::move(deliver))) {}

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

void WorkerPool::run(const Task& task, std::function<Step()> work) {
    {
        const std::lock_guard lock(m_state->mutex);
        m_state->waiting.push_back({task, std::move(work)});
        if (std::ssize(m_state->waiting) > m_state->idleThreads &&
            m_state->threads < m_state->maximumThreads) {
            addThread(m_state);
        }
    }
    m_state->hasWork.notify_one();
}

/// Where the system gives no more threads, what waits is for those that there are.
void WorkerPool::addThread(const std::shared_ptr<State>& state) {
    try {
        std::thread(&WorkerPool::serve, state).detach();
        ++state->threads;
    } catch (const std::system_error&) {
        // another is tried when more work comes
    }
}

void WorkerPool::serve(const std::shared_ptr<State>& state) {
    if (state->priority == TaskPriority::Background) {
        becomeIdle();
    }
    std::unique_lock lock(state->mutex);
    while (waitForWork(*state, lock)) {
        Job job = std::move(state->waiting.front());
        state->waiting.pop_front();
        const auto running = state->running.insert(state->running.end(), job.task);
        lock.unlock();
        Step step = job.work();
        job.work = nullptr; // what it holds is released outside the lock
        lock.lock();
        state->running.erase(running);
        if (step && !state->isEnding) {
            state->deliver(std::move(step));
        }
    }
    --state->threads;
    state->hasEnded.notify_all();
}

} // namespace Platform

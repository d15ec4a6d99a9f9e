#include "Platform/ImageDecoder/AbandonableThread.h"

#include <pthread.h>
#include <sched.h>
#include <time.h>

#include <atomic>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <system_error>
#include <thread>
#include <utility>

namespace Platform {

namespace {

// How soon a cancellation is seen, which is a mark that wakes nobody.
constexpr std::chrono::milliseconds interval{2};

// Each may hold as much memory as a decode takes, so those that hang must not become ever more. Those that wait for a disk are
// among them, and are many where it does not answer.
constexpr int maximumLeftThreads = 64;
std::atomic<int> leftThreads = 0; // of the process, whose memory they take

/// False where still too many are left after so long, or nobody wants to wait any more.
bool waitForLeftThreads(const Task& task, std::chrono::nanoseconds patience) {
    const auto end = std::chrono::steady_clock::now() + patience;
    while (leftThreads >= maximumLeftThreads) {
        if (task.isCancelled() || std::chrono::steady_clock::now() >= end) {
            return false;
        }
        std::this_thread::sleep_for(interval);
    }
    return true;
}

/// What the one who waits and the thread share.
struct Ending {
    std::mutex mutex;
    std::condition_variable changed;
    bool hasCome = false;
    bool isLeft = false; ///< whether nobody waits for it any more
};

std::chrono::nanoseconds processorTime(std::thread& thread) {
    clockid_t clock{};
    timespec time{};
    if (pthread_getcpuclockid(thread.native_handle(), &clock) != 0 || clock_gettime(clock, &time) != 0) {
        return {};
    }
    return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
}

void leaveToItself(std::thread& thread) {
    const sched_param parameters{};
    pthread_setschedparam(thread.native_handle(), SCHED_IDLE, &parameters); // where it fails, it costs a core
    thread.detach();
}

} // namespace

bool runAbandonably(
    std::function<void(const Task&)> work, const Task& task, std::chrono::nanoseconds patience) {
    if (!waitForLeftThreads(task, patience)) {
        return false;
    }
    const auto ending = std::make_shared<Ending>();
    const Task own;
    std::thread thread;
    try {
        thread = std::thread([ending, own, work = std::move(work)] {
            work(own);
            const std::lock_guard lock(ending->mutex);
            ending->hasCome = true;
            leftThreads -= ending->isLeft ? 1 : 0;
            ending->changed.notify_one();
        });
    } catch (const std::system_error&) {
        return false;
    }
    std::unique_lock lock(ending->mutex);
    while (!ending->changed.wait_for(lock, interval, [&] { return ending->hasCome; })) {
        if (task.isCancelled() || processorTime(thread) > patience) {
            own.cancel();
            ending->isLeft = true;
            ++leftThreads;
            leaveToItself(thread);
            return false;
        }
    }
    lock.unlock();
    thread.join();
    return true;
}

} // namespace Platform

#pragma once

#include "Platform/Task.h"
#include "Platform/WorkerPool.h"

#include <QObject>
#include <QTimer>

#include <deque>
#include <mutex>

namespace Platform {

/// Runs work on threads of its own: user-initiated work on threads of normal priority, background work on threads of
/// the lowest. Sleeps by the real clock. Made and destroyed on the main thread, whose event loop must run for
/// deliveries. The destructor cancels what is under way and waits for it, but not for work that is stuck in the operating
/// system: that finds its task cancelled and touches nothing when it comes back.
///
/// Where no work has come or ended, and no sleep either, for two seconds, it gives back to the system what has been freed in the
/// heaps.
class SystemTaskScheduler final : public TaskScheduler {
public:
    SystemTaskScheduler();

protected:
    void runDetached(const Task& task, TaskPriority priority, std::function<Step()> work) override;
    void runLater(std::chrono::nanoseconds duration, Step step) override;

private:
    /// Steps on their way to the main thread, one for each event posted. From then on they are the main thread's alone, which also
    /// destroys them: a thread that posts a function object directly may be the last to let go of it.
    class MainThreadSteps final : public QObject {
    public:
        /// Called on any thread.
        void add(Step step);
        /// Runs the next one.
        bool event(QEvent* event) override;

    private:
        std::mutex m_mutex;
        std::deque<Step> m_steps;
    };

    std::function<void(Step)> toMainThread();
    void run(const Step& step);
    void giveBackMemory();

    // Steps that are still queued are dropped with it. It outlives the pools, whose threads add to it.
    MainThreadSteps m_mainThread;
    WorkerPool m_userInitiated;
    WorkerPool m_background;
    QTimer m_rest; // runs out when there has been no work for a while
};

} // namespace Platform

#pragma once

#include <QObject>

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <utility>

namespace Platform {

enum class TaskPriority {
    UserInitiated, ///< somebody is waiting for the result
    Background,    ///< gives way to everything else on the machine
};

/// A handle of one piece of background work. Copies stand for the same work and are equal; each piece of work has a
/// mark of its own. Dropping the handle does not cancel. Any thread may cancel and ask.
class Task {
public:
    void cancel() const { m_isCancelled->store(true, std::memory_order_relaxed); }
    bool isCancelled() const { return m_isCancelled->load(std::memory_order_relaxed); }

    friend bool operator==(const Task&, const Task&) = default;

private:
    std::shared_ptr<std::atomic<bool>> m_isCancelled = std::make_shared<std::atomic<bool>>(false);
};

/// Cancels the task where there is one.
inline void cancel(const std::optional<Task>& task) {
    if (task) {
        task->cancel();
    }
}

/// Where background work and sleeps go. Work leaves the main thread as a value and comes back as a value; it is
/// delivered on the main thread, and only where its task has not been cancelled by then.
///
/// detached() and sleep() are called on the main thread. What they deliver to must still be there then: an owner that
/// may go cancels its tasks first, or is held weakly.
///
/// An object, so that the screen can be handed one and pass it on.
class TaskScheduler : public QObject {
    Q_OBJECT

public:
    /// Runs work(task) off the main thread and then hands its result to deliver(result) on the main thread.
    /// Work looks at task.isCancelled() now and then and may return anything once it is: the result is dropped.
    /// @return the task, new or the one given
    template <typename Work, typename Deliver>
    Task detached(TaskPriority priority, Work work, Deliver deliver, Task task = {}) {
        runDetached(task, priority, [task, work = std::move(work), deliver = std::move(deliver)]() -> Step {
            if (task.isCancelled()) {
                return {};
            }
            auto result = work(task);
            if (task.isCancelled()) {
                return {};
            }
            return [task, deliver, result = std::move(result)] {
                if (!task.isCancelled()) {
                    deliver(result);
                }
            };
        });
        return task;
    }

    /// Calls deliver() on the main thread once the duration has passed, unless the task is cancelled first.
    /// @return the task, new or the one given
    template <typename Deliver>
    Task sleep(std::chrono::nanoseconds duration, Deliver deliver, Task task = {}) {
        runLater(duration, [task, deliver = std::move(deliver)] {
            if (!task.isCancelled()) {
                deliver();
            }
        });
        return task;
    }

protected:
    /// What is to be done on the main thread; may be empty.
    using Step = std::function<void()>;

    /// Runs the work once, on some other thread, and the step that it gives on a later turn of the main thread's event loop, as
    /// long as this object lives. The task is given for shutting down early.
    virtual void runDetached(const Task& task, TaskPriority priority, std::function<Step()> work) = 0;

    /// Runs the step once on the main thread after the duration. Called on the main thread.
    virtual void runLater(std::chrono::nanoseconds duration, Step step) = 0;
};

} // namespace Platform

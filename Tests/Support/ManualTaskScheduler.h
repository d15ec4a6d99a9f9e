#pragma once

#include "Platform/Task.h"

#include <deque>
#include <vector>

/// A scheduler on which nothing happens until the test says so: work waits until it is run, deliveries until they
/// are made, and the clock is moved by hand. All on the test's own thread.
class ManualTaskScheduler final : public Platform::TaskScheduler {
public:
    /// Pieces of work that wait, cancelled ones left out.
    int waiting(Platform::TaskPriority priority) const;

    /// Runs the oldest work of that priority that has not been cancelled. Its delivery waits.
    void runNext(Platform::TaskPriority priority);

    /// Makes the deliveries that wait.
    void deliver();

    /// Runs and delivers whatever there is, until nothing waits any more. The clock stands still.
    void runAll();

    /// Lets time pass; steps that come due on the way run in the order of their times.
    void advance(std::chrono::nanoseconds duration);

protected:
    void runDetached(
        const Platform::Task& task, Platform::TaskPriority priority, std::function<Step()> work) override;
    void runLater(std::chrono::nanoseconds duration, Step step) override;

private:
    struct Work {
        Platform::Task task;
        Platform::TaskPriority priority;
        std::function<Step()> run;
    };
    struct Sleep {
        std::chrono::nanoseconds due;
        Step step;
    };

    void run(const Work& work);

    std::deque<Work> m_work;
    std::deque<Step> m_deliveries;
    std::vector<Sleep> m_sleeps;
    std::chrono::nanoseconds m_now{0};
};

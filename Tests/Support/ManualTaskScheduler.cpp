#include "Tests/Support/ManualTaskScheduler.h"

#include <algorithm>
#include <stdexcept>

using Platform::Task;
using Platform::TaskPriority;

int ManualTaskScheduler::waiting(TaskPriority priority) const {
    return static_cast<int>(std::ranges::count_if(
        m_work, [&](const Work& work) { return work.priority == priority && !work.task.isCancelled(); }));
}

void ManualTaskScheduler::runNext(TaskPriority priority) {
    const auto next = std::ranges::find_if(
        m_work, [&](const Work& work) { return work.priority == priority && !work.task.isCancelled(); });
    if (next == m_work.end()) {
        throw std::logic_error("no work is waiting");
    }
    const Work work = std::move(*next);
    m_work.erase(next);
    run(work);
}

void ManualTaskScheduler::run(const Work& work) {
    if (Step step = work.run()) {
        m_deliveries.push_back(std::move(step));
    }
}

void ManualTaskScheduler::deliver() {
    while (!m_deliveries.empty()) {
        const auto step = std::move(m_deliveries.front());
        m_deliveries.pop_front();
        step();
    }
}

void ManualTaskScheduler::runAll() {
    deliver();
    while (!m_work.empty()) {
        const Work work = std::move(m_work.front());
        m_work.pop_front();
        run(work);
        deliver();
    }
}

void ManualTaskScheduler::advance(std::chrono::nanoseconds duration) {
    const auto end = m_now + duration;
    while (true) {
        const auto next = std::ranges::min_element(m_sleeps, {}, &Sleep::due);
        if (next == m_sleeps.end() || next->due > end) {
            break;
        }
        const Sleep sleep = std::move(*next);
        m_sleeps.erase(next);
        m_now = sleep.due;
        sleep.step();
    }
    m_now = end;
}

void ManualTaskScheduler::runDetached(const Task& task, TaskPriority priority, std::function<Step()> work) {
    m_work.push_back({task, priority, std::move(work)});
}

void ManualTaskScheduler::runLater(std::chrono::nanoseconds duration, Step step) {
    m_sleeps.push_back({m_now + duration, std::move(step)});
}

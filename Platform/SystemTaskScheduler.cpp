#include "Platform/SystemTaskScheduler.h"

#include <QTimer>

namespace Platform {

namespace {

// A cancelled decode makes room at once, so a few threads would do; the rest are for reads that a dead network or a
// dying disk does not return from, which must not hold up the photos elsewhere.
constexpr int maximumThreads = 256;

} // namespace

SystemTaskScheduler::SystemTaskScheduler()
    : m_userInitiated(maximumThreads, TaskPriority::UserInitiated),
      m_background(maximumThreads, TaskPriority::Background) {}

void SystemTaskScheduler::runDetached(const Task& task, TaskPriority priority, std::function<void()> work) {
    WorkerPool& pool = priority == TaskPriority::Background ? m_background : m_userInitiated;
    pool.run(task, std::move(work));
}

void SystemTaskScheduler::runOnMain(std::function<void()> step) {
    QMetaObject::invokeMethod(&m_mainThread, std::move(step), Qt::QueuedConnection);
}

void SystemTaskScheduler::runLater(std::chrono::nanoseconds duration, std::function<void()> step) {
    const auto milliseconds = std::chrono::ceil<std::chrono::milliseconds>(duration);
    QTimer::singleShot(milliseconds, Qt::PreciseTimer, &m_mainThread, std::move(step));
}

} // namespace Platform

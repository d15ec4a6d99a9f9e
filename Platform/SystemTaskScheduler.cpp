#include "Platform/SystemTaskScheduler.h"

#include "Platform/Heaps.h"

#include <QCoreApplication>
#include <QEvent>

#include <utility>

namespace Platform {

namespace {

// A cancelled decode makes room at once, so a few threads would do; the rest are for reads that a dead network or a
// dying disk does not return from, which must not hold up the photos elsewhere: as many as a held key leaves in half a minute.
constexpr int maximumThreads = 1024;

constexpr std::chrono::seconds restTime{2};

constexpr auto stepEvent = QEvent::User;

} // namespace

SystemTaskScheduler::SystemTaskScheduler()
    : m_userInitiated(maximumThreads, TaskPriority::UserInitiated, toMainThread()),
      m_background(maximumThreads, TaskPriority::Background, toMainThread()) {
    m_rest.setSingleShot(true);
    m_rest.setInterval(restTime);
    QObject::connect(&m_rest, &QTimer::timeout, this, &SystemTaskScheduler::giveBackMemory);
}

auto SystemTaskScheduler::toMainThread() -> std::function<void(Step)> {
    return [this](Step step) { m_mainThread.add([this, step = std::move(step)] { run(step); }); };
}

void SystemTaskScheduler::run(const Step& step) {
    step();
    m_rest.start();
}

/// What decodes, and folders and choosers that were closed, have left in the heaps goes back to the system while the user looks at a
/// photo. It takes a frame's time, and locks the heaps meanwhile: neither the main thread may do it, nor one that may get no core.
void SystemTaskScheduler::giveBackMemory() {
    m_userInitiated.run(Task(), []() -> Step {
        trimHeaps();
        return {};
    });
}

void SystemTaskScheduler::MainThreadSteps::add(Step step) {
    {
        const std::lock_guard lock(m_mutex);
        m_steps.push_back(std::move(step));
    }
    QCoreApplication::postEvent(this, new QEvent(stepEvent)); // which owns it
}

bool SystemTaskScheduler::MainThreadSteps::event(QEvent* event) {
    if (event->type() != stepEvent) {
        return QObject::event(event);
    }
    std::unique_lock lock(m_mutex);
    const auto step = std::move(m_steps.front());
    m_steps.pop_front();
    lock.unlock();
    step();
    return true;
}

void SystemTaskScheduler::runDetached(const Task& task, TaskPriority priority, std::function<Step()> work) {
    WorkerPool& pool = priority == TaskPriority::Background ? m_background : m_userInitiated;
    pool.run(task, std::move(work));
    m_rest.start();
}

void SystemTaskScheduler::runLater(std::chrono::nanoseconds duration, Step step) {
    const auto milliseconds = std::chrono::ceil<std::chrono::milliseconds>(duration);
    QTimer::singleShot(
        milliseconds, Qt::PreciseTimer, &m_mainThread, [this, step = std::move(step)] { run(step); });
}

} // namespace Platform

#include "Platform/ImageDecoder/ThreadTeam.h"

#include <algorithm>
#include <chrono>
#include <new>

namespace Platform {

namespace {

/// Tells the processor that this is a loop that waits.
void pause() {
#if defined(__x86_64__)
    __builtin_ia32_pause();
#elif defined(__aarch64__)
    asm volatile("yield");
#endif
}

/// The processor cores that this thread may use; none where the system does not say.
cpu_set_t allowedCores() {
    cpu_set_t cores;
    CPU_ZERO(&cores);
    sched_getaffinity(0, sizeof cores, &cores);
    return cores;
}

/// Waits until the value is such a one, and gives it. To be woken takes longer than most waits of a team at work, so it is
/// looked at for a while first, without sleep.
template <typename IsSuch>
quint32 waitFor(const std::atomic<quint32>& value, const IsSuch& isSuch) {
    constexpr std::chrono::microseconds patience{300};
    const auto end = std::chrono::steady_clock::now() + patience;
    quint32 now = value;
    do {
        for (int i = 0; i < 64 && !isSuch(now); ++i) {
            pause();
            now = value;
        }
    } while (!isSuch(now) && std::chrono::steady_clock::now() < end);
    while (!isSuch(now)) {
        value.wait(now);
        now = value;
    }
    return now;
}

} // namespace

int ThreadTeam::availableCores() {
    const cpu_set_t cores = allowedCores();
    return std::max(CPU_COUNT(&cores), 1);
}

// Not before there is something to do: a photo whose disk does not answer takes no more than the thread that waits for it.
// A new thread is often put where the one is that made it, and has to wait there until the system moves it, which may take
// longer than all of the work. So a helper begins its life elsewhere.
void ThreadTeam::makeHelpers() {
    m_hasMadeHelpers = true;
    m_cores = allowedCores();
    cpu_set_t others = m_cores;
    const int own = sched_getcpu();
    if (own >= 0 && CPU_COUNT(&others) > 1) {
        CPU_CLR(own, &others);
    }
    m_helpers.reserve(static_cast<std::size_t>(m_size)); // no helper may be made and then not be waited for
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    pthread_attr_setaffinity_np(&attributes, sizeof others, &others);
    for (int member = 1; member < m_size; ++member) {
        pthread_t helper{};
        if (pthread_create(&helper, &attributes, &ThreadTeam::begin, this) != 0) {
            break; // the work is done by those that there are
        }
        m_helpers.push_back(helper);
    }
    pthread_attr_destroy(&attributes);
}

ThreadTeam::~ThreadTeam() {
    m_isEnding = true;
    m_door += onePiece;
    m_door.notify_all();
    for (const pthread_t helper : m_helpers) {
        pthread_join(helper, nullptr);
    }
}

void* ThreadTeam::begin(void* team) {
    auto& self = *static_cast<ThreadTeam*>(team);
    pthread_setaffinity_np(pthread_self(), sizeof self.m_cores, &self.m_cores);
    self.help();
    return nullptr;
}

void ThreadTeam::run(const std::function<void()>& body) {
    if (!m_hasMadeHelpers) {
        makeHelpers();
    }
    m_body = &body;
    m_door += onePiece | isOpen;
    m_door.notify_all();
    work();
    close();
    if (m_lacksMemory.exchange(false)) {
        throw std::bad_alloc();
    }
}

void ThreadTeam::work() {
    try {
        (*m_body)();
    } catch (const std::bad_alloc&) {
        m_lacksMemory = true;
    }
}

/// Ends the piece of work, once all who are at it have left.
void ThreadTeam::close() {
    m_door &= ~isOpen;
    waitFor(m_door, [](quint32 door) { return (door & insideMask) == 0; });
}

void ThreadTeam::help() {
    quint32 piece = 0;
    while (true) {
        piece = waitFor(m_door, [piece](quint32 door) { return (door & pieceMask) != piece; }) & pieceMask;
        if (m_isEnding) {
            return;
        }
        if (enter(piece)) {
            work();
            leave();
        }
    }
}

/// False where the piece has ended without this helper.
bool ThreadTeam::enter(quint32 piece) {
    quint32 door = m_door;
    while ((door & pieceMask) == piece && (door & isOpen) != 0) {
        if (m_door.compare_exchange_weak(door, door + oneInside)) {
            return true;
        }
    }
    return false;
}

void ThreadTeam::leave() {
    const quint32 door = m_door -= oneInside;
    if ((door & (insideMask | isOpen)) == 0) {
        m_door.notify_all();
    }
}

} // namespace Platform

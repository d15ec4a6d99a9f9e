#include "Platform/ImageDecoder/ThreadTeam.h"

#include <sched.h>

#include <algorithm>
#include <chrono>
#include <system_error>

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

/// Waits until the value is another. To be woken takes longer than most waits of a team at work, so it is looked at for a
/// while first, without sleep.
void waitForChange(const std::atomic<int>& value, int old) {
    constexpr std::chrono::microseconds patience{300};
    const auto end = std::chrono::steady_clock::now() + patience;
    do {
        for (int i = 0; i < 64; ++i) {
            if (value != old) {
                return;
            }
            pause();
        }
    } while (std::chrono::steady_clock::now() < end);
    value.wait(old);
}

} // namespace

int ThreadTeam::availableCores() {
    cpu_set_t cores;
    if (sched_getaffinity(0, sizeof cores, &cores) == 0) {
        return std::max(CPU_COUNT(&cores), 1);
    }
    return std::max(static_cast<int>(std::thread::hardware_concurrency()), 1);
}

ThreadTeam::ThreadTeam(int size) {
    try {
        while (this->size() < size) {
            m_helpers.emplace_back(&ThreadTeam::help, this);
        }
    } catch (const std::system_error&) {
        // The work is done by those that there are.
    }
}

ThreadTeam::~ThreadTeam() {
    m_isEnding = true;
    ++m_piece;
    m_piece.notify_all();
    for (std::thread& helper : m_helpers) {
        helper.join();
    }
}

void ThreadTeam::run(const std::function<void()>& body) {
    m_body = &body;
    m_working = static_cast<int>(m_helpers.size());
    ++m_piece;
    m_piece.notify_all();
    body();
    for (int working = m_working; working > 0; working = m_working) {
        waitForChange(m_working, working);
    }
}

void ThreadTeam::help() {
    for (int piece = 0;; ++piece) {
        waitForChange(m_piece, piece);
        if (m_isEnding) {
            return;
        }
        (*m_body)();
        if (--m_working == 0) {
            m_working.notify_one();
        }
    }
}

} // namespace Platform

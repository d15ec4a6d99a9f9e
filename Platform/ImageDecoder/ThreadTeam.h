#pragma once

#include <QtGlobal>

#include <pthread.h>
#include <sched.h>

#include <atomic>
#include <functional>
#include <vector>

namespace Platform {

/// A few threads that share one piece of work after the other: the calling thread and helpers of its priority, which
/// live from the first piece to the end of this object. Between two pieces the helpers sleep. Used by one thread.
class ThreadTeam {
public:
    /// The processor cores that the calling thread may use.
    static int availableCores();

    /// @param size  members in all, the caller included; fewer where the system gives no more threads
    explicit ThreadTeam(int size) : m_size(size) {}
    ~ThreadTeam();
    ThreadTeam(const ThreadTeam&) = delete;
    ThreadTeam& operator=(const ThreadTeam&) = delete;

    /// Calls body() on the calling thread, and once on each helper that comes while it runs there; returns when all of them
    /// have returned. Nobody waits for a helper that the system does not let run: the calling thread alone must be able to do
    /// all of the work. std::bad_alloc, the only exception that a body may throw, comes out here, whoever threw it.
    void run(const std::function<void()>& body);

    /// Calls body(index) for each index from 0 to count - 1, each on the member that is free first.
    template <typename Body>
    void forEach(int count, const Body& body) {
        std::atomic<int> next = 0;
        const auto share = [&] {
            for (int index = next++; index < count; index = next++) {
                body(index);
            }
        };
        if (count == 1) {
            share();
        } else {
            run(share);
        }
    }

private:
    // The parts of m_door.
    static constexpr quint32 isOpen = 1; ///< to helpers
    static constexpr quint32 oneInside = 2;
    static constexpr quint32 insideMask = 0xffe;
    static constexpr quint32 onePiece = 0x1000;
    static constexpr quint32 pieceMask = ~(isOpen | insideMask);

    void makeHelpers();
    static void* begin(void* team);
    void help();
    void work();
    bool enter(quint32 piece);
    void leave();
    void close();

    const int m_size;
    const std::function<void()>* m_body = nullptr;
    std::atomic<quint32> m_door =
        0; // to the latest piece of work: its number, helpers inside, and whether more may enter
    std::atomic<bool> m_isEnding = false;
    std::atomic<bool> m_lacksMemory = false; // any of those at the present piece
    cpu_set_t m_cores{};                     // that the calling thread may use
    bool m_hasMadeHelpers = false;
    std::vector<pthread_t> m_helpers;
};

} // namespace Platform

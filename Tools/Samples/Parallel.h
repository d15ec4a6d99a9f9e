#pragma once

#include <algorithm>
#include <atomic>
#include <thread>
#include <vector>

/// Does work(0) to work(count - 1) on all cores, in no particular order, and returns when all are done.
template <typename Work>
void inParallel(int count, const Work& work) {
    std::atomic<int> next = 0;
    const auto takeTurns = [&] {
        for (int i = next++; i < count; i = next++) {
            work(i);
        }
    };
    const int helpers =
        std::min(count, static_cast<int>(std::max(1U, std::thread::hardware_concurrency()))) - 1;
    std::vector<std::jthread> threads;
    threads.reserve(helpers);
    for (int i = 0; i < helpers; ++i) {
        threads.emplace_back(takeTurns);
    }
    takeTurns();
}

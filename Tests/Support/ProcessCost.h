#pragma once

#include <QtGlobal>

#include <chrono>

/// What the process has spent since this was made: for work whose cost has a bound.
class ProcessCost {
public:
    ProcessCost();

    /// Processor time of all threads, but for what the kernel takes: to find memory takes it long where there is little.
    std::chrono::nanoseconds processorTime() const;

    /// Bytes of memory at the worst moment, beyond what there was at the beginning.
    qint64 memory() const;

private:
    std::chrono::nanoseconds m_processorTime;
    qint64 m_memory;
};

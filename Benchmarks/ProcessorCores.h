#pragma once

#include <vector>

/// The processor cores that this process might use when this was made.
class ProcessorCores {
public:
    ProcessorCores();

    int count() const { return static_cast<int>(m_cores.size()); }

    /// Keeps every thread of this process, and those that they start, on the first so many of the cores.
    void keepTo(int count) const;

private:
    std::vector<int> m_cores; // as the system numbers them
};

#pragma once

#include <chrono>
#include <istream>

/// What the host of a virtual machine has taken from it so far: time in which its processors had work and were given to others.
struct StolenTime {
    std::chrono::nanoseconds total{}; ///< of all processors together; 0 on a machine of its own
    int processors = 0;

    /// What each processor lacks on the average.
    std::chrono::nanoseconds average() const { return processors > 0 ? total / processors : total; }
};

/// By what /proc/stat says (proc(5)).
StolenTime stolenTime(std::istream& stat);
StolenTime stolenTime();

/// Time as this machine had it: what its host took from it, on the average of its processors, does not count, since nothing that
/// runs here can help it. A clock as the standard library has them.
class MachineClock {
public:
    using duration = std::chrono::nanoseconds;
    using rep = duration::rep;
    using period = duration::period;
    using time_point = std::chrono::time_point<MachineClock>;
    static constexpr bool is_steady = false; // what was taken is told in steps of 10 ms

    static time_point now();
};

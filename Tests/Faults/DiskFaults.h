#pragma once

#include <array>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <map>
#include <mutex>
#include <set>
#include <string>

/// What is asked of a disk, those calls together that go wrong together.
enum class DiskCall {
    Look,   ///< for names, attributes and the entries of a folder, and to open a file
    Read,   ///< what is in a file
    Change, ///< anything: content, names, attributes
};
inline constexpr std::array diskCallNames{"look", "read", "change"};

/// What goes wrong on a disk, and how often it was asked. Any thread.
class DiskFaults {
public:
    /// To be called before the disk does what it is asked about a file or folder of that name: waits as long as such
    /// calls take now. One that is stalled is given up when the function says so.
    /// @return 0, or the errno with which the call is to fail
    int beforeCall(DiskCall call, const std::string& name, bool (*hasGivenUp)());

    /// Does what a line of words says, from then on:
    /// - "slow CALL MILLISECONDS": each such call takes so long;
    /// - "stall CALL NAME": such calls about that name wait until they are released; without a name, all;
    /// - "release": none waits any more;
    /// - "ignore case": keeps all names in capitals, and so takes several for one;
    /// - "make up numbers": each look at a file finds another number;
    /// - "fail CALL ERRNO": such calls fail with that error, with 0 none;
    /// - "count CALL NAME": how many there were about that name;
    /// - "stalled": how many wait at this moment.
    /// @return the number asked for, or "done"
    std::string obey(const std::string& line);

    bool ignoresCase() const { return m_ignoresCase; }

    /// The number of a file that is being looked at, which the disk knows by this one.
    std::uint64_t number(std::uint64_t own) { return m_makesUpNumbers ? ++m_madeUpNumbers : own; }

private:
    struct Faults {
        std::chrono::milliseconds delay{0};
        std::set<std::string> stalledNames;
        bool isAllStalled = false;
        int error = 0;
        std::map<std::string, int> counts; // by name
    };

    Faults& faultsOf(DiskCall call) { return m_faults[static_cast<std::size_t>(call)]; }
    void release();

    std::atomic<bool> m_ignoresCase = false;
    std::atomic<bool> m_makesUpNumbers = false;
    std::atomic<std::uint64_t> m_madeUpNumbers = 1'000'000;
    std::mutex m_mutex; // guards all below
    std::condition_variable m_hasChanged;
    std::array<Faults, diskCallNames.size()> m_faults;
    int m_stalledCalls = 0;
};

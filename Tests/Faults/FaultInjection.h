#pragma once

#include <cstdint>

/// The calls to the operating system that file operations make, those of one purpose together.
enum class SystemCall : std::uint32_t {
    Open,
    Read,
    Write,
    Sync,
    Rename,
    Link,
    Unlink,
    MakeFolder,
    Status,
    OpenFolder,
    ReadFolder,
    Close
};
inline constexpr int systemCallKinds = 12;

constexpr std::uint32_t maskOf(SystemCall call) {
    return std::uint32_t{1} << static_cast<std::uint32_t>(call);
}
inline constexpr std::uint32_t allSystemCalls = (std::uint32_t{1} << systemCallKinds) - 1;

/// What is to happen at one of the calls that the process makes.
struct FaultPlan {
    enum class Action {
        Fail,       ///< the call does nothing and fails with the error
        FailDone,   ///< it fails with the error although it has done its work, as over a network
        Shorten,    ///< a read or write does one byte only
        KillBefore, ///< the process is killed instead of it
        KillAfter,  ///< or as soon as it is done
    };

    std::uint32_t calls = allSystemCalls; ///< those that count
    int atCall = 1;                       ///< which of them, from 1
    Action action = Action::Fail;
    int error = 0;          ///< an errno
    bool isLasting = false; ///< whether all later calls go the same way

    int counted = 0;          ///< of the calls so far
    bool hasHappened = false; ///< whether the call came
};

/// Follows the plan for the calls of all threads from now on; null: none any more. The plan outlives that, and is not looked at
/// meanwhile. To be had only where the library of that name is preloaded.
extern "C" [[gnu::weak]] void injectFault(FaultPlan* plan);

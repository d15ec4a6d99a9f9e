#pragma once

#include "Platform/Task.h"

#include <chrono>
#include <functional>

namespace Platform {

/// Runs work that may never return, as that of a foreign plugin on a hostile file, on a thread of its own, and waits for it as
/// long as its result is wanted. After that it is abandoned: left to itself, on a thread that runs where nothing else wants to,
/// until it ends or the process does. The work must therefore share all that it uses. Where 64 have been left and not ended, the
/// next has to wait until one does.
///
/// @param work      is given a task of its own, cancelled when it is abandoned, so that it may end
/// @param task      of the one who waits: once it is cancelled, the work is abandoned within some milliseconds
/// @param patience  the processor time that the work may take, since while it waits for a slow disk it takes none; and the time
///                  that is waited for a thread
/// @return whether the work has ended; false also where there was no thread for it
///
/// Blocking; any thread.
bool runAbandonably(
    std::function<void(const Task&)> work, const Task& task, std::chrono::nanoseconds patience);

} // namespace Platform

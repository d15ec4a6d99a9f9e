// A library to be preloaded: it stands before the calls of the C library that file operations make, and lets one of them fail
// as the plan says.
#undef _FORTIFY_SOURCE // with it the headers define some of these calls themselves

#include "Tests/Faults/FaultInjection.h"

#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdarg>
#include <cstdio>
#include <mutex>
#include <optional>
#include <type_traits>

namespace {

std::mutex mutex; // guards the plan
FaultPlan* plan = nullptr;

using Action = FaultPlan::Action;

struct Due {
    Action action;
    int error;
};

void killThisProcess() {
    kill(getpid(), SIGKILL);
}

/// What is to happen at this call; nothing where it is not the one that the plan is about.
///
/// @param isShortening  whether it asks for calls that are to do less, or for all others
std::optional<Due> due(SystemCall call, bool isShortening) {
    const std::lock_guard lock(mutex);
    if (!plan || (plan->action == Action::Shorten) != isShortening || (plan->calls & maskOf(call)) == 0) {
        return std::nullopt;
    }
    const int number = ++plan->counted;
    if (plan->isLasting ? number < plan->atCall : number != plan->atCall) {
        return std::nullopt;
    }
    plan->hasHappened = true;
    return Due{plan->action, plan->error};
}

/// Calls the function of the C library that the one of this name here stands before.
template <typename Function, typename... Arguments>
auto forward(const char* name, Arguments... arguments) {
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name))(arguments...);
}

/// Makes the call, or what happens instead.
template <typename Result, typename Real>
Result make(SystemCall call, Result failure, const Real& real) {
    const auto what = due(call, false);
    if (!what) {
        return real();
    }
    if (what->action == Action::KillBefore) {
        killThisProcess();
    }
    if (what->action == Action::Fail) {
        errno = what->error;
        return failure;
    }
    [[maybe_unused]] const Result result = real();
    if (what->action == Action::KillAfter) {
        killThisProcess();
    }
    if constexpr (std::is_same_v<Result, int>) {
        if (call == SystemCall::Open && result >= 0) {
            forward<int(int)>("close", result); // nobody gets to know of it
        }
    }
    errno = what->error;
    return failure;
}

std::size_t shortened(SystemCall call, std::size_t size) {
    return due(call, true) ? std::min(size, std::size_t{1}) : size;
}

} // namespace

void injectFault(FaultPlan* newPlan) {
    const std::lock_guard lock(mutex);
    plan = newPlan;
}

// Each function once for its plain name and once for the name with which programs call it that are built for large files: both
// are one on 64-bit systems, yet have two names.
#define BOTH(FUNCTION) FUNCTION() FUNCTION(64)

extern "C" {

#define OPEN(SUFFIX)                                                                                         \
    int open##SUFFIX(const char* name, int flags, ...) {                                                     \
        va_list rest;                                                                                        \
        va_start(rest, flags);                                                                               \
        const auto mode =                                                                                    \
            static_cast<mode_t>((flags & (O_CREAT | O_TMPFILE)) != 0 ? va_arg(rest, unsigned) : 0);          \
        va_end(rest);                                                                                        \
        return make(SystemCall::Open, -1,                                                                    \
            [&] { return forward<int(const char*, int, mode_t)>("open" #SUFFIX, name, flags, mode); });      \
    }                                                                                                        \
    int openat##SUFFIX(int folder, const char* name, int flags, ...) {                                       \
        va_list rest;                                                                                        \
        va_start(rest, flags);                                                                               \
        const auto mode =                                                                                    \
            static_cast<mode_t>((flags & (O_CREAT | O_TMPFILE)) != 0 ? va_arg(rest, unsigned) : 0);          \
        va_end(rest);                                                                                        \
        return make(SystemCall::Open, -1, [&] {                                                              \
            return forward<int(int, const char*, int, mode_t)>("openat" #SUFFIX, folder, name, flags, mode); \
        });                                                                                                  \
    }
BOTH(OPEN)

#define STATUS(SUFFIX)                                                                                       \
    int stat##SUFFIX(const char* name, struct stat##SUFFIX* status) noexcept {                               \
        return make(SystemCall::Status, -1,                                                                  \
            [&] { return forward<int(const char*, struct stat##SUFFIX*)>("stat" #SUFFIX, name, status); });  \
    }                                                                                                        \
    int lstat##SUFFIX(const char* name, struct stat##SUFFIX* status) noexcept {                              \
        return make(SystemCall::Status, -1,                                                                  \
            [&] { return forward<int(const char*, struct stat##SUFFIX*)>("lstat" #SUFFIX, name, status); }); \
    }                                                                                                        \
    int fstat##SUFFIX(int file, struct stat##SUFFIX* status) noexcept {                                      \
        return make(SystemCall::Status, -1,                                                                  \
            [&] { return forward<int(int, struct stat##SUFFIX*)>("fstat" #SUFFIX, file, status); });         \
    }                                                                                                        \
    int fstatat##SUFFIX(int folder, const char* name, struct stat##SUFFIX* status, int flags) noexcept {     \
        return make(SystemCall::Status, -1, [&] {                                                            \
            return forward<int(int, const char*, struct stat##SUFFIX*, int)>(                                \
                "fstatat" #SUFFIX, folder, name, status, flags);                                             \
        });                                                                                                  \
    }
BOTH(STATUS)

// NOLINTBEGIN(bugprone-macro-parentheses): the macro is a definition
#define READ_FOLDER(SUFFIX)                                                                                  \
    dirent##SUFFIX* readdir##SUFFIX(DIR* folder) {                                                           \
        return make(SystemCall::ReadFolder, static_cast<dirent##SUFFIX*>(nullptr),                           \
            [&] { return forward<dirent##SUFFIX*(DIR*)>("readdir" #SUFFIX, folder); });                      \
    }
// NOLINTEND(bugprone-macro-parentheses)
BOTH(READ_FOLDER)

int statx(int folder, const char* name, int flags, unsigned mask, struct statx* status) noexcept {
    return make(SystemCall::Status, -1, [&] {
        return forward<int(int, const char*, int, unsigned, struct statx*)>(
            "statx", folder, name, flags, mask, status);
    });
}

ssize_t read(int file, void* buffer, std::size_t size) {
    size = shortened(SystemCall::Read, size);
    return make(SystemCall::Read, ssize_t{-1},
        [&] { return forward<ssize_t(int, void*, std::size_t)>("read", file, buffer, size); });
}

ssize_t write(int file, const void* buffer, std::size_t size) {
    size = shortened(SystemCall::Write, size);
    return make(SystemCall::Write, ssize_t{-1},
        [&] { return forward<ssize_t(int, const void*, std::size_t)>("write", file, buffer, size); });
}

// The disk is not waited for, which would take most of the time: no test here ends by a power cut.
int fsync(int) {
    return make(SystemCall::Sync, -1, [] { return 0; });
}

int fdatasync(int) {
    return make(SystemCall::Sync, -1, [] { return 0; });
}

int rename(const char* from, const char* to) noexcept {
    return make(
        SystemCall::Rename, -1, [&] { return forward<int(const char*, const char*)>("rename", from, to); });
}

int renameat(int fromFolder, const char* from, int toFolder, const char* to) noexcept {
    return make(SystemCall::Rename, -1, [&] {
        return forward<int(int, const char*, int, const char*)>("renameat", fromFolder, from, toFolder, to);
    });
}

int renameat2(int fromFolder, const char* from, int toFolder, const char* to, unsigned flags) noexcept {
    return make(SystemCall::Rename, -1, [&] {
        return forward<int(int, const char*, int, const char*, unsigned)>(
            "renameat2", fromFolder, from, toFolder, to, flags);
    });
}

int link(const char* from, const char* to) noexcept {
    return make(
        SystemCall::Link, -1, [&] { return forward<int(const char*, const char*)>("link", from, to); });
}

int linkat(int fromFolder, const char* from, int toFolder, const char* to, int flags) noexcept {
    return make(SystemCall::Link, -1, [&] {
        return forward<int(int, const char*, int, const char*, int)>(
            "linkat", fromFolder, from, toFolder, to, flags);
    });
}

int unlink(const char* name) noexcept {
    return make(SystemCall::Unlink, -1, [&] { return forward<int(const char*)>("unlink", name); });
}

int unlinkat(int folder, const char* name, int flags) noexcept {
    return make(SystemCall::Unlink, -1,
        [&] { return forward<int(int, const char*, int)>("unlinkat", folder, name, flags); });
}

int remove(const char* name) noexcept {
    return make(SystemCall::Unlink, -1, [&] { return forward<int(const char*)>("remove", name); });
}

int mkdir(const char* name, mode_t mode) noexcept {
    return make(
        SystemCall::MakeFolder, -1, [&] { return forward<int(const char*, mode_t)>("mkdir", name, mode); });
}

int mkdirat(int folder, const char* name, mode_t mode) noexcept {
    return make(SystemCall::MakeFolder, -1,
        [&] { return forward<int(int, const char*, mode_t)>("mkdirat", folder, name, mode); });
}

DIR* opendir(const char* name) {
    return make(SystemCall::OpenFolder, static_cast<DIR*>(nullptr),
        [&] { return forward<DIR*(const char*)>("opendir", name); });
}

DIR* fdopendir(int folder) {
    return make(SystemCall::OpenFolder, static_cast<DIR*>(nullptr),
        [&] { return forward<DIR*(int)>("fdopendir", folder); });
}

int closedir(DIR* folder) {
    const int result = forward<int(DIR*)>("closedir", folder);
    return make(SystemCall::Close, -1, [result] { return result; });
}

int close(int file) {
    const int result = forward<int(int)>("close", file); // one that fails has closed all the same
    return make(SystemCall::Close, -1, [result] { return result; });
}
}

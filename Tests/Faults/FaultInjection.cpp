// A library to be preloaded: it stands before the calls of the C library that file operations make, and lets one of them fail
// as the plan of the thread says.
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

namespace {

thread_local FaultPlan* plan = nullptr;

void killThisProcess() {
    kill(getpid(), SIGKILL);
}

/// Whether it is this call that the plan is about.
bool isDue(SystemCall call) {
    if (!plan || (plan->calls & maskOf(call)) == 0 || ++plan->counted != plan->atCall) {
        return false;
    }
    plan->hasHappened = true;
    return true;
}

/// Makes the call, or what happens instead.
template <typename Result, typename Real>
Result make(SystemCall call, Result failure, const Real& real) {
    if (!plan || plan->action == FaultPlan::Action::Shorten || !isDue(call)) {
        return real();
    }
    switch (plan->action) {
    case FaultPlan::Action::Fail:
        errno = plan->error;
        return failure;
    case FaultPlan::Action::KillBefore:
        killThisProcess();
        break;
    case FaultPlan::Action::KillAfter: {
        const Result result = real();
        killThisProcess();
        return result;
    }
    case FaultPlan::Action::Shorten:
        break;
    }
    return real();
}

std::size_t shortened(SystemCall call, std::size_t size) {
    const bool isPlanned = plan && plan->action == FaultPlan::Action::Shorten;
    return isPlanned && isDue(call) ? std::min(size, std::size_t{1}) : size;
}

/// Calls the function of the C library that the one of this name here stands before.
template <typename Function, typename... Arguments>
auto forward(const char* name, Arguments... arguments) {
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name))(arguments...);
}

} // namespace

void injectFault(FaultPlan* newPlan) {
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

int fsync(int file) {
    return make(SystemCall::Sync, -1, [&] { return forward<int(int)>("fsync", file); });
}

int fdatasync(int file) {
    return make(SystemCall::Sync, -1, [&] { return forward<int(int)>("fdatasync", file); });
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

int close(int file) {
    const int result = forward<int(int)>("close", file); // one that fails has closed all the same
    return make(SystemCall::Close, -1, [result] { return result; });
}
}

/// What the sanitizers are told in every program of the asan and tsan presets. No suppression may name code of our own.

#include <dlfcn.h>
#include <sched.h>

#include <cstdarg>

/// The sanitizers call these before they are ready to follow instrumented code.
#define UNSANITIZED __attribute__((disable_sanitizer_instrumentation))

extern "C" {

/// What the toolkit and the libraries below it do not give back at a program's end.
UNSANITIZED const char* __lsan_default_suppressions();
const char* __lsan_default_suppressions() {
    return "leak:QSGTexture::QSGTexture\n" // the last window's pictures, where Qt Quick draws with the painter
           "leak:libdbus-1.so\n"           // a buffer of the connection, which the toolkit leaves open
           "leak:libwayland-client.so\n"   // what Qt's Wayland plugin made and did not destroy
           "leak:xkb_compose_state_new\n"  // the same plugin's composing of letters
           "leak:libglib-2.0.so\n" // a thread's share of its heap, where the thread ends as the program does
           "leak:swrast_dri.so\n"; // 128 bytes of Mesa's driver
}

/// Qt is not built with the thread sanitizer, which so sees what Qt's threads do in functions of the C library, but not how they
/// wait for each other. What they do is left out: our own code is what is looked at. A race ends the program, so that whoever
/// started it sees it fail. What a test forks may make threads, too.
UNSANITIZED const char* __tsan_default_options();
const char* __tsan_default_options() {
    return "ignore_noninstrumented_modules=1:halt_on_error=1:die_after_fork=0";
}

#if __has_feature(address_sanitizer)
/// Leaves libraries where they are, so that what leaked in one can be named at the end.
int dlclose(void* /*library*/) noexcept {
    return 0;
}
#endif

#if __has_feature(thread_sanitizer)
/// Makes a process as the C library does. The sanitizer of clang 14 has a version of its own, which ends the program; what
/// QProcess makes soon becomes another program.
UNSANITIZED int clone(int (*function)(void*), void* stack, int flags, void* argument, ...) noexcept {
    using Clone = int(int (*)(void*), void*, int, void*, ...);
    static auto* const libraryClone = reinterpret_cast<Clone*>(dlsym(RTLD_NEXT, "clone"));
    va_list rest;
    va_start(rest, argument);
    void* const parentThread = va_arg(rest, void*);
    void* const threadStorage = va_arg(rest, void*);
    void* const childThread = va_arg(rest, void*);
    va_end(rest);
    return libraryClone(function, stack, flags, argument, parentThread, threadStorage, childThread);
}
#endif
}

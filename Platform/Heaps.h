#pragma once

/// The C library's heaps, so that the application holds no more memory than it uses. Nothing where the library knows no such wishes.
namespace Platform {

/// Has the threads share a few heaps, and large pieces of memory lie outside of them, whence they go back to the system as soon as
/// they are freed. Left alone, the library gives each thread a heap of its own, which keeps the megabytes of the largest decode that
/// ever came to it. Before any thread is started.
void limitHeaps();

/// Gives back to the system what has been freed in the heaps; takes some milliseconds. Any thread.
void trimHeaps();

} // namespace Platform

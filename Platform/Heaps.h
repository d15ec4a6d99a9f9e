#pragma once

/// The C library's heaps, so that the application holds no more memory than it uses. Nothing where the library knows no such wishes.
namespace Platform {

/// Has the threads share a few heaps. Left alone, the library gives each its own, which keeps the megabytes of the largest decode
/// that ever came to it: the application would grow until each of many threads has had its turn. Before any thread is started.
void shareHeaps();

/// Gives back to the system what has been freed in the heaps; takes some milliseconds. Any thread.
void trimHeaps();

} // namespace Platform

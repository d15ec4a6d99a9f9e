#pragma once

#include <unistd.h>

#include <cerrno>
#include <utility>

namespace Platform {

/// An open file descriptor, closed at the end of its scope; or none. Movable between threads.
class FileDescriptor {
public:
    FileDescriptor() = default;

    /// Takes over what open(2) returned, -1 included.
    explicit FileDescriptor(int descriptor) : m_descriptor(descriptor) {}

    FileDescriptor(FileDescriptor&& other) noexcept : m_descriptor(std::exchange(other.m_descriptor, -1)) {}
    FileDescriptor& operator=(FileDescriptor&& other) noexcept {
        std::swap(m_descriptor, other.m_descriptor);
        return *this;
    }
    ~FileDescriptor() {
        if (m_descriptor >= 0) {
            close(m_descriptor);
        }
    }

    explicit operator bool() const { return m_descriptor >= 0; }
    int get() const { return m_descriptor; }

    /// Gives up what it holds: somebody else closes it from now on.
    int release() { return std::exchange(m_descriptor, -1); }

private:
    int m_descriptor = -1;
};

/// The result of a system call, made again as long as a signal interrupts it.
template <typename Call>
auto retryInterrupted(Call call) {
    auto result = call();
    while (result == -1 && errno == EINTR) {
        result = call();
    }
    return result;
}

} // namespace Platform

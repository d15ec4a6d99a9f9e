#pragma once

#include "Platform/FileURL.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

/// A file in memory, for what reads files.
class MemoryFile {
public:
    MemoryFile(const std::uint8_t* data, std::size_t size)
        : m_descriptor(memfd_create("photo", MFD_CLOEXEC)) {
        if (write(m_descriptor, data, size) != static_cast<ssize_t>(size)) {
            std::abort();
        }
    }
    ~MemoryFile() { close(m_descriptor); }
    MemoryFile(const MemoryFile&) = delete;
    MemoryFile& operator=(const MemoryFile&) = delete;

    Platform::FileURL url() const {
        return Platform::FileURL("/proc/self/fd/" + std::to_string(m_descriptor));
    }

private:
    const int m_descriptor;
};

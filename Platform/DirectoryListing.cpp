#include "Platform/DirectoryListing.h"

#include "Platform/FileDescriptor.h"

#include <cerrno>
#include <string_view>

namespace Platform {

DirectoryListing::DirectoryListing(const char* path, int folder) {
    FileDescriptor descriptor(
        retryInterrupted([&] { return openat(folder, path, O_RDONLY | O_DIRECTORY | O_CLOEXEC); }));
    if (descriptor) {
        m_directory.reset(fdopendir(descriptor.get()));
    }
    if (m_directory) {
        (void)descriptor.release(); // the listing closes it
    } else {
        m_error = errno;
    }
}

const dirent* DirectoryListing::next() {
    if (!m_directory) {
        return nullptr;
    }
    for (;;) {
        errno = 0; // the only way to tell an error from the end
        const dirent* entry = readdir(m_directory.get());
        if (!entry) {
            m_error = errno;
            return nullptr;
        }
        const std::string_view name = entry->d_name;
        if (name != "." && name != "..") {
            return entry;
        }
    }
}

} // namespace Platform

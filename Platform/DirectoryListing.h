#pragma once

#include <dirent.h>
#include <fcntl.h>

#include <memory>

namespace Platform {

/// The entries of a folder, one after the other as the file system lists them, "." and ".." left out. Any
/// thread, one at a time.
class DirectoryListing {
public:
    /// @param path    the folder, in bytes
    /// @param folder  descriptor of the folder that a relative path starts from
    explicit DirectoryListing(const char* path, int folder = AT_FDCWD);

    /// The next entry, valid until the next call; null after the last, and where an error ends the listing.
    const dirent* next();

    /// errno of what ended the listing, or 0 where it came to its end.
    int error() const { return m_error; }

private:
    struct Closer {
        void operator()(DIR* directory) const { closedir(directory); }
    };

    std::unique_ptr<DIR, Closer> m_directory;
    int m_error = 0;
};

} // namespace Platform

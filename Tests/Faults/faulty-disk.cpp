// faulty-disk FOLDER MOUNTPOINT: shows the folder at the mount point, as a file system on which things go wrong as the
// lines of its standard input say (DiskFaults); each is answered by a line. Writes "mounted" when it is there, and unmounts
// when its standard input ends, however that comes. Nothing is cached: what a program asks reaches this disk.
#define FUSE_USE_VERSION 312

#include "Tests/Faults/DiskFaults.h"

#include <dirent.h>
#include <fcntl.h>
#include <fuse3/fuse.h>
#include <stdio.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <filesystem>
#include <iostream>
#include <memory>
#include <string>
#include <thread>

namespace {

/// The folder shown, and what goes wrong with it.
struct Disk {
    int folder = -1;
    DiskFaults faults;
};

struct OpenFile {
    int descriptor;
    std::string name;
};

Disk& disk() {
    return *static_cast<Disk*>(fuse_get_context()->private_data);
}

/// The path in the folder.
std::string inFolder(const char* path) {
    std::string name = path[1] == '\0' ? "." : path + 1;
    if (disk().faults.ignoresCase()) {
        std::ranges::transform(name, name.begin(), [](unsigned char letter) { return std::toupper(letter); });
    }
    return name;
}

OpenFile& openFile(const fuse_file_info* info) {
    // NOLINTNEXTLINE(performance-no-int-to-ptr): the library keeps what is open as a number
    return *reinterpret_cast<OpenFile*>(info->fh);
}

int outcome(int result) {
    return result == -1 ? -errno : 0;
}

ssize_t outcomeOf(ssize_t count) {
    return count == -1 ? -errno : count;
}

bool hasCallerGivenUp() {
    return fuse_interrupted() != 0;
}

/// Does what is asked about the name once the disk is ready for it, or fails as it fails.
template <typename Work>
auto serve(DiskCall call, const std::string& name, const Work& work) -> decltype(work()) {
    if (const int error = disk().faults.beforeCall(call, name, hasCallerGivenUp)) {
        return -error;
    }
    return work();
}

/// The same for what is at the path.
template <typename Work>
int servePath(DiskCall call, const char* path, const Work& work) {
    const auto name = std::filesystem::path(path).filename().native();
    return serve(call, name, [&] { return outcome(work(disk().folder, inFolder(path).c_str())); });
}

template <typename Work>
int look(const char* path, const Work& work) {
    return servePath(DiskCall::Look, path, work);
}

template <typename Work>
int change(const char* path, const Work& work) {
    return servePath(DiskCall::Change, path, work);
}

int getAttributes(const char* path, struct stat* status, fuse_file_info* info) {
    if (info) {
        const OpenFile& file = openFile(info);
        return serve(DiskCall::Look, file.name, [&] { return outcome(fstat(file.descriptor, status)); });
    }
    return look(path, [&](int folder, const char* name) {
        const int result = fstatat(folder, name, status, AT_SYMLINK_NOFOLLOW);
        status->st_ino = disk().faults.number(status->st_ino);
        return result;
    });
}

int access(const char* path, int mode) {
    return look(
        path, [&](int folder, const char* name) { return faccessat(folder, name, mode, AT_EACCESS); });
}

int readLink(const char* path, char* target, std::size_t size) {
    return look(path, [&](int folder, const char* name) {
        const ssize_t length = readlinkat(folder, name, target, size - 1);
        if (length >= 0) {
            target[length] = '\0';
        }
        return length < 0 ? -1 : 0;
    });
}

int statusOfDisk(const char*, struct statvfs* status) {
    return outcome(fstatvfs(disk().folder, status));
}

int openAs(DiskCall call, const char* path, int flags, mode_t mode, fuse_file_info* info) {
    return servePath(call, path, [&](int folder, const char* name) {
        const int descriptor = openat(folder, name, flags | O_CLOEXEC, mode);
        if (descriptor >= 0) {
            auto file = std::make_unique<OpenFile>(
                OpenFile{descriptor, std::filesystem::path(name).filename().native()});
            info->fh = reinterpret_cast<std::uint64_t>(file.release());
        }
        return descriptor < 0 ? -1 : 0;
    });
}

int open(const char* path, fuse_file_info* info) {
    return openAs(DiskCall::Look, path, info->flags, 0, info);
}

int openFolder(const char* path, fuse_file_info* info) {
    return openAs(DiskCall::Look, path, O_RDONLY | O_DIRECTORY, 0, info);
}

int create(const char* path, mode_t mode, fuse_file_info* info) {
    return openAs(DiskCall::Change, path, info->flags | O_CREAT, mode, info);
}

int release(const char*, fuse_file_info* info) {
    const std::unique_ptr<OpenFile> file(&openFile(info));
    return outcome(close(file->descriptor));
}

int readFolder(
    const char*, void* buffer, fuse_fill_dir_t fill, off_t, fuse_file_info* info, fuse_readdir_flags) {
    const OpenFile& file = openFile(info);
    return serve(DiskCall::Look, file.name, [&] {
        const int descriptor = openat(file.descriptor, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        const std::unique_ptr<DIR, int (*)(DIR*)> listing(fdopendir(descriptor), closedir);
        if (!listing) {
            return -errno;
        }
        while (const dirent* entry = readdir(listing.get())) {
            struct stat status = {};
            status.st_ino = entry->d_ino;
            status.st_mode = DTTOIF(entry->d_type);
            fill(buffer, entry->d_name, &status, 0, fuse_fill_dir_flags{});
        }
        return 0;
    });
}

int read(const char*, char* buffer, std::size_t size, off_t offset, fuse_file_info* info) {
    const OpenFile& file = openFile(info);
    return static_cast<int>(serve(
        DiskCall::Read, file.name, [&] { return outcomeOf(pread(file.descriptor, buffer, size, offset)); }));
}

int write(const char*, const char* buffer, std::size_t size, off_t offset, fuse_file_info* info) {
    const OpenFile& file = openFile(info);
    return static_cast<int>(serve(DiskCall::Change, file.name,
        [&] { return outcomeOf(pwrite(file.descriptor, buffer, size, offset)); }));
}

int sync(const char*, int, fuse_file_info* info) {
    const OpenFile& file = openFile(info);
    return serve(DiskCall::Change, file.name, [&] { return outcome(fsync(file.descriptor)); });
}

int makeFolder(const char* path, mode_t mode) {
    return change(path, [&](int folder, const char* name) { return mkdirat(folder, name, mode); });
}

int makeSymbolicLink(const char* target, const char* path) {
    return change(path, [&](int folder, const char* name) { return symlinkat(target, folder, name); });
}

int removeFile(const char* path) {
    return change(path, [&](int folder, const char* name) { return unlinkat(folder, name, 0); });
}

int removeFolder(const char* path) {
    return change(path, [&](int folder, const char* name) { return unlinkat(folder, name, AT_REMOVEDIR); });
}

int rename(const char* from, const char* to, unsigned flags) {
    return change(from, [&](int folder, const char* name) {
        return renameat2(folder, name, folder, inFolder(to).c_str(), flags);
    });
}

int link(const char* from, const char* to) {
    return change(from,
        [&](int folder, const char* name) { return linkat(folder, name, folder, inFolder(to).c_str(), 0); });
}

int setMode(const char* path, mode_t mode, fuse_file_info*) {
    return change(path, [&](int folder, const char* name) { return fchmodat(folder, name, mode, 0); });
}

int setOwner(const char* path, uid_t user, gid_t group, fuse_file_info*) {
    return change(path, [&](int folder, const char* name) {
        return fchownat(folder, name, user, group, AT_SYMLINK_NOFOLLOW);
    });
}

int setTimes(const char* path, const timespec* times, fuse_file_info*) {
    return change(path,
        [&](int folder, const char* name) { return utimensat(folder, name, times, AT_SYMLINK_NOFOLLOW); });
}

void* begin(fuse_conn_info*, fuse_config* config) {
    config->use_ino = 1;
    config->direct_io = 1;
    config->entry_timeout = 0;
    config->attr_timeout = 0;
    config->hard_remove = 1;
    config->nullpath_ok = 1; // so that a file that is read keeps no other call about its folder waiting
    return fuse_get_context()->private_data;
}

fuse_operations operations() {
    fuse_operations all = {};
    all.init = begin;
    all.getattr = getAttributes;
    all.access = access;
    all.readlink = readLink;
    all.opendir = openFolder;
    all.readdir = readFolder;
    all.releasedir = release;
    all.statfs = statusOfDisk;
    all.open = open;
    all.create = create;
    all.release = release;
    all.read = read;
    all.write = write;
    all.fsync = sync;
    all.mkdir = makeFolder;
    all.symlink = makeSymbolicLink;
    all.unlink = removeFile;
    all.rmdir = removeFolder;
    all.rename = rename;
    all.link = link;
    all.chmod = setMode;
    all.chown = setOwner;
    all.utimens = setTimes;
    return all;
}

/// Obeys the lines of the standard input. Its end is that of the test: what waits goes on, and the disk goes away.
void obeyUntilTheEnd(Disk& disk, fuse* fileSystem) {
    std::string line;
    while (std::getline(std::cin, line)) {
        std::cout << disk.faults.obey(line) << std::endl;
    }
    disk.faults.obey("release");
    fuse_unmount(fileSystem);
    _exit(0);
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 3) {
        std::cerr << "usage: faulty-disk FOLDER MOUNTPOINT\n";
        return 2;
    }
    Disk disk;
    disk.folder = ::open(argv[1], O_PATH | O_DIRECTORY | O_CLOEXEC);
    char options[] = "-ofsname=faulty-disk";
    char* arguments[] = {argv[0], options};
    fuse_args mountArguments = FUSE_ARGS_INIT(2, arguments);
    const fuse_operations all = operations();
    fuse* const fileSystem = fuse_new(&mountArguments, &all, sizeof all, &disk);
    if (disk.folder < 0 || !fileSystem || fuse_mount(fileSystem, argv[2]) != 0) {
        std::cerr << "the disk cannot be mounted\n";
        return 1;
    }
    std::cout << "mounted" << std::endl;
    std::thread control(obeyUntilTheEnd, std::ref(disk), fileSystem);
    fuse_loop_config* const config = fuse_loop_cfg_create();
    fuse_loop_cfg_set_max_threads(config, 1000); // each call that waits takes one
    fuse_loop_mt(fileSystem, config);
    control
        .join(); // it ends the process, once it has unmounted: the loop may see that coming, and return before
    return 1;
}

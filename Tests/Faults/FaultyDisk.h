#pragma once

#include "Tests/Faults/DiskFaults.h"
#include "Tests/Support/TemporaryFolder.h"

#include <QProcess>
#include <QString>

#include <chrono>
#include <string>

/// A mounted disk on which things go wrong as the test says. Its files lie in a temporary folder, where the test reaches
/// them without ever waiting. It is unmounted at the end of its scope, and also when the test's process ends in any other
/// way.
class FaultyDisk {
public:
    /// Why this machine can have none, as a sentence; empty where it can.
    static QString lacking();

    /// Mounts it; throws std::runtime_error where that fails.
    FaultyDisk();
    ~FaultyDisk();
    FaultyDisk(const FaultyDisk&) = delete;
    FaultyDisk& operator=(const FaultyDisk&) = delete;

    /// Where it is mounted. Whoever looks here, waits as the disk does.
    Platform::FileURL url() const { return m_mountPoint.url(); }

    /// What is on it, beside it.
    const TemporaryFolder& files() const { return m_files; }

    /// From now on each such call takes so long.
    void slowDown(DiskCall call, std::chrono::milliseconds duration);

    /// From now on such calls about the file or folder of that name, or about all, wait until release() is called. A
    /// process that is killed need not wait.
    void stall(DiskCall call, const std::string& name = {});
    void release();

    /// From now on such calls fail with that errno; 0: no more.
    void fail(DiskCall call, int error);

    /// From now on names in capital and in small letters are the same to it, as on a memory card.
    void ignoreCase();

    /// From now on each look at a file finds another number (st_ino), as on a disk that has none and makes them up.
    void makeUpNumbers();

    /// How many such calls there were about the file of that name.
    int count(DiskCall call, const std::string& name);

    /// How many calls wait for release().
    int stalled();

    /// Takes it away while it is in use, as a card is pulled out: what waits fails, and every call from now on.
    void pullOut();

    /// Unmounts it while it is in use: the folder that it was mounted at is empty from now on.
    void unmount();

private:
    std::string request(const std::string& line);

    TemporaryFolder m_files;
    TemporaryFolder m_mountPoint;
    QProcess m_process;
    bool m_isMounted = false;
};

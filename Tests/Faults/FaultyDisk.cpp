#include "Tests/Faults/FaultyDisk.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <exception>
#include <stdexcept>

using Platform::FileURL;

namespace {

constexpr int patience = 20'000; // ms

QString text(const FileURL& url) {
    return QString::fromStdString(url.path().native());
}

std::string nameOf(DiskCall call) {
    return diskCallNames[static_cast<std::size_t>(call)];
}

} // namespace

QString FaultyDisk::lacking() {
    const int device = open("/dev/fuse", O_RDWR | O_CLOEXEC);
    if (device < 0) {
        return QStringLiteral("/dev/fuse cannot be used here: ") + QString::fromLocal8Bit(strerror(errno));
    }
    close(device);
    try {
        const FaultyDisk trial;
        return {};
    } catch (const std::exception& failure) {
        return QString::fromLocal8Bit(failure.what());
    }
}

FaultyDisk::FaultyDisk() {
    m_process.start(QStringLiteral(FAULTY_DISK_PROGRAM), {text(m_files.url()), text(m_mountPoint.url())});
    while (!m_process.canReadLine() && m_process.waitForReadyRead(patience)) {
    }
    if (m_process.readLine() != "mounted\n") {
        m_process.closeWriteChannel();
        m_process.waitForFinished(patience);
        throw std::runtime_error(
            "no disk can be mounted here: " + m_process.readAllStandardError().trimmed().toStdString());
    }
    m_isMounted = true;
}

FaultyDisk::~FaultyDisk() {
    unmount();
}

void FaultyDisk::slowDown(DiskCall call, std::chrono::milliseconds duration) {
    request("slow " + nameOf(call) + ' ' + std::to_string(duration.count()));
}

void FaultyDisk::stall(DiskCall call, const std::string& name) {
    request("stall " + nameOf(call) + ' ' + name);
}

void FaultyDisk::release() {
    request("release");
}

void FaultyDisk::fail(DiskCall call, int error) {
    request("fail " + nameOf(call) + ' ' + std::to_string(error));
}

void FaultyDisk::ignoreCase() {
    request("ignore case");
}

void FaultyDisk::makeUpNumbers() {
    request("make up numbers");
}

int FaultyDisk::count(DiskCall call, const std::string& name) {
    return std::stoi(request("count " + nameOf(call) + ' ' + name));
}

int FaultyDisk::stalled() {
    return std::stoi(request("stalled"));
}

void FaultyDisk::pullOut() {
    m_process.kill();
    m_process.waitForFinished(patience);
}

void FaultyDisk::unmount() {
    if (!m_isMounted) {
        return;
    }
    m_process.closeWriteChannel();
    m_process.waitForFinished(patience);
    if (m_process.exitStatus() == QProcess::CrashExit) { // or pulled out
        QProcess::execute(QStringLiteral("fusermount3"), {"-u", "-z", "-q", text(m_mountPoint.url())});
    }
    m_isMounted = false;
}

std::string FaultyDisk::request(const std::string& line) {
    m_process.write((line + '\n').c_str());
    while (!m_process.canReadLine() && m_process.waitForReadyRead(patience)) {
    }
    if (!m_process.canReadLine()) {
        throw std::runtime_error("the disk does not answer to: " + line);
    }
    return m_process.readLine().trimmed().toStdString();
}

#include "Tests/Support/ProcessCost.h"

#include <QByteArray>
#include <QFile>

#include <malloc.h>
#include <sys/resource.h>

namespace {

std::chrono::nanoseconds processorTimeSoFar() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return std::chrono::seconds(usage.ru_utime.tv_sec) + std::chrono::microseconds(usage.ru_utime.tv_usec);
}

/// A line of /proc/self/status in bytes (proc(5)).
qint64 status(const QByteArray& name) {
    QFile file(QStringLiteral("/proc/self/status"));
    if (!file.open(QIODevice::ReadOnly)) {
        return 0;
    }
    constexpr qint64 kibibyte = 1024;
    for (const QByteArray& line : file.readAll().split('\n')) {
        if (line.startsWith(name + ':')) {
            return line.mid(name.size() + 1).trimmed().split(' ').front().toLongLong() * kibibyte;
        }
    }
    return 0;
}

/// Has the kernel look for the worst moment anew.
void forgetWorstMoment() {
    QFile file(QStringLiteral("/proc/self/clear_refs"));
    if (file.open(QIODevice::WriteOnly | QIODevice::Unbuffered)) {
        file.write("5");
    }
}

} // namespace

ProcessCost::ProcessCost() : m_processorTime(processorTimeSoFar()) {
    malloc_trim(0); // memory that is kept for later would hide what is taken
    forgetWorstMoment();
    m_memory = status("VmRSS");
}

std::chrono::nanoseconds ProcessCost::processorTime() const {
    return processorTimeSoFar() - m_processorTime;
}

qint64 ProcessCost::memory() const {
    return status("VmHWM") - m_memory;
}

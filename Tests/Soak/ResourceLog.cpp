#include "Tests/Soak/ResourceLog.h"

#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>

namespace {

std::filesystem::path folderOf(qint64 processId) {
    return "/proc/" + std::to_string(processId);
}

std::ifstream openedFor(qint64 processId, const char* name) {
    std::ifstream file(folderOf(processId) / name);
    if (!file) {
        throw std::runtime_error("the application has ended");
    }
    return file;
}

} // namespace

Resources resourcesOf(qint64 processId) {
    std::ifstream status = openedFor(processId, "status");
    Resources resources;
    for (std::string name; status >> name; status.ignore(1024, '\n')) {
        double number = 0;
        if (name == "VmRSS:" && status >> number) {
            resources.resident = number / 1024; // from kB, as the next
        } else if (name == "RssAnon:" && status >> number) {
            resources.anonymous = number / 1024;
        } else if (name == "Threads:" && status >> number) {
            resources.threads = number;
        }
    }
    const std::filesystem::directory_iterator descriptors(folderOf(processId) / "fd");
    resources.fileDescriptors = static_cast<double>(std::distance(begin(descriptors), end(descriptors)));
    return resources;
}

double readFromDiskBy(qint64 processId) {
    std::ifstream io = openedFor(processId, "io");
    for (std::string name; io >> name;) {
        double bytes = 0;
        if (name == "read_bytes:" && io >> bytes) {
            return bytes / 1024;
        }
    }
    return 0;
}

std::chrono::milliseconds processorTimeOf(qint64 processId) {
    constexpr int valuesBefore = 11; // between the name, which may have spaces, and the times (proc(5))
    std::ifstream stat = openedFor(processId, "stat");
    std::string value;
    std::getline(stat, value, ')');
    for (int skipped = 0; skipped < valuesBefore; ++skipped) {
        stat >> value;
    }
    long inProgram = 0;
    long inKernel = 0;
    stat >> inProgram >> inKernel;
    return std::chrono::milliseconds((inProgram + inKernel) * 1000 / sysconf(_SC_CLK_TCK));
}

std::vector<ResourceLog::Sample> ResourceLog::restingSince(double hours) const {
    std::vector<Sample> samples;
    std::ranges::copy_if(m_samples, std::back_inserter(samples),
        [&](const Sample& sample) { return sample.isAtRest && sample.hours >= hours; });
    return samples;
}

ResourceLog::Trend ResourceLog::trend(double Resources::*value, double sinceHours) const {
    const std::vector<Sample> samples = restingSince(sinceHours);
    const auto count = static_cast<double>(samples.size());
    double meanTime = 0;
    double meanValue = 0;
    for (const Sample& sample : samples) {
        meanTime += sample.hours / count;
        meanValue += sample.resources.*value / count;
    }
    double tt = 0;
    double tv = 0;
    double vv = 0;
    for (const Sample& sample : samples) {
        const double time = sample.hours - meanTime;
        const double deviation = sample.resources.*value - meanValue;
        tt += time * time;
        tv += time * deviation;
        vv += deviation * deviation;
    }
    const double slope = tv / tt;
    const double squares = std::max(vv - slope * tv, 0.0); // that the line leaves
    return {slope, std::sqrt(squares / (count - 2) / tt)};
}

QString ResourceLog::asCsv() const {
    QString text = QStringLiteral("seconds,resident MiB,anonymous MiB,file descriptors,threads,at rest\n");
    for (const Sample& sample : m_samples) {
        const Resources& resources = sample.resources;
        text += QStringLiteral("%1,%2,%3,%4,%5,%6\n")
                    .arg(sample.hours * 3600, 0, 'f', 1)
                    .arg(resources.resident, 0, 'f', 2)
                    .arg(resources.anonymous, 0, 'f', 2)
                    .arg(resources.fileDescriptors)
                    .arg(resources.threads)
                    .arg(sample.isAtRest ? 1 : 0);
    }
    return text;
}

#pragma once

#include <QString>

#include <chrono>
#include <vector>

/// What a process holds at one moment.
struct Resources {
    double resident = 0;  ///< MiB, of which
    double anonymous = 0; ///< MiB are its own and in no file
    double fileDescriptors = 0;
    double threads = 0;
};

/// What that process holds now; throws std::runtime_error where there is none.
Resources resourcesOf(qint64 processId);

/// How much a process has had read from the disk so far, in KiB: files, and pages of programs that were not in memory any more.
/// Throws as resourcesOf() does.
double readFromDiskBy(qint64 processId);

/// For how long a process has been on a processor so far, all its threads together, to hundredths of a second. Throws as
/// resourcesOf() does.
std::chrono::milliseconds processorTimeOf(qint64 processId);

/// What a process held in the course of time.
class ResourceLog {
public:
    struct Sample {
        double hours = 0;
        Resources resources;
        bool isAtRest = false; ///< nothing was being done: comparable with others at rest
    };

    /// How a value changes with time, by least squares.
    struct Trend {
        double perHour = 0;
        double error = 0; ///< the standard error of that
    };

    void add(const Sample& sample) { m_samples.push_back(sample); }

    /// How many samples there are at rest from that time on.
    int restsSince(double hours) const { return static_cast<int>(restingSince(hours).size()); }

    /// Of the samples at rest from that time on, of which there are three or more.
    Trend trend(double Resources::*value, double sinceHours) const;

    /// All samples, with a line that names the columns before them.
    QString asCsv() const;

private:
    std::vector<Sample> restingSince(double hours) const;

    std::vector<Sample> m_samples;
};

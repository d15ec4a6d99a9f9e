#include "Tests/Soak/SoakCriteria.h"

namespace {

SoakCriterion flat(const QString& what, const QString& unit, double Resources::*value, const ResourceLog& log,
    double warmUp) {
    constexpr double limit = 1; // an hour
    constexpr int leastSamples = 3;
    const int samples = log.restsSince(warmUp);
    if (samples < leastSamples) {
        return {QStringLiteral("%1: too few samples to judge by").arg(what), false};
    }
    const auto [perHour, error] = log.trend(value, warmUp);
    return {QStringLiteral("%1: rises by %2 ± %3 %4 an hour (limit %5; %6 samples at rest)")
                .arg(what)
                .arg(perHour, 0, 'f', 2)
                .arg(error, 0, 'f', 2)
                .arg(unit)
                .arg(limit)
                .arg(samples),
        perHour < limit};
}

SoakCriterion quick(const KeyTimes& keys) {
    constexpr double limit = 100; // ms
    return {QStringLiteral("keys: the slowest took %1 ms (limit %2)").arg(keys.worst(), 0, 'f', 1).arg(limit),
        keys.worst() <= limit};
}

} // namespace

std::vector<SoakCriterion> soakCriteria(const KeyTimes& keys, const ResourceLog& log, double warmUp) {
    return {quick(keys),
        flat(QStringLiteral("resident memory"), QStringLiteral("MiB"), &Resources::resident, log, warmUp),
        flat(QStringLiteral("file descriptors"), QStringLiteral("of them"), &Resources::fileDescriptors, log,
            warmUp),
        flat(QStringLiteral("threads"), QStringLiteral("of them"), &Resources::threads, log, warmUp)};
}

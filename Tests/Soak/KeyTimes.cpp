#include "Tests/Soak/KeyTimes.h"

#include <algorithm>
#include <array>

namespace {

constexpr std::array bounds = {5, 10, 20, 33, 50, 100, 200}; // ms

/// The value below which that part of the values lies.
double percentile(const std::vector<double>& sorted, double part) {
    return sorted[static_cast<std::size_t>(part * static_cast<double>(sorted.size() - 1))];
}

/// How many values lie below each of the bounds and not below the one before, and how many below none.
QString histogram(const std::vector<double>& sorted) {
    QString text;
    auto from = sorted.begin();
    for (const int bound : bounds) {
        const auto to = std::lower_bound(from, sorted.end(), bound);
        text += QString::number(to - from).rightJustified(7);
        from = to;
    }
    return text + QString::number(sorted.end() - from).rightJustified(7);
}

QString line(const QString& kind, std::vector<double> times) {
    std::ranges::sort(times);
    return QStringLiteral("%1%2%3%4%5  |%6\n")
        .arg(kind.leftJustified(24))
        .arg(times.size(), 7)
        .arg(percentile(times, 0.5), 8, 'f', 1)
        .arg(percentile(times, 0.99), 8, 'f', 1)
        .arg(times.back(), 8, 'f', 1)
        .arg(histogram(times));
}

QString heading() {
    QString text = QStringLiteral("ms from key to screen      count  median    99 %   worst  |");
    for (const int bound : bounds) {
        text += QStringLiteral("<%1").arg(bound).rightJustified(7);
    }
    return text + QStringLiteral("   more\n");
}

} // namespace

double KeyTimes::worst() const {
    double worst = 0;
    for (const auto& [kind, times] : m_times) {
        worst = std::max(worst, *std::ranges::max_element(times));
    }
    return worst;
}

QString KeyTimes::table() const {
    QString text = heading();
    for (const auto& [kind, times] : m_times) {
        text += line(kind, times);
    }
    return text;
}

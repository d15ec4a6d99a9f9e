#pragma once

#include <QString>

#include <map>
#include <vector>

/// How long keys took until the screen showed what they do, in milliseconds, by kind of key.
class KeyTimes {
public:
    void add(const QString& kind, double milliseconds) { m_times[kind].push_back(milliseconds); }

    /// The longest of all kinds; 0 where there is none.
    double worst() const;

    /// A line for each kind: how many, median, 99 %, the longest, and how many took how long.
    QString table() const;

private:
    std::map<QString, std::vector<double>> m_times;
};

#include "Tests/Soak/MachineClock.h"

#include <unistd.h>

#include <fstream>
#include <sstream>
#include <string>

StolenTime stolenTime(std::istream& stat) {
    const long ticksPerSecond = sysconf(_SC_CLK_TCK);
    constexpr int column = 8; // after user, nice, system, idle, iowait, irq and softirq
    StolenTime stolen;
    for (std::string line; std::getline(stat, line) && line.starts_with("cpu");) {
        std::istringstream words(line);
        std::string name;
        words >> name;
        long long ticks = 0;
        int read = 0;
        while (read < column && words >> ticks) {
            ++read;
        }
        if (name != "cpu" && read == column) { // "cpu": the sum of them
            ++stolen.processors;
            stolen.total += std::chrono::nanoseconds(std::chrono::seconds(1)) * ticks / ticksPerSecond;
        }
    }
    return stolen;
}

StolenTime stolenTime() {
    std::ifstream stat("/proc/stat");
    return stolenTime(stat);
}

MachineClock::time_point MachineClock::now() {
    return time_point(std::chrono::steady_clock::now().time_since_epoch() - stolenTime().average());
}

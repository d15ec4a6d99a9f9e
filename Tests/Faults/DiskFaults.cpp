#include "Tests/Faults/DiskFaults.h"

#include <algorithm>
#include <cerrno>
#include <sstream>
#include <stdexcept>
#include <thread>

namespace {

/// How often a call that waits looks whether its caller has given up.
constexpr std::chrono::milliseconds interval{10};

DiskCall callNamed(const std::string& name) {
    const auto found = std::ranges::find(diskCallNames, name);
    if (found == diskCallNames.end()) {
        throw std::invalid_argument("there is no call named " + name);
    }
    return static_cast<DiskCall>(found - diskCallNames.begin());
}

} // namespace

int DiskFaults::beforeCall(DiskCall call, const std::string& name, bool (*hasGivenUp)()) {
    std::unique_lock lock(m_mutex);
    const Faults& faults = faultsOf(call);
    ++faultsOf(call).counts[name];
    const auto delay = faults.delay;
    if (delay.count() > 0) {
        lock.unlock();
        std::this_thread::sleep_for(delay);
        lock.lock();
    }
    const auto isStalled = [&] { return faults.isAllStalled || faults.stalledNames.contains(name); };
    ++m_stalledCalls;
    while (isStalled() && !hasGivenUp()) {
        m_hasChanged.wait_for(lock, interval);
    }
    --m_stalledCalls;
    return isStalled() ? EINTR : faults.error;
}

std::string DiskFaults::obey(const std::string& line) {
    std::istringstream words(line);
    std::string command;
    std::string call;
    std::string name;
    words >> command >> call >> name;
    const std::lock_guard lock(m_mutex);
    if (command == "release") {
        release();
    } else if (command == "ignore") {
        m_ignoresCase = true;
    } else if (command == "make") {
        m_makesUpNumbers = true;
    } else if (command == "slow") {
        faultsOf(callNamed(call)).delay = std::chrono::milliseconds(std::stoi(name));
    } else if (command == "stall" && name.empty()) {
        faultsOf(callNamed(call)).isAllStalled = true;
    } else if (command == "stall") {
        faultsOf(callNamed(call)).stalledNames.insert(name);
    } else if (command == "fail") {
        faultsOf(callNamed(call)).error = std::stoi(name);
    } else if (command == "count") {
        return std::to_string(faultsOf(callNamed(call)).counts[name]);
    } else if (command == "stalled") {
        return std::to_string(m_stalledCalls);
    } else {
        throw std::invalid_argument("there is no command named " + command);
    }
    return "done";
}

void DiskFaults::release() {
    for (Faults& faults : m_faults) {
        faults.isAllStalled = false;
        faults.stalledNames.clear();
    }
    m_hasChanged.notify_all();
}

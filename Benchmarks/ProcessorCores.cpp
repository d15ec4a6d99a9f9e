#include "Benchmarks/ProcessorCores.h"

#include "Benchmarks/Measuring.h"

#include <sched.h>

#include <filesystem>
#include <string>

ProcessorCores::ProcessorCores() {
    cpu_set_t allowed;
    check(
        sched_getaffinity(0, sizeof allowed, &allowed) == 0, "the system does not tell the process's cores");
    for (int core = 0; core < CPU_SETSIZE; ++core) {
        if (CPU_ISSET(core, &allowed)) {
            m_cores.push_back(core);
        }
    }
}

void ProcessorCores::keepTo(int count) const {
    cpu_set_t allowed;
    CPU_ZERO(&allowed);
    for (int index = 0; index < count; ++index) {
        CPU_SET(m_cores[static_cast<std::size_t>(index)], &allowed);
    }
    check(sched_setaffinity(0, sizeof allowed, &allowed) == 0, "the process cannot be kept to some cores");
    for (const auto& thread : std::filesystem::directory_iterator("/proc/self/task")) {
        const int id = std::stoi(thread.path().filename().string());
        sched_setaffinity(id, sizeof allowed, &allowed); // fails for a thread that has just ended
    }
}

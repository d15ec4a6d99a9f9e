#pragma once

#include <string>
#include <vector>

/// The application's decoder, or something that one could use instead.
struct Contender {
    std::string name;
    /// Decodes the photo of that path with at most that many pixels on its longer side (0: all).
    bool (*decode)(const std::string& path, int size);
};

/// The application first. To be asked for once, before the first decode.
std::vector<Contender> makeContenders(const char* program);

/// Lets the contenders that have threads of their own use that many. The others go by the process's affinity.
void setContenderThreads(int count);

#pragma once

#include "Tests/Soak/KeyTimes.h"
#include "Tests/Soak/ResourceLog.h"

#include <QString>

#include <vector>

/// One of the things that must hold, and whether it did.
struct SoakCriterion {
    QString sentence;
    bool isMet = false;
};

/// What must hold of a long run: no key took longer than 100 ms, and from the end of the warm-up on, which is given in
/// hours, resident memory, file descriptors and threads were flat. That asks for three samples at rest at least.
std::vector<SoakCriterion> soakCriteria(const KeyTimes& keys, const ResourceLog& log, double warmUp);

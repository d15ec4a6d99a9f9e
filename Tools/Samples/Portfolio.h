#pragma once

#include "Tools/Samples/JpegFile.h"
#include "Tools/Samples/Scene.h"

#include <cstdint>
#include <memory>

/// One picture to be taken.
struct Motif {
    bool isPortrait;         ///< taller than wide as it is seen
    Orientation orientation; ///< how its rows are stored
    std::unique_ptr<Scene> (*sceneOf)(const Frame& frame, std::uint32_t seed);
    std::uint32_t place; ///< which of the scene's many places looks good
};

/// The motifs in the order in which they are taken, so chosen that neighbours differ at a glance; after the
/// last comes the first again.
const Motif& motif(int index);

/// How many pictures there are before a motif returns, at another place.
int motifCount();

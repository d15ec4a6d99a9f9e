#pragma once

#include "Platform/Image.h"

/// Whether a larger decode of a file may be shown in place of the picture that was handed in. The file may have been
/// written anew between the two decodes: another photo must not take the place of the one that is judged, nor one that
/// breaks off that of a whole. Takes well under a millisecond; any thread.
bool canStandInFor(const Platform::Image& image, const Platform::Image& larger);

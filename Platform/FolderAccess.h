#pragma once

#include "Platform/FileURL.h"

namespace Platform {

/// Access to a folder that the user chose. Nothing has to be asked for here, so it is always granted; the calls keep
/// the span of each access in one place, for a sandbox that does ask.
inline bool startAccessingSecurityScopedResource(const FileURL&) {
    return true;
}
inline void stopAccessingSecurityScopedResource(const FileURL&) {}

} // namespace Platform

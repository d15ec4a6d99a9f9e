#pragma once

#include "Tests/EndToEnd/RunningApplication.h"
#include "Tests/EndToEnd/VirtualScreen.h"

/// Has the application show its folder chooser, by its key; false where that does not come.
bool showChooser(VirtualScreen& screen, const RunningApplication& application);

/// Opens a folder by way of the chooser, which has the keys until the screen shows what is in the folder; false where
/// one of the two does not come.
bool openFolder(
    VirtualScreen& screen, const RunningApplication& application, const Platform::FileURL& folder);

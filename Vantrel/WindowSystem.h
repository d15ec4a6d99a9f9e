#pragma once

/// Whether the windows are on an X server, whose events differ in a few points from those of other systems. Main thread,
/// with a QGuiApplication.
bool isOnX11();

#pragma once

#include <QByteArrayView>

namespace Platform {

/// Whether OpenGL is computed by a graphics processor here, and not by the main processor in its place. Costs nothing
/// where the system knows of no such processor; else the window system is asked. Main thread, with a QGuiApplication.
bool hasGraphicsProcessor();

/// Whether the name that an OpenGL implementation gives its renderer is that of one that computes on the main
/// processor.
bool isSoftwareRasteriser(QByteArrayView rendererName);

} // namespace Platform

#include "Platform/GraphicsProcessor.h"

#include <QByteArray>
#include <QDir>
#include <QOffscreenSurface>
#include <QOpenGLContext>
#include <QOpenGLFunctions>

#include <algorithm>
#include <array>

namespace Platform {

namespace {

/// Whether a driver offers a device that can draw: the kernel's own drivers do in /dev/dri, others beside it.
bool hasRenderDevice() {
    const QStringList nodes =
        QDir(QStringLiteral("/dev/dri")).entryList({QStringLiteral("renderD*")}, QDir::System | QDir::Files);
    return !nodes.isEmpty() || QFile::exists(QStringLiteral("/dev/nvidiactl")) ||
           QFile::exists(QStringLiteral("/dev/mali0")) || QFile::exists(QStringLiteral("/dev/dxg"));
}

/// What OpenGL calls its renderer, or nothing where there is no OpenGL.
QByteArray rendererName() {
    QOffscreenSurface surface;
    surface.create();
    QOpenGLContext context;
    if (!context.create() || !context.makeCurrent(&surface)) {
        return {};
    }
    QByteArray name(reinterpret_cast<const char*>(context.functions()->glGetString(GL_RENDERER)));
    context.doneCurrent();
    return name;
}

} // namespace

bool hasGraphicsProcessor() {
    if (!hasRenderDevice()) {
        return false;
    }
    const QByteArray name = rendererName();
    return !name.isEmpty() && !isSoftwareRasteriser(name);
}

bool isSoftwareRasteriser(QByteArrayView rendererName) {
    constexpr std::array names{"llvmpipe", "softpipe", "swrast", "software rasterizer", "swiftshader"};
    const QByteArray name = rendererName.toByteArray().toLower();
    return std::ranges::any_of(names, [&](const char* part) { return name.contains(part); });
}

} // namespace Platform

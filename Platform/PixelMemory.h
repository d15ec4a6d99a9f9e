#pragma once

#include <QImage>
#include <QSize>

namespace Platform {

/// A picture in QImage::Format_RGB32 whose pixels are still undefined; null for an empty size or where there is too
/// little memory. A large one has memory of its own, in huge pages where the system gives them, which goes back to the
/// system at the moment the picture does: neither filling nor dropping it keeps a thread busy with thousands of small
/// pages, and none of it lingers in a heap. Any thread.
QImage undefinedPicture(QSize size);

} // namespace Platform

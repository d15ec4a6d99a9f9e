#pragma once

#include <QImage>
#include <QSize>

namespace Platform {

/// A picture in QImage::Format_RGB32 whose pixels are still undefined; null for an empty size or where there is too
/// little memory. All but the tiniest have memory of their own, which goes back to the system at the moment the picture
/// does. None of it lingers in a heap: each thread that decodes has one, and what a cache drops of thousands of small
/// pictures would leave holes in all of them. Large ones lie in huge pages where the system gives them, so that neither
/// filling nor dropping them keeps a thread busy with thousands of small ones. Any thread.
QImage undefinedPicture(QSize size);

} // namespace Platform

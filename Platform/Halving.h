#pragma once

#include "Platform/Task.h"

#include <QImage>

namespace Platform {

/// A picture of half the size in each direction, rounded up: each pixel the mean of the two by two that it stands for,
/// so that pixel (x, y) covers exactly what (2x, 2y) to (2x + 1, 2y + 1) covered. At an odd edge it is the mean of
/// those that there are.
///
/// @param picture  in QImage::Format_RGB32
/// @param task     looked at now and then
/// @return in the same format; null where there is too little memory or the task was cancelled. Blocking; any thread.
QImage halved(const QImage& picture, const Task& task = {});

} // namespace Platform

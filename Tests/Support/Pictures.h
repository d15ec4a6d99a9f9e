#pragma once

#include <QColor>
#include <QImage>
#include <QSize>

/// Red at the top left, green at the top right, blue at the bottom left and white at the bottom right.
QImage quadrants(QSize size);

/// Soft shapes with fine detail over them, as a photograph has them; the same for the same size.
QImage landscape(QSize size);

/// Every pixel any colour; the same for the same size.
QImage randomPixels(QSize size);

/// Squares of eight pixels, black and white by turns.
QImage blackAndWhiteBlocks(QSize size);

/// One colour.
QImage plain(QSize size, const QColor& color);

/// Whether no channel of two colours differs by more than the tolerance, out of 255.
bool isNear(const QColor& a, const QColor& b, int tolerance = 6);

/// The mean difference of the channels of two pictures of one size, out of 255.
double meanDifference(const QImage& a, const QImage& b);

#pragma once

#include <QImage>
#include <QPoint>

/// How far two pictures are from each other to the eye: by the mean colours of small blocks, so that an edge smoothed a
/// little otherwise counts for little, and anything that moved, changed its colour or is missing counts.
struct PictureDifference {
    double largest = 0; ///< of all blocks and channels, out of 255; 255 where the sizes differ
    QPoint place;       ///< the top left pixel of that block
    QImage map; ///< black where they are alike, the brighter the farther apart; null where the sizes differ
};

PictureDifference differenceBetween(const QImage& a, const QImage& b);

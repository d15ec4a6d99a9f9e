#pragma once

#include <QColor>
#include <QImage>
#include <QSize>
#include <QString>

/// Photos that can be recognised have this size and one of these colours all over. There are as many as can
/// be told apart; none comes near the colour of a verdict.
constexpr QSize readablePhotoSize(600, 400);
constexpr int readablePhotoCount = 20;
QColor readablePhotoColor(int index);

/// What a user sees in the main window, in words:
/// - "photo 3", "photo 3, approved", "photo 3, rejected": the photo of colour 3, fitted and centred on black,
/// with the verdict's border and its label tilted the right way;
/// - "an alert": a message in front of the darkened window;
/// - "open a folder", "no images", "no images, panels below": the message of that state, and whether the
/// panels of a folder with photos are there;
/// - "something else".
QString seenIn(const QImage& window);

/// The resolution that the status bar names: "1.6K", "2.4K", "4K" or "Full"; "nothing readable" where it is none of
/// them. Needs a QGuiApplication, for the fonts.
QString resolutionIn(const QImage& window);

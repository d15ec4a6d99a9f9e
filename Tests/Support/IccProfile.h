#pragma once

#include <QByteArray>

/// ICC profiles for the pictures of the tests, as the bytes of a profile file.
namespace IccProfile {

QByteArray srgb();

/// Adobe RGB (1998): more green than sRGB.
QByteArray adobeRgb();

/// sRGB with red, green and blue exchanged, so that a picture shows by its colours whether the profile was
/// applied: stored red is shown green, green blue, and blue red. By primaries and tone curves.
QByteArray rotatedRgb();

/// The same by a table of colours, which counts more than the primaries and tone curves of sRGB that it has as well.
QByteArray rotatedRgbTable();

/// Grey values that are linear in light.
QByteArray linearGrey();

/// Inks of which cyan is shown red, by a table; black and no ink as ever.
QByteArray redCyan();

} // namespace IccProfile

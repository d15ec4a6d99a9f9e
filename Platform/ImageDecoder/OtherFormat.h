#pragma once

#include <QByteArray>

namespace Platform {

/// As many bytes as tell a format.
constexpr int otherFormatBytes = 12;

/// The format, other than JPEG, of a file that begins with these bytes: one of those that people have under the name of a JPEG
/// file. Any other that Qt may have plugins for would be foreign code that reads foreign bytes with nothing to gain. Any thread.
///
/// @return the name by which Qt knows it: "png", "webp", "gif", "tiff", "bmp" or "heif"; empty where it is none of them
QByteArray otherFormat(const QByteArray& beginning);

} // namespace Platform

#pragma once

#include <QImage>

#include <string>

/// Decodes the photo of that path by libjpeg alone, on one thread: scaled while decoding so that the longer side keeps at
/// least that many pixels (0: all), and not further, which is the least that anything built on the library has to do.
///
/// Ends the program where the photo cannot be decoded.
QImage decodeByLibjpeg(const std::string& path, int size);

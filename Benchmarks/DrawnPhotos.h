#pragma once

#include <QImage>

#include <filesystem>
#include <string>

/// A picture of 24 megapixels like a photograph of a camera: detail that weakens with its fineness as in nature, shapes
/// with sharp edges, fine lines, and the noise of a sensor over all of it. The same for the same seed. Takes about two
/// seconds.
QImage drawPhotograph(unsigned seed);

/// How a photo is stored in its file.
struct PhotoFormat {
    std::string name;
    int horizontalSampling = 1; ///< pixels of lightness to one of colour; 2 and 1: 4:2:2
    int verticalSampling = 1;
    bool hasRestartMarkers = false; ///< one at every row of MCUs
    bool isProgressive = false;
};

/// What most cameras write.
PhotoFormat cameraFormat();

/// Writes the picture as a JPEG file of a camera's quality. Ends the program where it cannot.
void writePhoto(const std::filesystem::path& path, const QImage& picture, const PhotoFormat& format);

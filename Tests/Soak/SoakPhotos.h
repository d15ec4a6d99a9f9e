#pragma once

#include "Platform/FileURL.h"
#include "Tests/Soak/ExpectedCulling.h"

#include <QImage>
#include <QRect>

#include <memory>
#include <string>
#include <vector>

class PhotoFolder;

/// A temporary folder of photographs of different sizes, some of them of 24 megapixels, as many as wanted on the room of
/// twenty: those repeat, by hard links. Each has a stripe across it whose colour tells it from the nineteen before and
/// after it.
class SoakPhotos {
public:
    /// How many there are until they repeat. A folder in which photos follow each other round its ends holds a multiple.
    static constexpr int different = 20;

    /// Draws them, which takes some seconds.
    explicit SoakPhotos(int count);
    ~SoakPhotos();

    int count() const { return m_count; }
    Platform::FileURL folder() const;
    std::string name(int photo) const; ///< of the file of a photo; they are numbered from 0 in name order

    /// Puts what was moved into that folder below back to where it was.
    void putBack(const std::string& subfolder) const;

    /// The part of a window of that size that shows() reads: a line of pixels.
    static QRect readPart(QSize window);

    /// Whether that part of the window shows this photo fitted, with this verdict.
    static bool shows(const QImage& part, int photo, Verdict verdict);

private:
    const int m_count;
    const std::unique_ptr<PhotoFolder> m_folder;
};

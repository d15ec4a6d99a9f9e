#pragma once

#include "Tools/Samples/JpegFile.h"
#include "Tools/Samples/Scene.h"

#include <vector>

/// Takes a picture of a scene: tone curve, a little darkening in the corners and fine grain.
class Camera {
public:
    /// @param scene        what is seen; outlives the camera
    /// @param viewed       size of the picture as it is seen, in pixels
    /// @param orientation  how its rows are to be stored
    Camera(const Scene& scene, PixelSize viewed, Orientation orientation, std::uint32_t seed);

    /// Size of the picture as it is stored.
    PixelSize storedSize() const { return m_stored; }

    /// A stored row as bytes R, G, B, valid until the next call. Rows are developed in bands on all cores;
    /// asked for from the top down each band is developed once.
    const std::uint8_t* row(int row);

private:
    struct Place {
        float x;
        float y;
    };
    /// Where in the scene a point of the stored picture lies; pixel centres are at halves.
    Place place(float column, float row) const;
    using Line = std::vector<Colour>;

    Colour tone(float column, float row) const;
    Colour refined(int column, int row) const;
    Line coarseLine(int row) const;
    void fillLine(int row, const Line& coarseAbove, const Line& coarseBelow, Line& line) const;
    void developBand(int firstRow);
    void developRows(int firstRow, int lastRow, std::uint8_t* out) const;
    void store(const Colour& colour, int column, int row, std::uint8_t* out) const;

    const Scene& m_scene;
    PixelSize m_viewed;
    PixelSize m_stored;
    Orientation m_orientation;
    std::uint32_t m_seed;
    int m_bandStart = -1;
    std::vector<std::uint8_t> m_band;
};

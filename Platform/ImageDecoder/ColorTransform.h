#pragma once

#include <QByteArray>

#include <lcms2.h>

#include <memory>
#include <type_traits>

namespace Platform {

/// Turns the pixels of a photo into sRGB. Made once for a decode; then any number of its threads may use it.
class ColorTransform {
public:
    /// What the four bytes of a pixel are.
    enum class Pixels {
        Grey, ///< blue, green and red alike, and 255
        Rgb,  ///< blue, green, red, 255
        Cmyk, ///< inks, 0 the most
    };

    /// @param iccProfile  of the photo; ignored where it is empty, larger than 16 MiB, damaged or of another kind of
    ///                    pixel. Perceptual intent.
    /// @param isAdobeRgb  whether pixels without a profile are Adobe RGB (1998) and not sRGB; for Pixels::Rgb
    ///                    only
    ColorTransform(Pixels pixels, const QByteArray& iccProfile, bool isAdobeRgb = false);

    /// Whether pixels are in sRGB as they are.
    bool isIdentity() const { return !m_transform && m_pixels != Pixels::Cmyk; }

    /// Replaces pixels by their blue, green and red in sRGB and 255.
    void apply(uchar* pixels, int count) const;

private:
    struct DeleteContext {
        void operator()(cmsContext context) const { cmsDeleteContext(context); }
    };
    struct DeleteTransform {
        void operator()(cmsHTRANSFORM transform) const { cmsDeleteTransform(transform); }
    };

    Pixels m_pixels;
    std::unique_ptr<std::remove_pointer_t<cmsContext>, DeleteContext> m_context;
    std::unique_ptr<std::remove_pointer_t<cmsHTRANSFORM>, DeleteTransform>
        m_transform; // none: pixels are sRGB, or plain inks
};

} // namespace Platform

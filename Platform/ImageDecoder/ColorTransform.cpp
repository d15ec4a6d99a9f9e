#include "Platform/ImageDecoder/ColorTransform.h"

#include "Platform/ImageDecoder/RowSource.h"

#include <algorithm>
#include <cmath>

namespace Platform {

namespace {

struct CloseProfile {
    void operator()(cmsHPROFILE profile) const { cmsCloseProfile(profile); }
};
using Profile = std::unique_ptr<void, CloseProfile>;

// One byte of grey, and three to pass over.
constexpr cmsUInt32Number greyFormat = COLORSPACE_SH(PT_GRAY) | EXTRA_SH(3) | CHANNELS_SH(1) | BYTES_SH(1);

cmsColorSpaceSignature colorSpace(ColorTransform::Pixels pixels) {
    switch (pixels) {
    case ColorTransform::Pixels::Grey:
        return cmsSigGrayData;
    case ColorTransform::Pixels::Rgb:
        return cmsSigRgbData;
    case ColorTransform::Pixels::Cmyk:
        break;
    }
    return cmsSigCmykData;
}

cmsUInt32Number format(ColorTransform::Pixels pixels) {
    switch (pixels) {
    case ColorTransform::Pixels::Grey:
        return greyFormat;
    case ColorTransform::Pixels::Rgb:
        return TYPE_BGRA_8;
    case ColorTransform::Pixels::Cmyk:
        break;
    }
    return TYPE_CMYK_8_REV;
}

// A JPEG can hold a little less; other formats know no bound.
constexpr qsizetype maximumProfileBytes = qsizetype{16} << 20;

Profile embeddedProfile(cmsContext context, const QByteArray& icc, ColorTransform::Pixels pixels) {
    if (icc.isEmpty() || icc.size() > maximumProfileBytes) {
        return nullptr;
    }
    Profile profile(
        cmsOpenProfileFromMemTHR(context, icc.constData(), static_cast<cmsUInt32Number>(icc.size())));
    return profile && cmsGetColorSpace(profile.get()) == colorSpace(pixels) ? std::move(profile) : nullptr;
}

/// Adobe RGB (1998) Color Image Encoding, version 2005-05: sections 4.3.1 to 4.3.4.
Profile adobeRgbProfile(cmsContext context) {
    constexpr cmsCIExyY white{0.3127, 0.3290, 1};
    constexpr cmsCIExyYTRIPLE primaries{{0.64, 0.33, 1}, {0.21, 0.71, 1}, {0.15, 0.06, 1}};
    constexpr double gamma = 563.0 / 256;
    cmsToneCurve* const curve = cmsBuildGamma(context, gamma);
    cmsToneCurve* const curves[] = {curve, curve, curve};
    Profile profile(cmsCreateRGBProfileTHR(context, &white, &primaries, curves));
    cmsFreeToneCurve(curve);
    return profile;
}

void setOpaque(uchar* pixels, int count) {
    for (int i = 0; i < count; ++i) {
        pixels[i * bytesPerPixel + 3] = 255;
    }
}

/// Each colour is what its ink and the black leave of the light.
void convertInks(uchar* pixels, int count) {
    for (int i = 0; i < count; ++i, pixels += bytesPerPixel) {
        const int cyan = pixels[0];
        const int magenta = pixels[1];
        const int yellow = pixels[2];
        const int black = pixels[3];
        pixels[0] = static_cast<uchar>((yellow * black + 127) / 255);
        pixels[1] = static_cast<uchar>((magenta * black + 127) / 255);
        pixels[2] = static_cast<uchar>((cyan * black + 127) / 255);
        pixels[3] = 255;
    }
}

/// Light of an sRGB value (IEC 61966-2-1), both in 0 to 1.
double srgbLight(double value) {
    return value <= 0.04045 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
}

/// Whether a tone curve gives no value another light than sRGB does, but for half of one of 255 steps.
bool isSrgbCurve(const cmsToneCurve* curve) {
    for (int step = 1; step < 255; ++step) {
        const double light = cmsEvalToneCurveFloat(curve, static_cast<float>(step / 255.0));
        if (light < srgbLight((step - 0.5) / 255) || light > srgbLight((step + 0.5) / 255)) {
            return false;
        }
    }
    return true;
}

/// Whether a primary is where sRGB has it (relative to D50, as profiles hold it), but for less than a step.
bool isNear(const cmsCIEXYZ& a, const cmsCIEXYZ& b) {
    constexpr double tolerance = 0.0005;
    return std::abs(a.X - b.X) < tolerance && std::abs(a.Y - b.Y) < tolerance &&
           std::abs(a.Z - b.Z) < tolerance;
}

/// Whether a profile of RGB pixels is sRGB in effect. Most embedded profiles are, and a transform for each of
/// them would take as long as a good part of a small decode.
bool isSrgb(cmsHPROFILE profile) {
    struct Channel {
        cmsTagSignature primaryTag;
        cmsTagSignature curveTag;
        cmsCIEXYZ primary;
    };
    static constexpr Channel channels[] = {
        {cmsSigRedColorantTag, cmsSigRedTRCTag, {0.4361, 0.2225, 0.0139}},
        {cmsSigGreenColorantTag, cmsSigGreenTRCTag, {0.3851, 0.7169, 0.0971}},
        {cmsSigBlueColorantTag, cmsSigBlueTRCTag, {0.1431, 0.0606, 0.7141}},
    };
    if (cmsIsTag(profile, cmsSigAToB0Tag)) {
        return false;
    }
    return std::ranges::all_of(channels, [&](const Channel& channel) {
        const auto* primary = static_cast<const cmsCIEXYZ*>(cmsReadTag(profile, channel.primaryTag));
        const auto* curve = static_cast<const cmsToneCurve*>(cmsReadTag(profile, channel.curveTag));
        return primary && curve && isNear(*primary, channel.primary) && isSrgbCurve(curve);
    });
}

} // namespace

ColorTransform::ColorTransform(Pixels pixels, const QByteArray& iccProfile, bool isAdobeRgb)
    : m_pixels(pixels), m_context(cmsCreateContext(nullptr, nullptr)) {
    Profile profile = embeddedProfile(m_context.get(), iccProfile, pixels);
    if (!profile && isAdobeRgb && pixels == Pixels::Rgb) {
        profile = adobeRgbProfile(m_context.get());
    }
    if (!profile || isSrgb(profile.get())) {
        return;
    }
    const Profile srgb(cmsCreate_sRGBProfileTHR(m_context.get()));
    m_transform.reset(cmsCreateTransformTHR(
        m_context.get(), profile.get(), format(pixels), srgb.get(), TYPE_BGRA_8, INTENT_PERCEPTUAL, 0));
}

void ColorTransform::apply(uchar* pixels, int count) const {
    const bool areInks = colorSpace(m_pixels) == cmsSigCmykData;
    if (m_transform) {
        cmsDoTransform(m_transform.get(), pixels, pixels, static_cast<cmsUInt32Number>(count));
        if (areInks) {
            setOpaque(pixels, count);
        }
    } else if (areInks) {
        convertInks(pixels, count);
    }
}

} // namespace Platform

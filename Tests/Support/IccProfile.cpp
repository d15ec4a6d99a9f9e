#include "Tests/Support/IccProfile.h"

#include <lcms2.h>

#include <array>
#include <functional>
#include <memory>
#include <stdexcept>

namespace {

struct CloseProfile {
    void operator()(cmsHPROFILE profile) const { cmsCloseProfile(profile); }
};
using Profile = std::unique_ptr<void, CloseProfile>;

struct DeleteTransform {
    void operator()(cmsHTRANSFORM transform) const { cmsDeleteTransform(transform); }
};
using Transform = std::unique_ptr<void, DeleteTransform>;

struct FreeCurve {
    void operator()(cmsToneCurve* curve) const { cmsFreeToneCurve(curve); }
};
using Curve = std::unique_ptr<cmsToneCurve, FreeCurve>;

constexpr cmsCIExyY whitePoint{0.3127, 0.3290, 1};
constexpr cmsCIExyY red{0.64, 0.33, 1};
constexpr cmsCIExyY green{0.30, 0.60, 1};
constexpr cmsCIExyY blue{0.15, 0.06, 1};

QByteArray bytes(const Profile& profile) {
    cmsUInt32Number size = 0;
    if (!profile || !cmsSaveProfileToMem(profile.get(), nullptr, &size)) {
        throw std::runtime_error("a profile could not be made");
    }
    QByteArray result(static_cast<qsizetype>(size), '\0');
    cmsSaveProfileToMem(profile.get(), result.data(), &size);
    return result;
}

Curve srgbCurve() {
    const std::array parameters{2.4, 1 / 1.055, 0.055 / 1.055, 1 / 12.92, 0.04045};
    return Curve(cmsBuildParametricToneCurve(nullptr, 4, parameters.data()));
}

QByteArray rgbProfile(const cmsCIExyYTRIPLE& primaries, const Curve& curve) {
    const std::array curves{curve.get(), curve.get(), curve.get()};
    return bytes(Profile(cmsCreateRGBProfile(&whitePoint, &primaries, curves.data())));
}

using Rgb = std::array<double, 3>;

/// What a colour of the profile's pixels, each channel in 0 to 1, is in sRGB.
using Look = std::function<Rgb(const cmsUInt16Number* channels)>;

struct Sampling {
    Look look;
    Transform toLab;
};

cmsInt32Number sample(const cmsUInt16Number* in, cmsUInt16Number* out, void* cargo) {
    const auto& sampling = *static_cast<const Sampling*>(cargo);
    const Rgb rgb = sampling.look(in);
    cmsDoTransform(sampling.toLab.get(), rgb.data(), out, 1);
    return TRUE;
}

/// A profile that holds its colours in a table and nothing else.
Profile tableProfile(cmsColorSpaceSignature space, Look look) {
    const Profile srgb(cmsCreate_sRGBProfile());
    const Profile lab(cmsCreateLab4Profile(nullptr));
    Sampling sampling{std::move(look), Transform(cmsCreateTransform(srgb.get(), TYPE_RGB_DBL, lab.get(),
                                           TYPE_Lab_16, INTENT_PERCEPTUAL, cmsFLAGS_NOOPTIMIZE))};
    constexpr cmsUInt32Number gridPoints = 9;
    const cmsUInt32Number channels = cmsChannelsOf(space);
    cmsPipeline* const pipeline = cmsPipelineAlloc(nullptr, channels, 3);
    cmsStage* const table = cmsStageAllocCLut16bit(nullptr, gridPoints, channels, 3, nullptr);
    cmsStageSampleCLut16bit(table, sample, &sampling, 0);
    cmsPipelineInsertStage(pipeline, cmsAT_END, cmsStageAllocToneCurves(nullptr, channels, nullptr));
    cmsPipelineInsertStage(pipeline, cmsAT_END, table);
    cmsPipelineInsertStage(pipeline, cmsAT_END, cmsStageAllocToneCurves(nullptr, 3, nullptr));

    Profile profile(cmsCreateProfilePlaceholder(nullptr));
    cmsSetDeviceClass(profile.get(), cmsSigOutputClass);
    cmsSetColorSpace(profile.get(), space);
    cmsSetPCS(profile.get(), cmsSigLabData);
    const bool isWritten = cmsWriteTag(profile.get(), cmsSigAToB0Tag, pipeline);
    cmsPipelineFree(pipeline);
    if (!isWritten) {
        throw std::runtime_error("a table of colours could not be written");
    }
    return profile;
}

double unit(cmsUInt16Number value) {
    return value / 65535.0;
}

} // namespace

QByteArray IccProfile::srgb() {
    return bytes(Profile(cmsCreate_sRGBProfile()));
}

QByteArray IccProfile::adobeRgb() {
    return rgbProfile({red, {0.21, 0.71, 1}, blue}, Curve(cmsBuildGamma(nullptr, 563.0 / 256)));
}

QByteArray IccProfile::rotatedRgb() {
    return rgbProfile({green, blue, red}, srgbCurve());
}

QByteArray IccProfile::rotatedRgbTable() {
    const Profile profile = tableProfile(cmsSigRgbData, [](const cmsUInt16Number* stored) {
        return Rgb{unit(stored[2]), unit(stored[0]), unit(stored[1])};
    });
    const Profile srgb(cmsCreate_sRGBProfile());
    for (const cmsTagSignature tag : {cmsSigRedColorantTag, cmsSigGreenColorantTag, cmsSigBlueColorantTag,
             cmsSigRedTRCTag, cmsSigGreenTRCTag, cmsSigBlueTRCTag}) {
        cmsWriteTag(profile.get(), tag, cmsReadTag(srgb.get(), tag));
    }
    return bytes(profile);
}

QByteArray IccProfile::linearGrey() {
    return bytes(Profile(cmsCreateGrayProfile(&whitePoint, Curve(cmsBuildGamma(nullptr, 1)).get())));
}

QByteArray IccProfile::redCyan() {
    return bytes(tableProfile(cmsSigCmykData, [](const cmsUInt16Number* inks) {
        const double light = 1 - unit(inks[3]);
        const double cyan = 1 - unit(inks[0]);
        return Rgb{light, light * cyan * (1 - unit(inks[1])), light * cyan * (1 - unit(inks[2]))};
    }));
}

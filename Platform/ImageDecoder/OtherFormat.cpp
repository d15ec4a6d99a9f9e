#include "Platform/ImageDecoder/OtherFormat.h"

#include <algorithm>
#include <array>
#include <string_view>

using namespace std::string_view_literals;

namespace Platform {

namespace {

struct Signature {
    std::size_t place; ///< in bytes from the start
    std::string_view bytes;
    const char* format;
};

constexpr std::array signatures{
    Signature{0, "\x89PNG\r\n\x1a\n"sv, "png"}, // ISO/IEC 15948, 5.2
    Signature{8, "WEBP"sv, "webp"},             // in a container of many uses; RFC 9649, 2.4
    Signature{0, "GIF87a"sv, "gif"},
    Signature{0, "GIF89a"sv, "gif"},
    Signature{0, "II*\0"sv, "tiff"}, // TIFF 6.0, section 2; with "+" it has 64-bit offsets
    Signature{0, "MM\0*"sv, "tiff"},
    Signature{0, "II+\0"sv, "tiff"},
    Signature{0, "MM\0+"sv, "tiff"},
    Signature{0, "BM"sv, "bmp"},
    Signature{
        4, "ftyphei"sv, "heif"}, // ISO/IEC 23008-12, annex B: one picture, a sequence, of several layers
    Signature{4, "ftyphev"sv, "heif"},
    Signature{4, "ftypmif1"sv, "heif"},
    Signature{4, "ftypmsf1"sv, "heif"},
};

} // namespace

QByteArray otherFormat(const QByteArray& beginning) {
    const std::string_view bytes(beginning.constData(), static_cast<std::size_t>(beginning.size()));
    const auto* const found = std::ranges::find_if(signatures, [&](const Signature& signature) {
        return bytes.size() > signature.place && bytes.substr(signature.place).starts_with(signature.bytes);
    });
    return found == signatures.end() ? QByteArray() : QByteArray(found->format);
}

} // namespace Platform

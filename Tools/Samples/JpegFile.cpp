#include "Tools/Samples/JpegFile.h"

#include <jpeglib.h> // needs <cstdio> before it
#include <libexif/exif-data.h>

#include <cerrno>
#include <csetjmp>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string_view>
#include <vector>

using Platform::Error;
using Platform::Result;

namespace {

struct CloseFile {
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using OpenFile = std::unique_ptr<std::FILE, CloseFile>;

Error failure(const std::filesystem::path& file, int code) {
    return Error::ofSystemCall(QStringLiteral("“%1” could not be written"), file.filename().native(), code);
}

/// libjpeg reports errors by a long jump to where the failing call was made; every call goes through
/// attempt().
struct Compressor {
    jpeg_compress_struct codec{};
    jpeg_error_mgr errors{};
    std::jmp_buf escape{};
};

void jumpOut(j_common_ptr codec) {
    std::longjmp(static_cast<Compressor*>(codec->client_data)->escape, 1);
}

/// Runs one step, and gives false where libjpeg gave up in it. Neither the step nor this may hold an object
/// with a destructor, since a jump skips it.
template <typename Step>
bool attempt(Compressor& compressor, Step step) {
    if (setjmp(compressor.escape) != 0) {
        return false;
    }
    step(compressor.codec);
    return true;
}

void setText(ExifData* exif, ExifIfd ifd, ExifTag tag, std::string_view text) {
    ExifMem* memory = exif_mem_new_default();
    ExifEntry* entry = exif_entry_new_mem(memory);
    entry->tag = tag;
    entry->format = EXIF_FORMAT_ASCII;
    entry->components = text.size() + 1;
    entry->size = static_cast<unsigned>(text.size() + 1);
    entry->data = static_cast<unsigned char*>(exif_mem_alloc(memory, entry->size)); // filled with zeros
    std::copy(text.begin(), text.end(), entry->data);
    exif_content_add_entry(exif->ifd[ifd], entry);
    exif_entry_unref(entry);
    exif_mem_unref(memory);
}

/// The content of the APP1 segment.
std::vector<unsigned char> exifOf(Orientation orientation) {
    ExifData* exif = exif_data_new();
    exif_data_set_byte_order(exif, EXIF_BYTE_ORDER_INTEL);
    ExifEntry* entry = exif_entry_new();
    exif_content_add_entry(exif->ifd[EXIF_IFD_0], entry);
    exif_entry_initialize(entry, EXIF_TAG_ORIENTATION);
    exif_set_short(entry->data, EXIF_BYTE_ORDER_INTEL, static_cast<ExifShort>(orientation));
    exif_entry_unref(entry);
    setText(exif, EXIF_IFD_0, EXIF_TAG_MAKE, "Vantrel");
    setText(exif, EXIF_IFD_0, EXIF_TAG_MODEL, "Drawn Sample");
    unsigned char* bytes = nullptr;
    unsigned count = 0;
    exif_data_save_data(exif, &bytes, &count);
    std::vector<unsigned char> content(bytes, bytes + count);
    std::free(bytes);
    exif_data_unref(exif);
    return content;
}

bool start(Compressor& compressor, std::FILE* file, PixelSize size, const std::vector<unsigned char>& exif) {
    return attempt(compressor, [&](jpeg_compress_struct& codec) {
        jpeg_create_compress(&codec);
        jpeg_stdio_dest(&codec, file);
        codec.image_width = static_cast<JDIMENSION>(size.width);
        codec.image_height = static_cast<JDIMENSION>(size.height);
        codec.input_components = 3;
        codec.in_color_space = JCS_RGB;
        jpeg_set_defaults(&codec);
        jpeg_set_quality(&codec, 92, TRUE);
        codec.comp_info[0].h_samp_factor = 2;
        codec.comp_info[0].v_samp_factor = 1;
        jpeg_start_compress(&codec, TRUE);
        jpeg_write_marker(&codec, JPEG_APP0 + 1, exif.data(), static_cast<unsigned>(exif.size()));
    });
}

bool compress(
    std::FILE* file, PixelSize size, const std::vector<unsigned char>& exif, const RowSource& rowAt) {
    Compressor compressor;
    compressor.codec.err = jpeg_std_error(&compressor.errors);
    compressor.errors.error_exit = jumpOut;
    compressor.codec.client_data = &compressor;
    bool isFine = start(compressor, file, size, exif);
    for (int row = 0; isFine && row < size.height; ++row) {
        JSAMPROW pixels = const_cast<JSAMPROW>(rowAt(row)); // libjpeg only reads
        isFine = attempt(
            compressor, [&](jpeg_compress_struct& codec) { jpeg_write_scanlines(&codec, &pixels, 1); });
    }
    isFine = isFine && attempt(compressor, [](jpeg_compress_struct& codec) { jpeg_finish_compress(&codec); });
    jpeg_destroy_compress(&compressor.codec);
    return isFine;
}

} // namespace

Result<void> writeJpeg(
    const std::filesystem::path& file, PixelSize size, Orientation orientation, const RowSource& rowAt) {
    std::filesystem::path unfinished = file;
    unfinished += ".part";
    OpenFile stream(std::fopen(unfinished.c_str(), "wb"));
    if (!stream) {
        return failure(file, errno);
    }
    errno = 0;
    const bool isCompressed = compress(stream.get(), size, exifOf(orientation), rowAt);
    const int compressError = errno;
    const bool isClosed = std::fclose(stream.release()) == 0;
    if (isCompressed && isClosed && std::rename(unfinished.c_str(), file.c_str()) == 0) {
        return {};
    }
    const int code = isCompressed ? errno : compressError;
    std::remove(unfinished.c_str());
    return failure(file, code != 0 ? code : EIO);
}

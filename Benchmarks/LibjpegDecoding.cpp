#include "Benchmarks/LibjpegDecoding.h"

#include "Benchmarks/Measuring.h"

#include <fcntl.h>
#include <jpeglib.h> // needs <cstdio> before it
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <vector>

namespace {

std::vector<unsigned char> contentOf(const std::string& path) {
    const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    check(file >= 0, "cannot be opened: " + path);
    std::vector<unsigned char> content(static_cast<std::size_t>(lseek(file, 0, SEEK_END)));
    lseek(file, 0, SEEK_SET);
    std::size_t filled = 0;
    while (filled < content.size()) {
        const ssize_t count = read(file, content.data() + filled, content.size() - filled);
        check(count > 0, "cannot be read: " + path);
        filled += static_cast<std::size_t>(count);
    }
    close(file);
    return content;
}

void chooseScale(jpeg_decompress_struct& jpeg, int size) {
    const auto longSide = static_cast<int>(std::max(jpeg.image_width, jpeg.image_height));
    jpeg.scale_num = 1;
    jpeg.scale_denom = 8;
    while (jpeg.scale_denom > 1 && (size == 0 || longSide < size * static_cast<int>(jpeg.scale_denom))) {
        jpeg.scale_denom /= 2;
    }
}

} // namespace

QImage decodeByLibjpeg(const std::string& path, int size) {
    const std::vector<unsigned char> content = contentOf(path);
    jpeg_decompress_struct jpeg{};
    jpeg_error_mgr errors{};
    jpeg.err = jpeg_std_error(&errors); // ends the program
    jpeg_create_decompress(&jpeg);
    jpeg_mem_src(&jpeg, content.data(), content.size());
    jpeg_read_header(&jpeg, TRUE);
    chooseScale(jpeg, size);
    jpeg.out_color_space = JCS_EXT_BGRX;
    jpeg_start_decompress(&jpeg);
    QImage pixels(
        static_cast<int>(jpeg.output_width), static_cast<int>(jpeg.output_height), QImage::Format_RGB32);
    while (jpeg.output_scanline < jpeg.output_height) {
        JSAMPROW row = pixels.scanLine(static_cast<int>(jpeg.output_scanline));
        jpeg_read_scanlines(&jpeg, &row, 1);
    }
    jpeg_destroy_decompress(&jpeg);
    return pixels;
}

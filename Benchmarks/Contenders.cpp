#include "Benchmarks/Contenders.h"

#include "Benchmarks/LibjpegDecoding.h"
#include "Benchmarks/Measuring.h"
#include "Platform/ImageDecoder/ImageDecoder.h"

#include <QImage>
#include <QImageReader>

#include <gdk-pixbuf/gdk-pixbuf.h>
#include <vips/vips.h>

namespace {

bool decodeByApplication(const std::string& path, int size) {
    return bool(Platform::decodeImage(Platform::FileURL(path), size));
}

bool decodeByLibjpegAlone(const std::string& path, int size) {
    return !decodeByLibjpeg(path, size).isNull();
}

bool decodeByQt(const std::string& path, int size) {
    QImageReader reader(QString::fromStdString(path));
    if (size != 0) {
        reader.setScaledSize(reader.size().scaled(size, size, Qt::KeepAspectRatio));
    }
    return !reader.read().isNull();
}

bool decodeByVips(const std::string& path, int size) {
    VipsImage* image = nullptr;
    const int status = size == 0 ? vips_jpegload(path.c_str(), &image, nullptr)
                                 : vips_thumbnail(path.c_str(), &image, size, "height", size, nullptr);
    if (status != 0) {
        return false;
    }
    std::size_t length = 0;
    void* const pixels = vips_image_write_to_memory(image, &length);
    g_object_unref(image);
    g_free(pixels);
    return pixels != nullptr;
}

bool decodeByGdkPixbuf(const std::string& path, int size) {
    GdkPixbuf* const pixels =
        size == 0 ? gdk_pixbuf_new_from_file(path.c_str(), nullptr)
                  : gdk_pixbuf_new_from_file_at_scale(path.c_str(), size, size, TRUE, nullptr);
    if (!pixels) {
        return false;
    }
    g_object_unref(pixels);
    return true;
}

} // namespace

std::vector<Contender> makeContenders(const char* program) {
    check(VIPS_INIT(program) == 0, "libvips does not start");
    vips_cache_set_max(0); // every decode is a new one
    return {{"vantrel", decodeByApplication}, {"libjpeg-turbo", decodeByLibjpegAlone},
        {"QImageReader", decodeByQt}, {"libvips", decodeByVips}, {"gdk-pixbuf", decodeByGdkPixbuf}};
}

void setContenderThreads(int count) {
    vips_concurrency_set(count);
}

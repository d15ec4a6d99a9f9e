// decode-benchmark [PHOTO.jpg] [options of Google Benchmark]: how long a photo takes from its file to pixels
// through the application's decoder and through what one could use instead, in one run. Without a photo it
// draws one of 24 megapixels.

#include "Platform/ImageDecoder/ImageDecoder.h"

#include <QCoreApplication>
#include <QImage>
#include <QImageReader>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <gdk-pixbuf/gdk-pixbuf.h>
#include <jpeglib.h>
#include <unistd.h>
#include <vips/vips.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <map>
#include <random>
#include <string>
#include <vector>

namespace {

/// Decodes the photo of that path with at most that many pixels on its longer side (0: all). Ends the program
/// where it fails.
using Decode = std::function<void(const std::string& path, int size)>;

void check(bool isDecoded) {
    if (!isDecoded) {
        std::fputs("the photo could not be decoded\n", stderr);
        std::exit(EXIT_FAILURE);
    }
}

void decodeByApplication(const std::string& path, int size) {
    auto image = Platform::decodeImage(Platform::FileURL(path), size);
    check(bool(image));
    benchmark::DoNotOptimize(*image);
}

std::vector<unsigned char> contentOf(const std::string& path) {
    const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    check(file >= 0);
    std::vector<unsigned char> content(static_cast<std::size_t>(lseek(file, 0, SEEK_END)));
    lseek(file, 0, SEEK_SET);
    std::size_t filled = 0;
    while (filled < content.size()) {
        const ssize_t count = read(file, content.data() + filled, content.size() - filled);
        check(count > 0);
        filled += static_cast<std::size_t>(count);
    }
    close(file);
    return content;
}

/// Scaled while decoding, and not further: the least that anything built on the library has to do.
void decodeByLibjpeg(const std::string& path, int size) {
    const std::vector<unsigned char> content = contentOf(path);
    jpeg_decompress_struct jpeg{};
    jpeg_error_mgr errors{};
    jpeg.err = jpeg_std_error(&errors);
    jpeg_create_decompress(&jpeg);
    jpeg_mem_src(&jpeg, content.data(), content.size());
    jpeg_read_header(&jpeg, TRUE);
    const auto longSide = static_cast<int>(std::max(jpeg.image_width, jpeg.image_height));
    jpeg.scale_denom = 8;
    while (jpeg.scale_denom > 1 && (size == 0 || longSide < size * static_cast<int>(jpeg.scale_denom))) {
        jpeg.scale_denom /= 2;
    }
    jpeg.scale_num = 1;
    jpeg.out_color_space = JCS_EXT_BGRX;
    jpeg_start_decompress(&jpeg);
    QImage pixels(
        static_cast<int>(jpeg.output_width), static_cast<int>(jpeg.output_height), QImage::Format_RGB32);
    while (jpeg.output_scanline < jpeg.output_height) {
        JSAMPROW row = pixels.scanLine(static_cast<int>(jpeg.output_scanline));
        jpeg_read_scanlines(&jpeg, &row, 1);
    }
    jpeg_destroy_decompress(&jpeg);
    benchmark::DoNotOptimize(pixels.constBits());
}

void decodeByQt(const std::string& path, int size) {
    QImageReader reader(QString::fromStdString(path));
    if (size != 0) {
        reader.setScaledSize(reader.size().scaled(size, size, Qt::KeepAspectRatio));
    }
    const QImage image = reader.read();
    check(!image.isNull());
    benchmark::DoNotOptimize(image.constBits());
}

void decodeByVips(const std::string& path, int size) {
    VipsImage* image = nullptr;
    const int status = size == 0 ? vips_jpegload(path.c_str(), &image, nullptr)
                                 : vips_thumbnail(path.c_str(), &image, size, "height", size, nullptr);
    check(status == 0);
    std::size_t length = 0;
    void* const pixels = vips_image_write_to_memory(image, &length);
    check(pixels);
    benchmark::DoNotOptimize(pixels);
    g_free(pixels);
    g_object_unref(image);
}

void decodeByGdkPixbuf(const std::string& path, int size) {
    GdkPixbuf* const pixels =
        size == 0 ? gdk_pixbuf_new_from_file(path.c_str(), nullptr)
                  : gdk_pixbuf_new_from_file_at_scale(path.c_str(), size, size, TRUE, nullptr);
    check(pixels);
    benchmark::DoNotOptimize(pixels);
    g_object_unref(pixels);
}

struct Contender {
    std::string name;
    Decode decode;
};

const std::vector<Contender>& contenders() {
    static const std::vector<Contender> all{{"vantrel", decodeByApplication},
        {"libjpeg-turbo", decodeByLibjpeg}, {"QImageReader", decodeByQt}, {"libvips", decodeByVips},
        {"gdk-pixbuf", decodeByGdkPixbuf}};
    return all;
}

constexpr int sizes[] = {200, 1200, 2400, 0};

std::string benchmarkName(const Contender& contender, int size) {
    return contender.name + '/' + std::to_string(size);
}

/// Prints each median as it comes, and at the end all of them against the application's.
class RatioReporter final : public benchmark::ConsoleReporter {
public:
    RatioReporter() : ConsoleReporter(OO_Tabular) {}

    void ReportRuns(const std::vector<Run>& runs) override {
        for (const Run& run : runs) {
            if (run.aggregate_name == "median") {
                m_medians[run.run_name.function_name] = run.GetAdjustedRealTime();
            }
        }
        ConsoleReporter::ReportRuns(runs);
    }

    void Finalize() override {
        std::printf("\nmedian in ms, and how many times as long as the application's decode:\n%14s", "");
        for (const int size : sizes) {
            std::printf("%16s", size == 0 ? "full" : std::to_string(size).c_str());
        }
        for (const Contender& contender : contenders()) {
            std::printf("\n%14s", contender.name.c_str());
            for (const int size : sizes) {
                const double ours = m_medians[benchmarkName(contenders().front(), size)];
                const double theirs = m_medians[benchmarkName(contender, size)];
                std::printf("%9.1f (%4.2f)", theirs, theirs / ours);
            }
        }
        std::printf("\n");
    }

private:
    std::map<std::string, double> m_medians;
};

/// Slopes, curves and the noise of a sensor, in the size and at the quality of a camera.
void drawPhoto(const std::string& path) {
    constexpr int width = 6000;
    constexpr int height = 4000;
    std::mt19937 random(1); // NOLINT(bugprone-random-generator-seed): the same photo in every run
    QImage photo(width, height, QImage::Format_RGB32);
    for (int y = 0; y < height; ++y) {
        auto* const row = reinterpret_cast<QRgb*>(photo.scanLine(y));
        for (int x = 0; x < width; ++x) {
            const auto noise = static_cast<int>(random() % 24);
            const int light = (x / 40 + y / 40 + (x * y / 9000) % 60) % 200;
            row[x] = qRgb(light + noise, (light * 3 / 4 + y / 80) % 230 + noise, 200 - light + noise);
        }
    }
    constexpr int quality = 92;
    check(photo.save(QString::fromStdString(path), "JPEG", quality));
}

void registerAll(const std::string& path) {
    constexpr int repetitions = 15;
    for (const int size : sizes) {
        for (const Contender& contender : contenders()) {
            const std::string name = benchmarkName(contender, size);
            const auto run = [path, size, decode = contender.decode](benchmark::State& state) {
                for ([[maybe_unused]] const auto iteration : state) {
                    decode(path, size);
                }
            };
            benchmark::RegisterBenchmark(name.c_str(), run)
                ->Unit(benchmark::kMillisecond)
                ->UseRealTime()
                ->MeasureProcessCPUTime()
                ->Iterations(2)
                ->Repetitions(repetitions)
                ->ReportAggregatesOnly();
        }
    }
}

} // namespace

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    std::vector<char*> arguments(argv, argv + argc);
    std::string interleaved =
        "--benchmark_enable_random_interleaving=true"; // whatever else the machine does hits all
    arguments.insert(arguments.begin() + 1, interleaved.data());
    auto count = static_cast<int>(arguments.size());
    benchmark::Initialize(&count, arguments.data());
    if (VIPS_INIT(argv[0]) != 0) {
        return EXIT_FAILURE;
    }
    vips_cache_set_max(0); // every decode is a new one
    const QTemporaryDir folder;
    std::string path = folder.filePath(QStringLiteral("photo.jpg")).toStdString();
    if (count > 1) {
        path = arguments[1];
    } else {
        drawPhoto(path);
    }
    registerAll(path);
    RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    vips_shutdown();
    return EXIT_SUCCESS;
}

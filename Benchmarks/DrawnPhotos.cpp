#include "Benchmarks/DrawnPhotos.h"

#include "Benchmarks/Measuring.h"

#include <QColor>
#include <QPainter>
#include <QSysInfo>

#include <jpeglib.h> // needs <cstdio> before it

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <numeric>
#include <random>
#include <vector>

namespace {

constexpr int width = 6000;
constexpr int height = 4000;

using Random = std::mt19937;

/// About normally distributed around 0, with a standard deviation of 1.
float deviation(Random& random) {
    const auto bits = static_cast<std::uint32_t>(random());
    const auto sum = static_cast<int>((bits & 255) + (bits >> 8 & 255) + (bits >> 16 & 255) + (bits >> 24));
    return static_cast<float>(sum - 510) * (1 / 147.8F);
}

int between(int least, int most, Random& random) {
    return least + static_cast<int>(random() % static_cast<unsigned>(most - least + 1));
}

struct Field {
    Field(int fieldWidth, int fieldHeight)
        : width(fieldWidth), height(fieldHeight), values(static_cast<std::size_t>(width) * height) {}
    float* row(int y) { return values.data() + static_cast<std::size_t>(y) * width; }

    int width;
    int height;
    std::vector<float> values;
};

/// Where a value of a doubled field comes from: the nearest of the values, and the one on the other side of it.
struct Neighbours {
    Neighbours(int position, int count)
        : nearest(position / 2),
          next(std::clamp(position % 2 == 0 ? nearest - 1 : nearest + 1, 0, count - 1)) {}

    int nearest;
    int next;
};

float blend(float nearest, float next) {
    return 0.75F * nearest + 0.25F * next;
}

/// The field twice as fine, cut to that size.
Field doubled(Field& field, int newWidth, int newHeight) {
    Field result(newWidth, newHeight);
    std::vector<float> blended(static_cast<std::size_t>(field.width));
    for (int y = 0; y < newHeight; ++y) {
        const Neighbours rows(y, field.height);
        const float* const nearest = field.row(rows.nearest);
        std::transform(nearest, nearest + field.width, field.row(rows.next), blended.begin(), blend);
        float* const row = result.row(y);
        for (int x = 0; x < newWidth; ++x) {
            const Neighbours columns(x, field.width);
            row[x] = blend(blended[columns.nearest], blended[columns.next]);
        }
    }
    return result;
}

/// Scales and shifts the values to a mean of 0 and a standard deviation of 1.
void normalize(std::vector<float>& values) {
    const auto count = static_cast<double>(values.size());
    const double mean = std::accumulate(values.begin(), values.end(), 0.0) / count;
    const double squares = std::inner_product(values.begin(), values.end(), values.begin(), 0.0) / count;
    const double spread = std::sqrt(squares - mean * mean);
    for (float& value : values) {
        value = static_cast<float>((value - mean) / spread);
    }
}

/// Random octaves over each other, each twice as fine as the one before and that much weaker or stronger.
Field octaves(float strength, Random& random) {
    constexpr int coarsest = 10;
    Field field((width >> coarsest) + 1, (height >> coarsest) + 1);
    float amplitude = 1;
    for (int octave = coarsest; octave >= 0; --octave) {
        field = doubled(field, (width >> octave) + 1, (height >> octave) + 1);
        for (float& value : field.values) {
            value += amplitude * deviation(random);
        }
        amplitude *= strength;
    }
    normalize(field.values);
    return field;
}

int byte(float value) {
    return std::clamp(static_cast<int>(value), 0, 255);
}

void drawGround(QImage& picture, Random& random) {
    Field light = octaves(0.84F, random);  // amplitudes in proportion to 1 / frequency^1.25
    Field warmth = octaves(0.66F, random); // likewise, ^1.6
    Field tint = octaves(0.66F, random);
    for (int y = 0; y < height; ++y) {
        auto* const row = reinterpret_cast<QRgb*>(picture.scanLine(y));
        const float* const lights = light.row(y);
        const float* const warmths = warmth.row(y);
        const float* const tints = tint.row(y);
        for (int x = 0; x < width; ++x) {
            const float grey = 128 + 45 * lights[x];
            row[x] = qRgb(byte(grey + 22 * warmths[x]), byte(grey - 8 * warmths[x] - 8 * tints[x]),
                byte(grey + 22 * tints[x]));
        }
    }
}

QRect somewhere(int least, int most, Random& random) {
    const int x = between(-most / 2, width, random);
    const int y = between(-most / 2, height, random);
    return {x, y, between(least, most, random), between(least, most, random)};
}

void drawShapes(QImage& picture, Random& random) {
    constexpr int shapes = 60;
    QPainter painter(&picture);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    for (int shape = 0; shape < shapes; ++shape) {
        const int hue = between(0, 359, random);
        painter.setBrush(
            QColor::fromHsv(hue, between(0, 160, random), between(0, 255, random), between(40, 255, random)));
        const QRect place = somewhere(20, 700, random);
        if (shape % 2 == 0) {
            painter.drawEllipse(place);
        } else {
            painter.drawRect(place);
        }
    }
}

/// Like fences, reeds and cloth: lines from 3 to 12 pixels apart.
void drawLines(QImage& picture, Random& random) {
    constexpr int fields = 6;
    QPainter painter(&picture);
    painter.setRenderHint(QPainter::Antialiasing);
    for (int field = 0; field < fields; ++field) {
        const QRect place = somewhere(300, 900, random);
        const int distance = between(3, 12, random);
        const int slant = between(-100, 100, random);
        painter.setPen(QPen(QColor::fromHsv(between(0, 359, random), 60, between(0, 255, random)), 1.5));
        for (int x = place.left(); x < place.right(); x += distance) {
            painter.drawLine(x, place.top(), x + slant, place.bottom());
        }
    }
}

void addSensorNoise(QImage& picture, Random& random) {
    constexpr float ofLight = 2.5F;
    constexpr float ofColour = 1;
    for (int y = 0; y < height; ++y) {
        auto* const row = reinterpret_cast<QRgb*>(picture.scanLine(y));
        for (int x = 0; x < width; ++x) {
            const float light = ofLight * deviation(random) + 0.5F;
            const float colour = ofColour * deviation(random);
            row[x] = qRgb(byte(static_cast<float>(qRed(row[x])) + light + colour),
                byte(static_cast<float>(qGreen(row[x])) + light),
                byte(static_cast<float>(qBlue(row[x])) + light - colour));
        }
    }
}

void configure(jpeg_compress_struct& jpeg, const QImage& picture, const PhotoFormat& format) {
    constexpr int quality = 92;
    jpeg.image_width = static_cast<JDIMENSION>(picture.width());
    jpeg.image_height = static_cast<JDIMENSION>(picture.height());
    jpeg.input_components = 4;
    jpeg.in_color_space = QSysInfo::ByteOrder == QSysInfo::LittleEndian ? JCS_EXT_BGRX : JCS_EXT_XRGB;
    jpeg_set_defaults(&jpeg);
    jpeg_set_quality(&jpeg, quality, TRUE);
    jpeg.comp_info[0].h_samp_factor = format.horizontalSampling;
    jpeg.comp_info[0].v_samp_factor = format.verticalSampling;
    jpeg.restart_in_rows = format.hasRestartMarkers ? 1 : 0;
    if (format.isProgressive) {
        jpeg_simple_progression(&jpeg);
    }
}

/// Ends the program where the file cannot be written.
void compress(std::FILE* file, const QImage& picture, const PhotoFormat& format) {
    jpeg_compress_struct jpeg{};
    jpeg_error_mgr errors{};
    jpeg.err = jpeg_std_error(&errors);
    jpeg_create_compress(&jpeg);
    jpeg_stdio_dest(&jpeg, file);
    configure(jpeg, picture, format);
    jpeg_start_compress(&jpeg, TRUE);
    for (int y = 0; y < picture.height(); ++y) {
        JSAMPROW row = const_cast<JSAMPROW>(picture.constScanLine(y)); // libjpeg only reads
        jpeg_write_scanlines(&jpeg, &row, 1);
    }
    jpeg_finish_compress(&jpeg);
    jpeg_destroy_compress(&jpeg);
}

} // namespace

QImage drawPhotograph(unsigned seed) {
    Random random(seed);
    QImage picture(width, height, QImage::Format_RGB32);
    drawGround(picture, random);
    drawShapes(picture, random);
    drawLines(picture, random);
    addSensorNoise(picture, random);
    return picture;
}

PhotoFormat cameraFormat() {
    return {.name = "4:2:2", .horizontalSampling = 2};
}

void writePhoto(const std::filesystem::path& path, const QImage& picture, const PhotoFormat& format) {
    std::FILE* const file = std::fopen(path.c_str(), "wb");
    check(file != nullptr, "a drawn photo cannot be written");
    compress(file, picture, format);
    check(std::fclose(file) == 0, "a drawn photo cannot be written");
}

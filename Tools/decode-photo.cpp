// decode-photo: one photo through the application's own decoder, and how long that takes.

#include "Platform/ImageDecoder/ImageDecoder.h"

#include <QCoreApplication>
#include <QFile>
#include <QTextStream>

#include <algorithm>
#include <charconv>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

namespace {

struct Arguments {
    int repetitions = 1;
    std::string_view file;
    int maxPixelSize = 0;
    std::string_view output; // empty: the picture is not written
};

enum ExitStatus { Success = 0, Failure = 1, WrongUsage = 2 };

std::optional<int> number(std::string_view text, int least) {
    int value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    const bool isWhole = error == std::errc() && end == text.data() + text.size();
    return isWhole && value >= least ? std::optional(value) : std::nullopt;
}

std::optional<Arguments> parse(std::vector<std::string_view> words) {
    Arguments arguments;
    if (words.size() >= 2 && words[0] == "--repeat") {
        const std::optional<int> repetitions = number(words[1], 1);
        if (!repetitions) {
            return std::nullopt;
        }
        arguments.repetitions = *repetitions;
        words.erase(words.begin(), words.begin() + 2);
    }
    if (words.size() < 2 || words.size() > 3 || words[0].empty()) {
        return std::nullopt;
    }
    const std::optional<int> maxPixelSize = number(words[1], 0);
    if (!maxPixelSize) {
        return std::nullopt;
    }
    arguments.file = words[0];
    arguments.maxPixelSize = *maxPixelSize;
    arguments.output = words.size() == 3 ? words[2] : std::string_view();
    return arguments;
}

double median(std::vector<double> values) {
    std::ranges::sort(values);
    const std::size_t middle = values.size() / 2;
    return values.size() % 2 == 1 ? values[middle] : (values[middle - 1] + values[middle]) / 2;
}

void complain(const QString& sentence) {
    QTextStream(stderr) << "decode-photo: " << sentence << '\n';
}

bool write(const QImage& pixels, std::string_view path) {
    // Not a QFile, whose names are text.
    const std::string name(path);
    std::FILE* const file = std::fopen(name.c_str(), "wb");
    QFile device;
    const bool isWritten = file && device.open(file, QIODevice::WriteOnly) && pixels.save(&device, "PNG");
    device.close();
    return file && std::fclose(file) == 0 && isWritten;
}

int decode(const Arguments& arguments) {
    const Platform::FileURL url{std::filesystem::path(arguments.file)};
    std::vector<double> milliseconds;
    Platform::Image image;
    for (int i = 0; i < arguments.repetitions; ++i) {
        const auto start = std::chrono::steady_clock::now();
        const auto decoded = Platform::decodeImage(url, arguments.maxPixelSize);
        const std::chrono::duration<double, std::milli> elapsed = std::chrono::steady_clock::now() - start;
        if (!decoded) {
            complain(decoded.error().localizedDescription());
            return Failure;
        }
        milliseconds.push_back(elapsed.count());
        image = *decoded;
    }
    if (!arguments.output.empty() && !write(image.pixels(), arguments.output)) {
        complain(QStringLiteral("“%1” could not be written.").arg(Platform::displayText(arguments.output)));
        return Failure;
    }
    std::printf(
        "%dx%d %.1f\n", image.pixels().width(), image.pixels().height(), median(std::move(milliseconds)));
    return Success;
}

} // namespace

int main(int argc, char** argv) {
    const std::optional<Arguments> arguments = parse({argv + 1, argv + argc});
    if (!arguments) {
        complain(QStringLiteral("usage: decode-photo [--repeat K] FILE N [OUT.png]\n"
                                "Decodes FILE with at most N pixels on its longer side (0: all) and prints\n"
                                "WIDTHxHEIGHT and the milliseconds of a decode, the median of K."));
        return WrongUsage;
    }
    const QCoreApplication application(argc, argv); // image plugins are found through it
    return decode(*arguments);
}

// Draws sample photographs: landscapes that never were, so that there is something to open.

#include "Tools/Samples/Camera.h"
#include "Tools/Samples/Portfolio.h"

#include <charconv>
#include <cstdio>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace {

struct Order {
    std::filesystem::path folder;
    int count = 24;
    PixelSize size{3000, 2000};
    std::uint32_t seed = 0;
};

template <typename Number>
std::optional<Number> number(std::string_view text) {
    Number value{};
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    return error == std::errc() && end == text.data() + text.size() ? std::optional(value) : std::nullopt;
}

std::optional<PixelSize> pixelSize(std::string_view text) {
    constexpr int most = 65500; // libjpeg's own limit
    const std::size_t cross = text.find('x');
    if (cross == std::string_view::npos) {
        return std::nullopt;
    }
    const auto width = number<int>(text.substr(0, cross));
    const auto height = number<int>(text.substr(cross + 1));
    const bool isFine = width && height && *width > 0 && *height > 0 && *width <= most && *height <= most;
    return isFine ? std::optional(PixelSize{*width, *height}) : std::nullopt;
}

/// What the arguments order, or nothing where they make no sense.
std::optional<Order> parsed(const std::vector<std::string_view>& arguments) {
    Order order;
    std::vector<std::string_view> places;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const bool hasValue = i + 1 < arguments.size();
        if (arguments[i] == "--size" && hasValue) {
            const auto size = pixelSize(arguments[++i]);
            if (!size) {
                return std::nullopt;
            }
            order.size = *size;
        } else if (arguments[i] == "--seed" && hasValue) {
            const auto seed = number<std::uint32_t>(arguments[++i]);
            if (!seed) {
                return std::nullopt;
            }
            order.seed = *seed;
        } else if (arguments[i].starts_with("--")) {
            return std::nullopt;
        } else {
            places.push_back(arguments[i]);
        }
    }
    if (places.size() == 2) {
        const auto count = number<int>(places[1]);
        if (!count || *count < 0) {
            return std::nullopt;
        }
        order.count = *count;
    }
    if (places.empty() || places.size() > 2) {
        return std::nullopt;
    }
    order.folder = places[0];
    return order;
}

/// As a camera names its files.
std::string fileName(int index) {
    char name[32];
    std::snprintf(name, sizeof name, "VTR_%04d.JPG", index + 1);
    return name;
}

Platform::Result<void> draw(const Order& order, int index) {
    const Motif& motif = ::motif(index);
    const PixelSize viewed = motif.isPortrait ? PixelSize{order.size.height, order.size.width} : order.size;
    const auto width = static_cast<float>(viewed.width);
    const auto height = static_cast<float>(viewed.height);
    const int round = index / motifCount();
    const std::uint32_t seed = motif.place + 1000 * order.seed + 77 * static_cast<std::uint32_t>(round);
    const auto scene = motif.sceneOf({width / height, 1 / height}, seed);
    Camera camera(*scene, viewed, motif.orientation, seed);
    return writeJpeg(order.folder / fileName(index), camera.storedSize(), motif.orientation,
        [&camera](int row) { return camera.row(row); });
}

} // namespace

int main(int argc, char** argv) {
    const auto order = parsed({argv + 1, argv + argc});
    if (!order) {
        std::fputs("usage: draw-samples FOLDER [COUNT] [--size WIDTHxHEIGHT] [--seed N]\n"
                   "Draws COUNT (24) sample photographs of WIDTHxHEIGHT (3000x2000) pixels into FOLDER.\n",
            stderr);
        return 2;
    }
    std::error_code error;
    std::filesystem::create_directories(order->folder, error);
    if (error) {
        std::fprintf(stderr, "draw-samples: %s: %s\n", order->folder.c_str(), error.message().c_str());
        return 1;
    }
    for (int index = 0; index < order->count; ++index) {
        if (const auto drawn = draw(*order, index); !drawn) {
            std::fprintf(stderr, "draw-samples: %s\n", qUtf8Printable(drawn.error().localizedDescription()));
            return 1;
        }
    }
    return 0;
}

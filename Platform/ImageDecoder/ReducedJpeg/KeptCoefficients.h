#pragma once

#include "Platform/ImageDecoder/ReducedJpeg/JpegFrame.h"

#include <algorithm>
#include <array>

namespace Platform {

/// Which coefficients of a block are decoded when it becomes that many pixels each way (1, 2, 4 or 8), and in which order
/// their values are stored.
struct KeptCoefficients {
    /// The last that is decoded, in zigzag order.
    int last = 0;

    /// How many values of a block are coefficients kept. For two pixels each way, the first to the fourth of each four
    /// have waves across and down that are even and even, odd and even, even and odd, odd and odd; where there is no
    /// such coefficient left, the value is 0. Otherwise they come row by row.
    int kept = 0;

    /// How many values are stored for a block: those kept, and but for DC alone one more that takes what is not.
    int values = 0;

    /// For each place the coefficient's position in the block, row by row from the top left, or none.
    static constexpr quint8 none = 0xff;
    std::array<quint8, blockCoefficients> positions{};

    /// Where the value goes of the coefficient with which so many have come in zigzag order; what is not kept and what is
    /// beyond has the place of the last value. Beyond is where a decoder comes to that goes on after the end of a block: with
    /// each of its codes by that many at most.
    static constexpr std::size_t longestMove = blockCoefficients + 1;
    std::array<quint8, blockCoefficients*(longestMove + 1)> places{};
};

/// The position in a block, row by row, of each coefficient in zigzag order (T.81, figure A.6).
constexpr std::array<quint8, blockCoefficients> zigzagOrder() {
    std::array<quint8, blockCoefficients> order{};
    int x = 0;
    int y = 0;
    for (quint8& position : order) {
        position = static_cast<quint8>(y * dctSize + x);
        const bool isRising = (x + y) % 2 == 0;
        const int along = isRising ? x : y;
        const int across = isRising ? y : x;
        const bool isAtFarEdge = along == dctSize - 1;
        (isRising ? x : y) += isAtFarEdge ? 0 : 1;
        (isRising ? y : x) += isAtFarEdge ? 1 : across > 0 ? -1 : 0;
    }
    return order;
}

/// A small picture's pixels are to be the means of the full picture's, as those of libjpeg are. To means of half a block
/// or a quarter of it, waves of some frequencies contribute nothing at all; of the others, the finer the less. Those that
/// are left out of large photos make a difference of a few levels at sharp edges and none elsewhere, and most of a photo's
/// data are theirs.
///
/// @param isLarge  whether the photo is large enough for that to matter: JpegFrame::isLarge()
constexpr KeptCoefficients keptCoefficients(int scaledBlockSize, bool isLarge) {
    const int lastOfHalves = isLarge ? 13 : blockCoefficients - 1;
    const int lastOfQuarters = isLarge ? 35 : blockCoefficients - 1;
    const auto contributes = [&](int frequency) {
        return scaledBlockSize == 8 || (scaledBlockSize == 4 && frequency != 4) ||
               (scaledBlockSize == 2 && (frequency == 0 || frequency % 2 == 1)) || frequency == 0;
    };
    KeptCoefficients kept;
    kept.last = scaledBlockSize == 1   ? 0
                : scaledBlockSize == 2 ? lastOfHalves
                : scaledBlockSize == 4 ? lastOfQuarters
                                       : blockCoefficients - 1;
    constexpr std::array<quint8, blockCoefficients> order = zigzagOrder();
    std::array<bool, blockCoefficients> isKept{};
    for (int i = 0; i <= kept.last; ++i) {
        const int position = order[static_cast<std::size_t>(i)];
        isKept[static_cast<std::size_t>(position)] =
            contributes(position % dctSize) && contributes(position / dctSize);
    }
    // The places: where they go by fours, each four has one of each kind.
    const bool goByFours = scaledBlockSize == 2;
    const auto kind = [](std::size_t position) { return position % 2 + position / dctSize % 2 * 2; };
    std::array<quint8, blockCoefficients> placeOf{};
    std::array<std::size_t, 4> next{0, 1, 2, 3};
    kept.positions.fill(KeptCoefficients::none);
    for (std::size_t position = 0; position < blockCoefficients; ++position) {
        if (isKept[position]) {
            std::size_t& place = goByFours ? next[kind(position)] : next[0];
            placeOf[position] = static_cast<quint8>(place);
            kept.positions[place] = static_cast<quint8>(position);
            place += goByFours ? 4 : 1;
            kept.kept = std::max(kept.kept, static_cast<int>(goByFours ? place / 4 * 4 : place));
        }
    }
    kept.values = kept.kept + (kept.last > 0 ? 1 : 0);
    for (std::size_t i = 0; i < kept.places.size(); ++i) {
        const bool hasPlace = i > 0 && i <= blockCoefficients && isKept[order[i - 1]];
        kept.places[i] = hasPlace ? placeOf[order[i - 1]] : static_cast<quint8>(kept.kept);
    }
    return kept;
}

} // namespace Platform

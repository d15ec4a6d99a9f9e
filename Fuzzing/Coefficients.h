#pragma once

#include "Platform/ImageDecoder/ReducedJpeg/EntropyDecoder.h"

#include <optional>
#include <vector>

/// All values that a decoder gives, one band after the other.
struct DecodedValues {
    std::vector<qint16> values; ///< CoefficientDecoder::valuesPerMcu() for each MCU
    bool isFinished = false;

    friend bool operator==(const DecodedValues&, const DecodedValues&) = default;
};

DecodedValues decodeAll(Platform::EntropyDecoder& decoder);

#include "Fuzzing/Coefficients.h"

DecodedValues decodeAll(Platform::EntropyDecoder& decoder) {
    DecodedValues decoded;
    for (auto band = decoder.next(); band.mcuRows > 0; band = decoder.next()) {
        decoded.values.insert(decoded.values.end(), band.values.begin(), band.values.end());
    }
    decoded.isFinished = decoder.isFinished();
    return decoded;
}

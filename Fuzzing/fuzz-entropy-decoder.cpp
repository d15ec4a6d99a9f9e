// Entropy-coded data of all kinds, decoded in one piece by one thread and in small pieces by several: both must come to the
// same. The first bytes of the input say what frame it is and how it is cut; Huffman codes and data follow.

#include "Fuzzing/Coefficients.h"

#include <algorithm>
#include <cstdlib>

using namespace Platform;

namespace {

/// Takes bytes off the front of the input; zeros when there are no more.
class Input {
public:
    Input(const quint8* data, std::size_t size) : m_bytes(data, size) {}

    int byte() {
        if (m_bytes.empty()) {
            return 0;
        }
        const int value = m_bytes.front();
        m_bytes = m_bytes.subspan(1);
        return value;
    }

    int number(int least, int most) { return least + byte() % (most - least + 1); }
    std::size_t read(std::span<uchar> buffer) {
        const std::size_t count = std::min(buffer.size(), m_bytes.size());
        std::copy_n(m_bytes.begin(), count, buffer.begin());
        m_bytes = m_bytes.subspan(count);
        return count;
    }

private:
    std::span<const quint8> m_bytes;
};

/// One of the codes of the standard (T.81, K.3), shortened or as it is, or any.
HuffmanSpecification specification(Input& input, bool isDc) {
    HuffmanSpecification result;
    switch (input.number(0, 2)) {
    case 0: // all symbols of a length
        result.counts[7] = static_cast<quint8>(isDc ? 12 : 162);
        break;
    case 1: // a few short ones and many long ones
        result.counts = {0, 1, 2, 1, 1, 1, 1, 1, 0, 0, 0, 2, 3, 2, 1, 7};
        break;
    default:
        for (quint8& count : result.counts) {
            count = static_cast<quint8>(input.number(0, 3));
        }
    }
    int symbol = 0;
    for (quint8& value : result.symbols) {
        value = static_cast<quint8>(isDc ? symbol % 16 : (symbol * 37 + symbol / 16) % 256);
        ++symbol;
    }
    if (input.number(0, 1) == 1) {
        for (std::size_t i = 0; i < 12; ++i) {
            result.symbols[i] = static_cast<quint8>(isDc ? input.number(0, 15) : input.byte());
        }
    }
    return result;
}

JpegFrame frame(Input& input) {
    JpegFrame frame;
    frame.size = QSize(input.number(1, 200), input.number(1, 100));
    frame.restartInterval = input.number(0, 3) == 0 ? input.number(1, 20) : 0;
    const bool isGrey = input.number(0, 2) == 0;
    const bool areAlike = input.number(0, 3) == 0;
    frame.scaledBlockSize = 1 << input.number(0, 2);
    frame.colors = isGrey ? JpegFrame::Colors::Grey : JpegFrame::Colors::YCbCr;
    for (int i = 0; i < (isGrey ? 1 : 3); ++i) {
        JpegComponent component;
        component.horizontalFactor = isGrey || i > 0 ? 1 : input.number(1, 4);
        component.verticalFactor = isGrey || i > 0 ? 1 : input.number(1, 2);
        component.scaledBlockSize = 1 << input.number(0, 3);
        component.dc = i == 2 || (i > 0 && areAlike) ? frame.components[0].dc : specification(input, true);
        component.ac = i == 2 || (i > 0 && areAlike) ? frame.components[0].ac : specification(input, false);
        frame.components.push_back(component);
    }
    return frame;
}

/// What is stored for coefficients that are not kept may be anything.
void clearNotKept(const JpegFrame& frame, const McuCodes& codes, const CoefficientDecoder& coefficients,
    std::vector<qint16>& values) {
    for (std::size_t block = 0; block < codes.blocks().size(); ++block) {
        const JpegComponent& component = frame.components[static_cast<std::size_t>(codes.blocks()[block])];
        const KeptCoefficients kept = keptCoefficients(component.scaledBlockSize, frame.isLarge());
        const auto step = static_cast<std::size_t>(coefficients.valuesPerMcu());
        auto place = static_cast<std::size_t>(coefficients.blockOffsets()[block]) + kept.kept;
        for (; kept.values > kept.kept && place < values.size(); place += step) {
            values[place] = 0;
        }
    }
}

DecodedValues decode(
    const JpegFrame& frame, const McuCodes& codes, Input data, int threads, const EntropyDecoder::Cut& cut) {
    ThreadTeam team(threads);
    EntropyDecoder decoder(
        frame, codes, [&data](std::span<uchar> buffer) { return data.read(buffer); }, team, Task(), cut);
    DecodedValues decoded = decodeAll(decoder);
    clearNotKept(frame, codes, decoder.coefficients(), decoded.values);
    return decoded;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const quint8* bytes, std::size_t size) {
    Input input(bytes, size);
    EntropyDecoder::Cut small;
    small.segmentBytes = static_cast<std::size_t>(input.number(1, 64));
    small.windowBytes = static_cast<std::size_t>(input.number(1, 200));
    small.valuesPerBand = input.number(1, 200);
    const int threads = input.number(1, 16) == 16 ? 3 : 1;
    const JpegFrame what = frame(input);
    const std::optional<McuCodes> codes = McuCodes::make(what);
    if (!codes) {
        return 0;
    }
    const DecodedValues whole = decode(what, *codes, input, 1, {});
    const DecodedValues pieces = decode(what, *codes, input, threads, small);
    if (whole.isFinished != pieces.isFinished || (whole.isFinished && whole.values != pieces.values)) {
        std::abort();
    }
    return 0;
}

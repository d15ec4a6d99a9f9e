// JPEG files, decoded with our own decoder and with libjpeg: what ours takes for valid must be so for the library, and the
// coefficients must be the same.

#include "Fuzzing/Coefficients.h"
#include "Fuzzing/MemoryFile.h"
#include "Platform/ImageDecoder/JpegDecompressor.h"
#include "Platform/ImageDecoder/ReducedJpeg/KeptCoefficients.h"
#include "Platform/ImageDecoder/ReducedJpeg/ReducedJpeg.h"

#include <csetjmp>
#include <cstdlib>

using namespace Platform;

namespace {

constexpr qint64 mostPixels = 1 << 20; // more take too long to learn anything new from

/// The library's coefficients.
class Reference {
public:
    Reference(const quint8* data, std::size_t size) {
        m_jpeg.err = jpeg_std_error(&m_errors);
        m_jpeg.client_data = this;
        m_errors.error_exit = [](j_common_ptr info) {
            std::longjmp(static_cast<Reference*>(info->client_data)->m_leaving, 1);
        };
        m_errors.output_message = [](j_common_ptr) {};
        jpeg_create_decompress(&m_jpeg);
        read(data, size);
    }
    ~Reference() { jpeg_destroy_decompress(&m_jpeg); }
    Reference(const Reference&) = delete;
    Reference& operator=(const Reference&) = delete;

    bool isValid() const { return m_arrays && m_errors.num_warnings == 0; }

    /// 64 coefficients, row by row; none beyond the component's last block.
    const JCOEF* block(std::size_t component, int row, int column) {
        const jpeg_component_info& info = m_jpeg.comp_info[component];
        if (static_cast<JDIMENSION>(row) >= info.height_in_blocks ||
            static_cast<JDIMENSION>(column) >= info.width_in_blocks) {
            return nullptr;
        }
        return m_jpeg.mem->access_virt_barray(reinterpret_cast<j_common_ptr>(&m_jpeg), m_arrays[component],
            static_cast<JDIMENSION>(row), 1, FALSE)[0][column];
    }

private:
    void read(const quint8* data, std::size_t size) {
        if (setjmp(m_leaving) == 0) {
            jpeg_mem_src(&m_jpeg, data, size);
            jpeg_read_header(&m_jpeg, TRUE);
            m_errors.num_warnings = 0; // what is odd before the data is the library's business either way
            m_arrays = jpeg_read_coefficients(&m_jpeg);
        }
    }

    jpeg_decompress_struct m_jpeg{};
    jpeg_error_mgr m_errors{};
    std::jmp_buf m_leaving{};
    jvirt_barray_ptr* m_arrays = nullptr;
};

void compareMcu(const JpegFrame& frame, const qint16* values, const std::vector<int>& offsets, int row,
    int mcu, Reference& reference) {
    std::size_t block = 0;
    for (std::size_t index = 0; index < frame.components.size(); ++index) {
        const JpegComponent& component = frame.components[index];
        const KeptCoefficients kept = keptCoefficients(component.scaledBlockSize, frame.isLarge());
        for (int y = 0; y < component.verticalFactor; ++y) {
            for (int x = 0; x < component.horizontalFactor; ++x, ++block) {
                const JCOEF* const expected = reference.block(
                    index, row * component.verticalFactor + y, mcu * component.horizontalFactor + x);
                for (int i = 0; expected && i < kept.kept; ++i) {
                    const quint8 position = kept.positions[static_cast<std::size_t>(i)];
                    const int value = position == KeptCoefficients::none ? 0 : expected[position];
                    if (values[offsets[block] + i] != value) {
                        std::abort();
                    }
                }
            }
        }
    }
}

struct Input {
    const quint8* data;
    std::size_t size;
    int denominator;
    int threads;
    EntropyDecoder::Cut cut;
};

/// A file whose header has been read.
class OpenedPhoto {
public:
    OpenedPhoto(const FileURL& url, int denominator)
        : m_file(ReadOnlyFile::open(url)), m_jpeg(*m_file, Task()) {
        if (m_jpeg.readHeader() &&
            static_cast<qint64>(m_jpeg.size().width()) * m_jpeg.size().height() <= mostPixels) {
            frame = m_jpeg.frame(denominator);
            codes = frame ? McuCodes::make(*frame) : std::nullopt;
        }
    }

    ScanData::Read read() {
        return [this](std::span<uchar> buffer) { return m_jpeg.readData(buffer); };
    }

    std::optional<JpegFrame> frame;
    std::optional<McuCodes> codes; ///< none where it is not for our decoder

private:
    Result<ReadOnlyFile> m_file;
    JpegDecompressor m_jpeg;
};

void compareCoefficients(const Input& input, const FileURL& url) {
    OpenedPhoto photo(url, input.denominator);
    if (!photo.codes) {
        return;
    }
    const JpegFrame& frame = *photo.frame;
    ThreadTeam team(input.threads);
    EntropyDecoder decoder(frame, *photo.codes, photo.read(), team, Task(), input.cut);
    const DecodedValues decoded = decodeAll(decoder);
    if (!decoded.isFinished) {
        return;
    }
    Reference reference(input.data, input.size);
    if (!reference.isValid()) {
        std::abort();
    }
    const CoefficientDecoder& coefficients = decoder.coefficients();
    const qint16* values = decoded.values.data();
    for (int row = 0; row < frame.mcuRows(); ++row) {
        for (int mcu = 0; mcu < frame.mcusPerRow(); ++mcu, values += coefficients.valuesPerMcu()) {
            compareMcu(frame, values, coefficients.blockOffsets(), row, mcu, reference);
        }
    }
}

void makePixels(const Input& input, const FileURL& url) {
    OpenedPhoto photo(url, input.denominator);
    if (!photo.codes) {
        return;
    }
    const JpegFrame& frame = *photo.frame;
    ThreadTeam team(input.threads);
    ReducedJpeg rows(frame, *photo.codes, photo.read(), team, Task(), input.cut);
    const qsizetype bytesPerLine = static_cast<qsizetype>(frame.scaledSize.width()) * bytesPerPixel;
    constexpr int rowsAtATime = 5;
    std::vector<uchar> pixels(static_cast<std::size_t>(rowsAtATime * bytesPerLine));
    int read = 0;
    while (const int count = rows.readRows(pixels.data(), bytesPerLine, rowsAtATime)) {
        read += count;
    }
    if (rows.isFinished() && read != frame.scaledSize.height()) {
        std::abort();
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const quint8* bytes, std::size_t size) {
    if (size < 16) {
        return 0;
    }
    // The last bytes of a file count for nothing after its end; here they say how it is cut.
    const quint8* const choice = bytes + size - 4;
    Input input{bytes, size, 2 << choice[0] % 3, choice[0] > 250 ? 3 : 1, {}};
    if (choice[1] != 0) {
        input.cut.segmentBytes = choice[1];
        input.cut.windowBytes = choice[2] * std::size_t{8} + 1;
        input.cut.valuesPerBand = choice[3] * 16 + 1;
    }
    const MemoryFile file(bytes, size);
    compareCoefficients(input, file.url());
    makePixels(input, file.url());
    return 0;
}

#include "Tests/Platform/ImageDecoder/ReducedJpeg/CoefficientComparison.h"

#include "Platform/ImageDecoder/JpegDecompressor.h"

using namespace Platform;

LibraryCoefficients::LibraryCoefficients(const QByteArray& file) : m_file(file) {
    m_info.err = jpeg_std_error(&m_errors);
    m_info.client_data = this;
    m_errors.error_exit = [](j_common_ptr info) {
        std::longjmp(static_cast<LibraryCoefficients*>(info->client_data)->m_leaving, 1);
    };
    m_errors.output_message = [](j_common_ptr) {};
    jpeg_create_decompress(&m_info);
    read();
}

LibraryCoefficients::~LibraryCoefficients() {
    jpeg_destroy_decompress(&m_info);
}

void LibraryCoefficients::read() {
    if (setjmp(m_leaving) == 0) {
        jpeg_mem_src(&m_info, reinterpret_cast<const uchar*>(m_file.constData()),
            static_cast<unsigned long>(m_file.size()));
        jpeg_read_header(&m_info, TRUE);
        m_errors.num_warnings = 0; // what is odd before the data does not make them invalid
        m_arrays = jpeg_read_coefficients(&m_info);
    }
}

const JCOEF* LibraryCoefficients::block(std::size_t component, int row, int column) {
    const jpeg_component_info& info = m_info.comp_info[component];
    if (static_cast<JDIMENSION>(row) >= info.height_in_blocks ||
        static_cast<JDIMENSION>(column) >= info.width_in_blocks) {
        return nullptr;
    }
    return m_info.mem->access_virt_barray(reinterpret_cast<j_common_ptr>(&m_info), m_arrays[component],
        static_cast<JDIMENSION>(row), 1, FALSE)[0][column];
}

namespace {

/// Compares the MCUs of a frame one after the other.
class McuComparison {
public:
    McuComparison(
        LibraryCoefficients& library, const JpegFrame& frame, const CoefficientDecoder& coefficients)
        : m_library(library), m_frame(frame), m_coefficients(coefficients) {
        for (const JpegComponent& component : frame.components) {
            m_kept.push_back(keptCoefficients(component.scaledBlockSize, frame.isLarge()));
        }
    }

    QString compare(const EntropyDecoder::Band& band) {
        const qint16* values = band.values.data();
        for (int row = 0; row < band.mcuRows; ++row, ++m_row) {
            for (int mcu = 0; mcu < m_frame.mcusPerRow(); ++mcu, values += m_coefficients.valuesPerMcu()) {
                QString difference = compareMcu(values, mcu);
                if (!difference.isEmpty()) {
                    return difference;
                }
            }
        }
        return {};
    }

private:
    QString compareMcu(const qint16* values, int mcu) {
        std::size_t block = 0;
        for (std::size_t index = 0; index < m_frame.components.size(); ++index) {
            const JpegComponent& component = m_frame.components[index];
            for (int y = 0; y < component.verticalFactor; ++y) {
                for (int x = 0; x < component.horizontalFactor; ++x, ++block) {
                    QString difference = compareBlock(values + m_coefficients.blockOffsets()[block], index,
                        m_row * component.verticalFactor + y, mcu * component.horizontalFactor + x);
                    if (!difference.isEmpty()) {
                        return difference;
                    }
                }
            }
        }
        return {};
    }

    QString compareBlock(const qint16* values, std::size_t component, int row, int column) {
        const JCOEF* const expected = m_library.block(component, row, column);
        const KeptCoefficients& kept = m_kept[component];
        for (int i = 0; expected && i < kept.kept; ++i) {
            const int position = kept.positions[static_cast<std::size_t>(i)];
            const int value = position == KeptCoefficients::none ? 0 : expected[position];
            if (values[i] != value) {
                return QStringLiteral("component %1, block row %2, block %3, coefficient %4: %5 and not %6")
                    .arg(component)
                    .arg(row)
                    .arg(column)
                    .arg(position)
                    .arg(values[i])
                    .arg(value);
            }
        }
        return {};
    }

    LibraryCoefficients& m_library;
    const JpegFrame& m_frame;
    const CoefficientDecoder& m_coefficients;
    std::vector<KeptCoefficients> m_kept; // for each component
    int m_row = 0;
};

} // namespace

Comparison decodeBeside(LibraryCoefficients& library, const FileURL& url, const DecodingWay& way) {
    Result<ReadOnlyFile> file = ReadOnlyFile::open(url);
    JpegDecompressor jpeg(*file, Task());
    const std::optional<JpegFrame> frame = jpeg.readHeader() ? jpeg.frame(way.denominator) : std::nullopt;
    const std::optional<McuCodes> codes = frame ? McuCodes::make(*frame) : std::nullopt;
    if (!codes) {
        return {};
    }
    ThreadTeam team(way.threads);
    EntropyDecoder decoder(
        *frame, *codes, [&jpeg](std::span<uchar> buffer) { return jpeg.readData(buffer); }, team, Task(),
        way.cut);
    McuComparison comparison(library, *frame, decoder.coefficients());
    Comparison result{true, false, {}};
    for (auto band = decoder.next(); band.mcuRows > 0; band = decoder.next()) {
        if (library.areValid() && result.difference.isEmpty()) {
            result.difference = comparison.compare(band);
        }
    }
    result.isFinished = decoder.isFinished();
    return result;
}

#include "Platform/ImageDecoder/JpegDecompressor.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <string_view>

// libjpeg reports a fatal error by a jump out of its depths. Every method that calls it therefore marks the
// place where the jump lands, and holds nothing of its own that would need destruction.

namespace Platform {

namespace {

// Near the end of each buffer libjpeg takes its slow path; beyond this size nothing more is gained.
constexpr std::size_t bufferSize = std::size_t{512} * 1024;

// The coefficients of a progressive picture are all in memory at once.
constexpr long maximumCoefficientBytes = 2L << 30;

// Cameras write ten scans or so. Tiny files of thousands of scans would keep the decoder busy for minutes.
constexpr int maximumScans = 500;
constexpr qint64 maximumScannedPixels = 8'000'000'000;

// The largest profile there can be is a quarter of it. Segments are kept in memory, and nothing else bounds how many there are.
constexpr qint64 maximumHeaderBytes = qint64{64} << 20;

constexpr int exifMarker = JPEG_APP0 + 1;
constexpr int iccMarker = JPEG_APP0 + 2;
constexpr unsigned maximumMarkerLength = 0xffff;
constexpr std::string_view exifSignature("Exif\0", 5);
constexpr std::string_view iccSignature("ICC_PROFILE\0", 12);
constexpr std::size_t iccHeaderLength =
    iccSignature.size() + 2; // the number of the segment and how many there are

/// What the marker carries, where it begins with the signature; else nothing.
std::span<const uchar> payload(const jpeg_marker_struct& marker, int code, std::string_view signature) {
    const bool matches = marker.marker == code && marker.data_length >= signature.size() &&
                         std::memcmp(marker.data, signature.data(), signature.size()) == 0;
    return matches ? std::span<const uchar>(marker.data, marker.data_length) : std::span<const uchar>();
}

/// What the only ICC segment holds, whatever its number says; nothing where there are several.
std::span<const uchar> onlyProfileSegment(const jpeg_marker_struct* marker) {
    std::span<const uchar> only;
    for (; marker; marker = marker->next) {
        const std::span<const uchar> segment = payload(*marker, iccMarker, iccSignature);
        if (segment.size() > iccHeaderLength) {
            if (!only.empty()) {
                return {};
            }
            only = segment.subspan(iccHeaderLength);
        }
    }
    return only;
}

JpegDecompressor& self(void* clientData) {
    return *static_cast<JpegDecompressor*>(clientData);
}

} // namespace

JpegDecompressor::JpegDecompressor(ReadOnlyFile& file, const Task& task)
    : m_file(file), m_task(task), m_buffer(std::make_unique_for_overwrite<JOCTET[]>(bufferSize)) {
    m_info.err = jpeg_std_error(&m_errors);
    m_info.client_data = this;
    m_errors.error_exit = &JpegDecompressor::leave;
    m_errors.emit_message = [](j_common_ptr, int) {};
    m_errors.output_message = [](j_common_ptr) {};
    m_progress.progress_monitor = &JpegDecompressor::monitorProgress;
    m_source.init_source = [](j_decompress_ptr) {};
    m_source.fill_input_buffer = &JpegDecompressor::fillBuffer;
    m_source.skip_input_data = &JpegDecompressor::skip;
    m_source.resync_to_restart = jpeg_resync_to_restart;
    m_source.term_source = [](j_decompress_ptr) {};
}

JpegDecompressor::~JpegDecompressor() {
    jpeg_destroy_decompress(&m_info);
}

bool JpegDecompressor::readHeader() {
    if (setjmp(m_leaving) != 0) {
        return false;
    }
    jpeg_create_decompress(&m_info);
    m_info.progress = &m_progress;
    m_info.src = &m_source;
    m_info.mem->max_memory_to_use = maximumCoefficientBytes;
    jpeg_save_markers(&m_info, exifMarker, maximumMarkerLength);
    jpeg_save_markers(&m_info, iccMarker, maximumMarkerLength);
    const bool isRead = jpeg_read_header(&m_info, TRUE) == JPEG_HEADER_OK;
    m_isHeaderRead = true;
    jpeg_save_markers(&m_info, exifMarker, 0); // others may stand between the scans
    jpeg_save_markers(&m_info, iccMarker, 0);
    return isRead;
}

QSize JpegDecompressor::size() const {
    return QSize(static_cast<int>(m_info.image_width), static_cast<int>(m_info.image_height));
}

JpegDecompressor::Components JpegDecompressor::components() const {
    switch (m_info.jpeg_color_space) {
    case JCS_GRAYSCALE:
        return Components::Grey;
    case JCS_CMYK:
    case JCS_YCCK:
        return Components::Cmyk;
    default:
        return Components::Rgb;
    }
}

std::span<const uchar> JpegDecompressor::exif() const {
    for (const jpeg_marker_struct* marker = m_info.marker_list; marker; marker = marker->next) {
        const std::span<const uchar> segment = payload(*marker, exifMarker, exifSignature);
        if (!segment.empty()) {
            return segment;
        }
    }
    return {};
}

QByteArray JpegDecompressor::iccProfile() {
    JOCTET* profile = nullptr;
    unsigned size = 0;
    if (assembleProfile(&profile, &size)) {
        const std::unique_ptr<JOCTET, decltype(&std::free)> owner(profile, &std::free);
        return QByteArray(reinterpret_cast<const char*>(profile), size);
    }
    const std::span<const uchar> segment = onlyProfileSegment(m_info.marker_list);
    return QByteArray(reinterpret_cast<const char*>(segment.data()), static_cast<qsizetype>(segment.size()));
}

bool JpegDecompressor::assembleProfile(JOCTET** profile, unsigned* size) {
    return setjmp(m_leaving) == 0 && jpeg_read_icc_profile(&m_info, profile, size);
}

std::optional<JpegFrame> JpegDecompressor::frame(int denominator) {
    if (!isFrame() || !computeScaledSizes(denominator)) {
        return std::nullopt;
    }
    JpegFrame frame;
    frame.size = size();
    frame.colors = m_info.jpeg_color_space == JCS_GRAYSCALE ? JpegFrame::Colors::Grey
                   : m_info.jpeg_color_space == JCS_RGB     ? JpegFrame::Colors::Rgb
                                                            : JpegFrame::Colors::YCbCr;
    frame.restartInterval = static_cast<int>(m_info.restart_interval);
    frame.scaledBlockSize = m_info.min_DCT_scaled_size;
    frame.scaledSize = scaledSize();
    for (const jpeg_component_info& info : std::span(m_info.comp_info, m_info.num_components)) {
        frame.components.push_back(component(info));
    }
    if (frame.components.size() == 1) {
        // The blocks of an only component stand by themselves, whatever its factors (T.81, A.2.2).
        frame.components[0].horizontalFactor = frame.components[0].verticalFactor = 1;
    }
    return frame.isDecodable() ? std::optional(std::move(frame)) : std::nullopt;
}

/// Whether all of the picture is in one scan of Huffman codes, whose tables are there.
bool JpegDecompressor::isFrame() const {
    const bool hasKnownColors = m_info.num_components == 1
                                    ? m_info.jpeg_color_space == JCS_GRAYSCALE
                                    : m_info.num_components == 3 && (m_info.jpeg_color_space == JCS_YCbCr ||
                                                                        m_info.jpeg_color_space == JCS_RGB);
    if (!hasKnownColors || m_info.progressive_mode || m_info.arith_code ||
        m_info.data_precision != BITS_IN_JSAMPLE || m_info.comps_in_scan != m_info.num_components ||
        m_info.Ss != 0 || m_info.Se != DCTSIZE2 - 1 || m_info.Ah != 0 || m_info.Al != 0) {
        return false;
    }
    for (int i = 0; i < m_info.num_components; ++i) {
        const jpeg_component_info& info = m_info.comp_info[i];
        const auto isTable = [](int number) { return number >= 0 && number < NUM_HUFF_TBLS; };
        if (m_info.cur_comp_info[i] != &info || !isTable(info.dc_tbl_no) || !isTable(info.ac_tbl_no) ||
            !m_info.dc_huff_tbl_ptrs[info.dc_tbl_no] || !m_info.ac_huff_tbl_ptrs[info.ac_tbl_no] ||
            info.quant_tbl_no < 0 || info.quant_tbl_no >= NUM_QUANT_TBLS ||
            !m_info.quant_tbl_ptrs[info.quant_tbl_no]) {
            return false;
        }
    }
    return true;
}

bool JpegDecompressor::computeScaledSizes(int denominator) {
    if (setjmp(m_leaving) != 0) {
        return false;
    }
    m_info.scale_num = 1;
    m_info.scale_denom = static_cast<unsigned>(denominator);
    jpeg_calc_output_dimensions(&m_info);
    return true;
}

JpegComponent JpegDecompressor::component(const jpeg_component_info& info) const {
    const auto specification = [](const JHUFF_TBL& table) {
        HuffmanSpecification result;
        std::copy_n(std::begin(table.bits) + 1, result.counts.size(), result.counts.begin());
        std::copy_n(std::begin(table.huffval), result.symbols.size(), result.symbols.begin());
        return result;
    };
    JpegComponent result;
    result.horizontalFactor = info.h_samp_factor;
    result.verticalFactor = info.v_samp_factor;
    std::ranges::copy(m_info.quant_tbl_ptrs[info.quant_tbl_no]->quantval, result.quantisers.begin());
    result.dc = specification(*m_info.dc_huff_tbl_ptrs[info.dc_tbl_no]);
    result.ac = specification(*m_info.ac_huff_tbl_ptrs[info.ac_tbl_no]);
    result.scaledBlockSize = info.DCT_scaled_size;
    result.scaledSize =
        QSize(static_cast<int>(info.downsampled_width), static_cast<int>(info.downsampled_height));
    return result;
}

std::size_t JpegDecompressor::readData(std::span<uchar> buffer) {
    m_hasGivenData = true;
    if (m_task.isCancelled()) {
        return 0;
    }
    const std::size_t buffered = std::min(m_source.bytes_in_buffer, buffer.size());
    if (buffered == 0) {
        return m_file.read(buffer.data(), buffer.size());
    }
    std::copy_n(m_source.next_input_byte, buffered, buffer.data());
    m_source.next_input_byte += buffered;
    m_source.bytes_in_buffer -= buffered;
    return buffered;
}

bool JpegDecompressor::start(int denominator, int maxPixelSize) {
    if (setjmp(m_leaving) != 0) {
        return false;
    }
    m_info.scale_num = 1;
    m_info.scale_denom = static_cast<unsigned>(denominator);
    m_info.out_color_space = components() == Components::Cmyk ? JCS_CMYK : JCS_EXT_BGRA;
    if (denominator == dctSize && m_info.progressive_mode && areMeansEnough(maxPixelSize)) {
        return startFromFirstScans();
    }
    return jpeg_start_decompress(&m_info);
}

/// Whether the means of a picture's blocks show all that it will: also where chroma is stored at half the resolution, and has
/// but one mean for two pixels each way of an eighth.
bool JpegDecompressor::areMeansEnough(int maxPixelSize) {
    jpeg_calc_output_dimensions(&m_info);
    const std::span components(m_info.comp_info, static_cast<std::size_t>(m_info.num_components));
    const int longSide = std::max(size().width(), size().height());
    return std::ranges::all_of(components, [&](const auto& info) {
        return info.DCT_scaled_size == 1 || longSide / (dctSize * info.DCT_scaled_size) >= maxPixelSize;
    });
}

/// Called where the jump of an error may land.
bool JpegDecompressor::startFromFirstScans() {
    m_info.buffered_image = TRUE;
    m_info.do_block_smoothing = FALSE; // it would guess at what is not needed
    jpeg_start_decompress(&m_info);
    int status = JPEG_ROW_COMPLETED;
    while (status != JPEG_REACHED_EOI && !(status == JPEG_SCAN_COMPLETED && hasMeans())) {
        monitorProgress(reinterpret_cast<j_common_ptr>(&m_info)); // here the library itself does not
        status = jpeg_consume_input(&m_info);
    }
    return jpeg_start_output(&m_info, m_info.input_scan_number);
}

/// Whether the means of all blocks have come, to a level or better. More of their bits come with later scans.
bool JpegDecompressor::hasMeans() const {
    for (int i = 0; i < m_info.num_components; ++i) {
        const jpeg_component_info& info = m_info.comp_info[i];
        const int missingBits = m_info.coef_bits[i][0];
        if (missingBits < 0 || !info.quant_table ||
            ((1 << missingBits) - 1) * info.quant_table->quantval[0] > dctSize) {
            return false;
        }
    }
    return true;
}

QSize JpegDecompressor::scaledSize() const {
    return QSize(static_cast<int>(m_info.output_width), static_cast<int>(m_info.output_height));
}

int JpegDecompressor::readRows(uchar* rows, qsizetype bytesPerLine, int count) {
    const JDIMENSION first = m_info.output_scanline;
    const JDIMENSION end = std::min(first + static_cast<JDIMENSION>(count), m_info.output_height);
    if (setjmp(m_leaving) == 0) {
        while (m_info.output_scanline < end) {
            JSAMPROW row = rows + static_cast<qsizetype>(m_info.output_scanline - first) * bytesPerLine;
            jpeg_read_scanlines(&m_info, &row, 1);
        }
    }
    return static_cast<int>(m_info.output_scanline - first);
}

void JpegDecompressor::leave(j_common_ptr info) {
    std::longjmp(self(info->client_data).m_leaving, 1);
}

void JpegDecompressor::monitorProgress(j_common_ptr info) {
    const JpegDecompressor& jpeg = self(info->client_data);
    if (jpeg.m_task.isCancelled() || jpeg.isBeyondLimits()) {
        leave(info);
    }
}

bool JpegDecompressor::isBeyondLimits() const {
    const qint64 pixels = static_cast<qint64>(m_info.image_width) * m_info.image_height;
    return m_info.input_scan_number > maximumScans ||
           m_info.input_scan_number * pixels > maximumScannedPixels;
}

boolean JpegDecompressor::fillBuffer(j_decompress_ptr info) {
    JpegDecompressor& jpeg = self(info->client_data);
    if (jpeg.m_task.isCancelled() || (!jpeg.m_isHeaderRead && jpeg.m_headerBytes > maximumHeaderBytes)) {
        leave(reinterpret_cast<j_common_ptr>(info));
    }
    std::size_t size = jpeg.m_file.read(jpeg.m_buffer.get(), bufferSize);
    jpeg.m_headerBytes += jpeg.m_isHeaderRead ? 0 : static_cast<qint64>(size);
    if (size == 0) {
        // An end of image in place of what is missing lets the library show what came before.
        jpeg.m_buffer[0] = 0xff;
        jpeg.m_buffer[1] = JPEG_EOI;
        size = 2;
    }
    jpeg.m_source.next_input_byte = jpeg.m_buffer.get();
    jpeg.m_source.bytes_in_buffer = size;
    return TRUE;
}

void JpegDecompressor::skip(j_decompress_ptr info, long count) {
    jpeg_source_mgr& source = *info->src;
    auto left = static_cast<std::size_t>(std::max(count, 0L));
    while (left > source.bytes_in_buffer) {
        left -= source.bytes_in_buffer;
        fillBuffer(info);
    }
    source.next_input_byte += left;
    source.bytes_in_buffer -= left;
}

} // namespace Platform

#pragma once

#include "Platform/ImageDecoder/ReadOnlyFile.h"
#include "Platform/ImageDecoder/ReducedJpeg/JpegFrame.h"
#include "Platform/ImageDecoder/RowSource.h"
#include "Platform/Task.h"

#include <QByteArray>
#include <QSize>

#include <jpeglib.h>

#include <csetjmp>
#include <cstdio>
#include <memory>
#include <optional>
#include <span>

namespace Platform {

/// libjpeg over a file. A damaged or truncated file gives its rows as far as the library can make anything of
/// them. Each method that may fail does so, too, once the task is cancelled; after a failure nothing more can
/// be decoded. Blocking; used by one thread.
class JpegDecompressor final : public RowSource {
public:
    enum class Components { Grey, Rgb, Cmyk };

    /// @param file  at its start; it outlives this object
    JpegDecompressor(ReadOnlyFile& file, const Task& task);
    ~JpegDecompressor() override;

    /// Reads up to where the picture's data begin, 64 MiB at most. All below may be called after it succeeded.
    bool readHeader();

    /// Size in pixels as stored, before scaling and without regard to the orientation.
    QSize size() const;

    /// What the pixels are stored as. Rows come as blue, green, red and 255 in the first two cases, as inks
    /// in the last.
    Components components() const;

    /// The bytes of the EXIF segment from "Exif" on, valid as long as this object; empty where there is none.
    std::span<const uchar> exif() const;

    /// The embedded ICC profile, put together from its segments; empty where there is none or a segment is
    /// missing.
    QByteArray iccProfile();

    /// What it takes to decode the picture at 1/denominator of the size (2, 4 or 8) without the library; nothing where
    /// the picture is of a kind that is not a JpegFrame.
    std::optional<JpegFrame> frame(int denominator);

    /// Reads the data that follow the header, from where the library has come to; instead of start().
    /// @return the number of bytes; 0 at the end of the file and once the task is cancelled, only
    std::size_t readData(std::span<uchar> buffer);

    /// Whether it has given such data, which the library then lacks.
    bool hasGivenData() const { return m_hasGivenData; }

    /// Begins decoding at 1/denominator of the size: 1, 2, 4 or 8. For an eighth of a progressive picture only those scans
    /// are read that the means of its blocks take, where those are enough for what is made of it.
    ///
    /// @param maxPixelSize  what the longer side is to be reduced to, in pixels; 0: nothing is reduced
    bool start(int denominator, int maxPixelSize);

    /// Size in pixels of the rows that come, after start().
    QSize scaledSize() const;

    int readRows(uchar* rows, qsizetype bytesPerLine, int count) override;

private:
    static void leave(j_common_ptr info);
    static void monitorProgress(j_common_ptr info);
    static boolean fillBuffer(j_decompress_ptr info);
    static void skip(j_decompress_ptr info, long count);

    bool assembleProfile(JOCTET** profile, unsigned* size);
    bool computeScaledSizes(int denominator);
    bool startFromFirstScans();
    bool areMeansEnough(int maxPixelSize);
    bool hasMeans() const;
    bool isFrame() const;
    JpegComponent component(const jpeg_component_info& info) const;
    bool isBeyondLimits() const;

    ReadOnlyFile& m_file;
    const Task m_task;
    const std::unique_ptr<JOCTET[]> m_buffer;
    jpeg_decompress_struct m_info{};
    jpeg_error_mgr m_errors{};
    jpeg_progress_mgr m_progress{};
    jpeg_source_mgr m_source{};
    std::jmp_buf m_leaving{};
    qint64 m_headerBytes = 0; // read so far; a last buffer of them may hold data, too
    bool m_isHeaderRead = false;
    bool m_hasGivenData = false;
};

} // namespace Platform

#pragma once

#include "Platform/FileURL.h"
#include "Platform/ImageDecoder/ReducedJpeg/EntropyDecoder.h"

#include <QByteArray>
#include <QString>

#include <jpeglib.h>

#include <csetjmp>
#include <cstdio>

/// The coefficients of a JPEG file, as libjpeg reads them.
class LibraryCoefficients {
public:
    explicit LibraryCoefficients(const QByteArray& file);
    ~LibraryCoefficients();
    LibraryCoefficients(const LibraryCoefficients&) = delete;
    LibraryCoefficients& operator=(const LibraryCoefficients&) = delete;

    /// Whether the library has read them all and found nothing to warn of.
    bool areValid() const { return m_arrays && m_errors.num_warnings == 0; }

    /// 64 coefficients, row by row; null beyond the component's last block.
    const JCOEF* block(std::size_t component, int row, int column);

private:
    void read();

    const QByteArray m_file;
    jpeg_decompress_struct m_info{};
    jpeg_error_mgr m_errors{};
    std::jmp_buf m_leaving{};
    jvirt_barray_ptr* m_arrays = nullptr;
};

/// How a file is decoded.
struct DecodingWay {
    int denominator = 8;
    int threads = 1;
    Platform::EntropyDecoder::Cut cut;
};

/// What comes of decoding a file by EntropyDecoder.
struct Comparison {
    bool isTaken = false;    ///< whether it is of the kind that is decoded
    bool isFinished = false; ///< whether all coefficients came
    QString
        difference; ///< the first that is not the library's, in words; empty where all that are kept agree
};

Comparison decodeBeside(LibraryCoefficients& library, const Platform::FileURL& file, const DecodingWay& way);

#include "Platform/PixelMemory.h"

#include <sys/mman.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>

namespace Platform {

namespace {

constexpr std::size_t leastMapping = 16 << 10; // 4 pages, so that what the last leaves empty is not much
constexpr std::size_t hugePageSize = 2 << 20;
constexpr std::size_t bytesPerPixel = 4;

/// Memory mapped from the system, for as long as it lives.
class Mapping {
public:
    explicit Mapping(std::size_t size)
        : m_size(size),
          m_start(mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0)) {}
    ~Mapping() {
        if (isValid()) {
            munmap(m_start, m_size);
        }
    }
    Mapping(const Mapping&) = delete;
    Mapping& operator=(const Mapping&) = delete;

    bool isValid() const { return m_start != MAP_FAILED; }

    uchar* start() const { return static_cast<uchar*>(m_start); }

    /// The first place in it where a huge page may begin.
    uchar* firstHugePage() const {
        const auto address = reinterpret_cast<std::uintptr_t>(m_start);
        return start() + (hugePageSize - address % hugePageSize) % hugePageSize;
    }

private:
    const std::size_t m_size;
    void* const m_start;
};

} // namespace

QImage undefinedPicture(QSize size) {
    const auto bytes = static_cast<std::size_t>(std::max(size.width(), 0)) *
                       static_cast<std::size_t>(std::max(size.height(), 0)) * bytesPerPixel;
    if (bytes < leastMapping) {
        return QImage(size, QImage::Format_RGB32);
    }
    const bool hasHugePages = bytes >= hugePageSize;
    auto mapping = std::make_unique<Mapping>(hasHugePages ? bytes + hugePageSize : bytes);
    if (!mapping->isValid()) {
        return QImage();
    }
    uchar* const pixels = hasHugePages ? mapping->firstHugePage() : mapping->start();
    if (hasHugePages) {
        madvise(pixels, bytes, MADV_HUGEPAGE); // a wish: small pages do as well
    }
    const auto bytesPerLine = static_cast<qsizetype>(size.width()) * static_cast<qsizetype>(bytesPerPixel);
    QImage picture(
        pixels, size.width(), size.height(), bytesPerLine, QImage::Format_RGB32,
        [](void* owner) { delete static_cast<Mapping*>(owner); }, mapping.get());
    if (!picture.isNull()) {
        (void)mapping.release(); // the picture deletes it
    }
    return picture;
}

} // namespace Platform

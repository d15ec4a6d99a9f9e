// The reference to a folder, as it may stand in the settings.
#include "Platform/Bookmark.h"

#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const quint8* bytes, std::size_t size) {
    const QByteArray data(reinterpret_cast<const char*>(bytes), static_cast<qsizetype>(size));
    const auto resolved = Platform::Bookmark::resolve(data);
    if (resolved && resolved->url.isEmpty()) {
        std::abort();
    }
    return 0;
}

#pragma once

#include <QtEndian>
#include <QtGlobal>

namespace Platform {

/// The bits from a position on, counted from the first byte, highest first: 57 of them at least. Reads eight bytes.
inline quint64 bitsAt(const uchar* data, quint64 position) {
    return qFromBigEndian<quint64>(data + (position >> 3)) << (position & 7);
}

} // namespace Platform

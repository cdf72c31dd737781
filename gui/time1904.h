// The core counts instants in whole seconds since 1904-01-01 00:00 UTC; the
// window shows and computes them as QDateTime.
#pragma once

#include <QDateTime>
#include <cstdint>

#include "engine/units.h"

namespace veloran {

// A core instant as a UTC date and time.
inline QDateTime DateTimeFrom1904(int64_t secs) {
    return QDateTime::fromSecsSinceEpoch(secs - static_cast<qint64>(kSecondsFrom1904To1970),
                                         Qt::UTC);
}

// The wall clock now, as the core counts it.
inline int64_t Now1904() {
    return QDateTime::currentSecsSinceEpoch() + static_cast<qint64>(kSecondsFrom1904To1970);
}

}  // namespace veloran

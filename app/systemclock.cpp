// The machine's clock in the engine's time base.

#include "app/interfaces.h"
#include "engine/timebase.h"

namespace veloran {

uint32_t SystemClock::dateTimeUTC() const {
    return QFGetDateTimeUTC();
}

uint32_t SystemClock::dateTime() const {
    return QFGetDateTime();
}

}  // namespace veloran

// Time base: seconds since 1904-01-01 00:00:00 UTC as an unsigned 32-bit count,
// the epoch-day scale of the orbit engine, Julian dates, sidereal time, and the
// text forms in which times are shown and spoken.
#pragma once

#include <cstdint>
#include <ctime>
#include <optional>

#include "engine/units.h"

namespace veloran {

// A point in time as the platform's date objects hold it: seconds since the
// Unix epoch. "nil" dates are an empty std::optional or a null pointer.
struct Date {
    double unixSeconds;  // seconds since 1970-01-01 00:00:00 UTC
};

// Broken-down calendar time, seven signed 16-bit fields in this order.
struct DateTimeRec {
    int16_t year;       // full year, e.g. 2008
    int16_t month;      // 1..12
    int16_t day;        // 1..31
    int16_t hour;       // 0..23
    int16_t minute;     // 0..59
    int16_t second;     // 0..59
    int16_t dayOfWeek;  // 1 = Sunday .. 7 = Saturday
};

// 48.16 fixed-point seconds since 1904-01-01 00:00:00 UTC.
struct UTCDateTime {
    uint16_t highSeconds;  // upper 16 bits of the 48-bit seconds
    uint32_t lowSeconds;   // lower 32 bits of the 48-bit seconds
    uint16_t fraction;     // 1/65536 s
};

// An unsigned 64-bit microsecond count held as two 32-bit words.
struct UnsignedWide {
    uint32_t hi;
    uint32_t lo;
};

// The twelve month lengths shared by the calendar code. GetEpochDay raises
// February in place for one call in a leap year, so it is not reentrant.
extern int32_t gMonthDays[12];

// Truncates a non-negative count of seconds toward zero into the unsigned
// 32-bit range: values of 2^31 and more are taken down by 2^31 before the
// integer conversion and put back after it.
uint32_t SecondsToUnsigned(double seconds);

// The cached reference date 1904-01-01 00:00:00 +0000.
Date dateForJan1904();
// The date that lies `secs` (unsigned) seconds after 1904-01-01.
Date secsToDate(uint32_t secs);
// Whole seconds from 1904-01-01 to the date, truncated toward zero.
uint32_t dateToSecs(Date date);
// nil (empty) when the whole wide time is zero; the fraction is ignored.
std::optional<Date> convertUTCtoNSDate(UTCDateTime wide);
// A null date gives an all-zero wide time. Returns `out`.
UTCDateTime* convertNSDatetoUTC(const Date* date, UTCDateTime* out);

// Now, in seconds since 1904 UTC.
uint32_t QFGetDateTimeUTC();
// Now minus the machine's GMT offset. The subtraction is what the element-set
// loader has always done (it picks the Moon's set by month); keep it.
uint32_t QFGetDateTime();
// The machine's GMT offset in seconds (east positive), sign-extended from 24 bits.
int32_t QFGetGMTDelta();
// The current local date and time of the machine. Null is ignored.
void QFGetTime(DateTimeRec* rec);
// Pure calendar conversion of seconds since 1904 (no time-zone adjustment).
void QFSecondsToDate(uint32_t secs, DateTimeRec* rec);
// The inverse of QFSecondsToDate for years 1904..2040.
uint32_t QFDateToSeconds(const DateTimeRec* rec);

// Days since 1978-12-31 00:00 UTC (1979-01-01 00:00 is 1.0). year is two-digit
// (00..56 = 2000s, 57..99 = 1900s) or counted from 1900 (100 and up); with
// month 1, day is the day of the year with its fraction.
double GetEpochDay(int32_t year, int32_t month, double day);
// The epoch day of a time value.
double EpochTime(uint32_t secs);

// Julian day number of a broken-down time (tm_mon 0..11, tm_year from 1900).
int32_t jdate(const std::tm* t);
// Julian date, the day beginning at noon.
double jtime(const std::tm* t);
// Julian date of a time value.
double FractionalJulianDate(uint32_t secs);
// Greenwich mean sidereal time in hours, in [0, 24).
double gmst(double jd);

// high * 2^32 + low.
double MicrosecondToDouble(const UnsignedWide* value);

// "%02d:%02d:%02d"; buf needs 9 bytes. Nothing for a null buffer.
void formatTime(uint32_t secs, char* buf);
// "%04d/%02d/%02d %02d:%02d:%02d"; buf needs 20 bytes. Nothing for null.
void formatDateTime(uint32_t secs, char* buf);
// The machine's local clock in the formatDateTime form; buf needs 20 bytes.
void dateStamp(char* buf);
// Appends the spoken form of a duration ("1 hour,2 minutes, and 5 seconds,")
// to the NUL-terminated text in buf, which must have room for 64 more bytes.
void addTimeToAOSString(uint32_t secs, bool withSeconds, char* buf);

}  // namespace veloran

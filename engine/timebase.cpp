// Time base: seconds since 1904, epoch days, Julian dates, sidereal time and
// the text forms of times.

#include "engine/timebase.h"

#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstring>

namespace veloran {

int32_t gMonthDays[12] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};

namespace {

constexpr int32_t kSecondsPerDay = 86400;
constexpr double kTwo31 = 2147483648.0;
// 1904-01-01 was a Friday; DateTimeRec counts Sunday as 1.
constexpr int32_t kDayOfWeekOf1904 = 6;

// Days from 1970-01-01 to a proleptic Gregorian date (Hinnant's algorithm).
int64_t DaysFromCivil(int64_t y, unsigned m, unsigned d) {
    y -= m <= 2;
    const int64_t era = (y >= 0 ? y : y - 399) / 400;
    const unsigned yoe = static_cast<unsigned>(y - era * 400);
    const unsigned doy = (153 * (m + (m > 2 ? -3 : 9)) + 2) / 5 + d - 1;
    const unsigned doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;
    return era * 146097 + static_cast<int64_t>(doe) - 719468;
}

void CivilFromDays(int64_t z, int64_t* year, unsigned* month, unsigned* day) {
    z += 719468;
    const int64_t era = (z >= 0 ? z : z - 146096) / 146097;
    const unsigned doe = static_cast<unsigned>(z - era * 146097);
    const unsigned yoe = (doe - doe / 1460 + doe / 36524 - doe / 146096) / 365;
    const unsigned doy = doe - (365 * yoe + yoe / 4 - yoe / 100);
    const unsigned mp = (5 * doy + 2) / 153;
    *day = doy - (153 * mp + 2) / 5 + 1;
    *month = mp < 10 ? mp + 3 : mp - 9;
    *year = static_cast<int64_t>(yoe) + era * 400 + (*month <= 2);
}

const int64_t kDays1904To1970 = -DaysFromCivil(1904, 1, 1);

// Copies at most `limit` characters and the terminator.
void CopyBounded(char* out, const char* text, size_t limit) {
    const size_t length = strnlen(text, limit);
    std::memcpy(out, text, length);
    out[length] = '\0';
}

Date Now() {
    using namespace std::chrono;
    const auto since = system_clock::now().time_since_epoch();
    return Date{duration_cast<duration<double>>(since).count()};
}

}  // namespace

uint32_t SecondsToUnsigned(double seconds) {
    // Truncation toward zero through a 64-bit integer gives the same result
    // as taking 2^31 off before the conversion and adding it back after, and
    // wraps anything larger instead of overflowing.
    if (!(seconds > -kTwo31) || !(seconds < 9.0e18)) return 0;  // NaN or absurd
    return static_cast<uint32_t>(static_cast<int64_t>(seconds));
}

Date dateForJan1904() {
    static const Date reference{-kSecondsFrom1904To1970};
    return reference;
}

Date secsToDate(uint32_t secs) {
    return Date{dateForJan1904().unixSeconds + static_cast<double>(secs)};
}

uint32_t dateToSecs(Date date) {
    return SecondsToUnsigned(date.unixSeconds - dateForJan1904().unixSeconds);
}

std::optional<Date> convertUTCtoNSDate(UTCDateTime wide) {
    if (wide.highSeconds == 0 && wide.lowSeconds == 0 && wide.fraction == 0) return std::nullopt;
    // The fraction is dropped: only whole seconds travel through this path.
    const uint64_t seconds = (static_cast<uint64_t>(wide.highSeconds) << 32) | wide.lowSeconds;
    return Date{dateForJan1904().unixSeconds + static_cast<double>(seconds)};
}

UTCDateTime* convertNSDatetoUTC(const Date* date, UTCDateTime* out) {
    if (out == nullptr) return out;
    *out = UTCDateTime{0, 0, 0};
    if (date == nullptr) return out;
    const double scaled = (date->unixSeconds - dateForJan1904().unixSeconds) * 65536.0;
    if (!(scaled > 0.0) || scaled >= 18446744073709551616.0) return out;  // before 1904, or NaN
    const uint64_t fixed = static_cast<uint64_t>(scaled);
    out->highSeconds = static_cast<uint16_t>(fixed >> 48);
    out->lowSeconds = static_cast<uint32_t>(fixed >> 16);
    out->fraction = static_cast<uint16_t>(fixed);
    return out;
}

uint32_t QFGetDateTimeUTC() {
    return dateToSecs(Now());
}

int32_t QFGetGMTDelta() {
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    localtime_r(&now, &local);
    // The delta is a signed 24-bit quantity: keep the low three bytes and
    // extend the sign from bit 23.
    int32_t delta = static_cast<int32_t>(local.tm_gmtoff) & 0x00FFFFFF;
    if (delta & 0x00800000) delta |= static_cast<int32_t>(0xFF000000u);
    return delta;
}

uint32_t QFGetDateTime() {
    return QFGetDateTimeUTC() - static_cast<uint32_t>(QFGetGMTDelta());
}

void QFGetTime(DateTimeRec* rec) {
    if (rec == nullptr) return;
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    localtime_r(&now, &local);
    rec->year = static_cast<int16_t>(local.tm_year + 1900);
    rec->month = static_cast<int16_t>(local.tm_mon + 1);
    rec->day = static_cast<int16_t>(local.tm_mday);
    rec->hour = static_cast<int16_t>(local.tm_hour);
    rec->minute = static_cast<int16_t>(local.tm_min);
    rec->second = static_cast<int16_t>(local.tm_sec);
    rec->dayOfWeek = static_cast<int16_t>(local.tm_wday + 1);
}

void QFSecondsToDate(uint32_t secs, DateTimeRec* rec) {
    if (rec == nullptr) return;
    const int64_t days = secs / kSecondsPerDay;
    const uint32_t inDay = secs % kSecondsPerDay;
    int64_t year = 0;
    unsigned month = 0, day = 0;
    CivilFromDays(days - kDays1904To1970, &year, &month, &day);
    rec->year = static_cast<int16_t>(year);
    rec->month = static_cast<int16_t>(month);
    rec->day = static_cast<int16_t>(day);
    rec->hour = static_cast<int16_t>(inDay / 3600);
    rec->minute = static_cast<int16_t>(inDay / 60 % 60);
    rec->second = static_cast<int16_t>(inDay % 60);
    rec->dayOfWeek = static_cast<int16_t>((days + kDayOfWeekOf1904 - 1) % 7 + 1);
}

uint32_t QFDateToSeconds(const DateTimeRec* rec) {
    if (rec == nullptr) return 0;
    const int64_t days = DaysFromCivil(rec->year, static_cast<unsigned>(rec->month),
                                       static_cast<unsigned>(rec->day)) +
                         kDays1904To1970;
    const int64_t secs = days * kSecondsPerDay + rec->hour * 3600 + rec->minute * 60 + rec->second;
    return static_cast<uint32_t>(secs);
}

double GetEpochDay(int32_t year, int32_t month, double day) {
    int32_t y = year < 57 ? year + 100 : year;
    double result = day;
    // The leap rule is divisibility by four alone: right for 1901..2099.
    for (int32_t yr = 79; yr < y; ++yr) result += (yr % 4 == 0) ? 366 : 365;
    for (int32_t yr = y; yr < 79; ++yr) result -= (yr % 4 == 0) ? 366 : 365;
    const bool leap = year % 4 == 0;
    if (leap) gMonthDays[1] += 1;  // the shared table, raised for this call only
    if (month < 1) month = 1;
    for (int32_t m = 1; m < month && m <= 12; ++m) result += gMonthDays[m - 1];
    if (leap) gMonthDays[1] -= 1;
    return result;
}

double EpochTime(uint32_t secs) {
    DateTimeRec d{};
    QFSecondsToDate(secs, &d);
    return GetEpochDay(d.year - 1900, d.month, d.day) + d.hour / 24.0 + d.minute / 1440.0 +
           d.second / 86400.0;
}

int32_t jdate(const std::tm* t) {
    int32_t m = 0, y = 0;
    if (t->tm_mon + 1 < 3) {
        m = t->tm_mon + 10;
        y = t->tm_year + 1899;
    } else {
        m = t->tm_mon - 2;
        y = t->tm_year + 1900;
    }
    const int32_t c = y / 100;
    const int32_t ya = y % 100;
    return (146097 * c) / 4 + (1461 * ya) / 4 + (153 * m + 2) / 5 + t->tm_mday + 1721119;
}

double jtime(const std::tm* t) {
    return jdate(t) - 0.5 + (3600.0 * t->tm_hour + 60.0 * t->tm_min + t->tm_sec) / 86400.0;
}

double FractionalJulianDate(uint32_t secs) {
    DateTimeRec d{};
    QFSecondsToDate(secs, &d);
    std::tm t{};
    t.tm_sec = d.second;
    t.tm_min = d.minute;
    t.tm_hour = d.hour;
    t.tm_mday = d.day;
    t.tm_mon = d.month - 1;
    t.tm_year = d.year - 1900;
    return jtime(&t);
}

double gmst(double jd) {
    const double midnight = std::floor(jd + 0.5) - 0.5;
    const double T = (midnight - 2415020.0) / 36525.0;
    const double theta = 6.6460656 + 2400.051262 * T + 2.581e-05 * T * T +
                         (jd + 0.5 - std::floor(jd + 0.5)) * 24.0 * 1.002737908;
    return theta - 24.0 * std::floor(theta / 24.0);
}

double MicrosecondToDouble(const UnsignedWide* value) {
    return value->hi * 4294967296.0 + value->lo;
}

void formatTime(uint32_t secs, char* buf) {
    if (buf == nullptr) return;
    DateTimeRec d{};
    QFSecondsToDate(secs, &d);
    char text[48];  // room for any int16 fields; the calendar keeps them to 8 characters
    std::snprintf(text, sizeof text, "%02d:%02d:%02d", d.hour, d.minute, d.second);
    CopyBounded(buf, text, 8);
}

void formatDateTime(uint32_t secs, char* buf) {
    if (buf == nullptr) return;
    DateTimeRec d{};
    QFSecondsToDate(secs, &d);
    char text[64];  // room for any int16 fields; the calendar keeps them to 19 characters
    std::snprintf(text, sizeof text, "%04d/%02d/%02d %02d:%02d:%02d", d.year, d.month, d.day,
                  d.hour, d.minute, d.second);
    CopyBounded(buf, text, 19);
}

void dateStamp(char* buf) {
    if (buf == nullptr) return;
    formatDateTime(QFGetDateTimeUTC() + static_cast<uint32_t>(QFGetGMTDelta()), buf);
}

void addTimeToAOSString(uint32_t secs, bool withSeconds, char* buf) {
    if (buf == nullptr) return;
    if (secs == 0) {
        std::strcat(buf, " no time at all, ");
        return;
    }
    if (secs == 172800) {
        std::strcat(buf, " an as yet undetermined amount of time, ");
        return;
    }
    // The calendar conversion drops whole days: only durations below a day
    // read right, and the pass search never speaks a longer one.
    DateTimeRec d{};
    QFSecondsToDate(secs, &d);
    const int hours = d.hour;
    const int minutes = d.minute;
    const int seconds = withSeconds ? d.second : 0;
    char number[16];
    // The " and " after the hours looks at the clock's own seconds, so that a
    // duration spoken without its seconds reads "1 hour,2 minutes,".
    if (hours > 0) {
        std::snprintf(number, sizeof number, "%d", hours);
        std::strcat(buf, number);
        std::strcat(buf, hours == 1 ? " hour," : " hours,");
        if (minutes != 0 && d.second == 0) std::strcat(buf, " and ");
    }
    if (minutes > 0) {
        std::snprintf(number, sizeof number, "%d", minutes);
        std::strcat(buf, number);
        std::strcat(buf, minutes == 1 ? " minute," : " minutes,");
        if (seconds != 0) std::strcat(buf, " and ");
    }
    if (seconds > 0) {
        std::snprintf(number, sizeof number, "%d", seconds);
        std::strcat(buf, number);
        std::strcat(buf, seconds == 1 ? " second," : " seconds,");
    }
}

}  // namespace veloran

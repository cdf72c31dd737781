// Time base: epoch days, calendar, Julian dates and sidereal time against
// published values, and the spoken and shown forms of times.

#include "engine/timebase.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <string>

#include "tests/support/element_sets.h"

namespace veloran {
namespace {

using testing::Seconds;

TEST(EpochDay, CountsDaysFromTheEndOf1978) {
    EXPECT_DOUBLE_EQ(GetEpochDay(79, 1, 1.0), 1.0);
    EXPECT_DOUBLE_EQ(GetEpochDay(80, 1, 1.0), 366.0);
    EXPECT_DOUBLE_EQ(GetEpochDay(8, 1, 1.0), 10593.0);    // two-digit 08 is 2008
    EXPECT_DOUBLE_EQ(GetEpochDay(108, 1, 1.0), 10593.0);  // and so is 108 (from 1900)
    EXPECT_DOUBLE_EQ(GetEpochDay(78, 1, 1.0), -364.0);    // before the origin
    EXPECT_DOUBLE_EQ(GetEpochDay(57, 1, 1.0),
                     GetEpochDay(157, 1, 1.0) - 36525.0);  // 1957, not 2057
}

TEST(EpochDay, LeapFebruaryCountsForOneCallOnly) {
    // March 1st 2000 lies 31 + 29 days after January 1st.
    EXPECT_DOUBLE_EQ(GetEpochDay(0, 3, 1.0) - GetEpochDay(0, 1, 1.0), 60.0);
    EXPECT_EQ(gMonthDays[1], 28) << "the shared month table must be restored";
    EXPECT_DOUBLE_EQ(GetEpochDay(1, 3, 1.0) - GetEpochDay(1, 1, 1.0), 59.0);
    // A day-of-year with a fraction is how element-set epochs arrive.
    EXPECT_DOUBLE_EQ(GetEpochDay(26, 1, 320.5), GetEpochDay(26, 11, 16.5));
}

TEST(EpochDay, EpochTimeAgreesWithTheCalendar) {
    EXPECT_DOUBLE_EQ(EpochTime(Seconds(2000, 1, 1, 12)), GetEpochDay(100, 1, 1.0) + 0.5);
    EXPECT_NEAR(EpochTime(Seconds(2026, 11, 21, 18, 30, 15)),
                GetEpochDay(26, 11, 21.0) + (18 * 3600 + 30 * 60 + 15) / 86400.0, 1e-9);
}

TEST(Calendar, SecondsToDateMatchesKnownInstants) {
    DateTimeRec d{};
    QFSecondsToDate(0, &d);
    EXPECT_EQ(d.year, 1904);
    EXPECT_EQ(d.month, 1);
    EXPECT_EQ(d.day, 1);
    EXPECT_EQ(d.dayOfWeek, 6);  // 1904-01-01 was a Friday

    QFSecondsToDate(2082844800u, &d);  // the Unix epoch
    EXPECT_EQ(d.year, 1970);
    EXPECT_EQ(d.month, 1);
    EXPECT_EQ(d.day, 1);
    EXPECT_EQ(d.dayOfWeek, 5);  // Thursday

    QFSecondsToDate(0xFFFFFFFFu, &d);  // the last second of the time base
    EXPECT_EQ(d.year, 2040);
    EXPECT_EQ(d.month, 2);
    EXPECT_EQ(d.day, 6);
    EXPECT_EQ(d.hour, 6);
    EXPECT_EQ(d.minute, 28);
    EXPECT_EQ(d.second, 15);
}

TEST(Calendar, DatesBeyond2To31SecondsKeepTheirValue) {
    // 2030-01-01 00:00 UTC is Unix time 1893456000, past 1972-01-19 when a
    // signed count would have turned negative.
    const Date date{1893456000.0};
    const uint32_t secs = dateToSecs(date);
    EXPECT_EQ(secs, 1893456000u + 2082844800u);
    EXPECT_DOUBLE_EQ(secsToDate(secs).unixSeconds, date.unixSeconds);
    EXPECT_EQ(dateToSecs(Date{1893456000.75}), secs) << "truncated toward zero";
    EXPECT_EQ(SecondsToUnsigned(4294967295.9), 0xFFFFFFFFu);
    EXPECT_EQ(SecondsToUnsigned(std::nan("")), 0u);
}

TEST(Calendar, WideTimeRoundTripKeepsWholeSeconds) {
    EXPECT_FALSE(convertUTCtoNSDate(UTCDateTime{0, 0, 0}).has_value());
    UTCDateTime wide{1, 2, 3};
    EXPECT_EQ(convertNSDatetoUTC(nullptr, &wide), &wide);
    EXPECT_EQ(wide.highSeconds, 0);
    EXPECT_EQ(wide.lowSeconds, 0u);
    EXPECT_EQ(wide.fraction, 0);

    const Date date{1893456000.5};
    convertNSDatetoUTC(&date, &wide);
    EXPECT_EQ(wide.highSeconds, 0);
    EXPECT_EQ(wide.lowSeconds, 1893456000u + 2082844800u);
    EXPECT_EQ(wide.fraction, 0x8000);
    const auto back = convertUTCtoNSDate(wide);
    ASSERT_TRUE(back.has_value());
    EXPECT_DOUBLE_EQ(back->unixSeconds, 1893456000.0) << "the fraction is dropped";
}

TEST(JulianDate, PublishedInstants) {
    // J2000.0 is JD 2451545.0 (2000-01-01 12:00 TT; UT is close enough here).
    EXPECT_DOUBLE_EQ(FractionalJulianDate(Seconds(2000, 1, 1, 12)), 2451545.0);
    // Meeus, Astronomical Algorithms, example 7.a: 1957 October 4.81 = JD 2436116.31.
    EXPECT_NEAR(FractionalJulianDate(Seconds(1957, 10, 4, 19, 26, 24)), 2436116.31, 1e-6);
    std::tm t{};
    t.tm_year = 87;
    t.tm_mon = 3;
    t.tm_mday = 10;
    EXPECT_EQ(jdate(&t), 2446896);  // 1987-04-10 noon
    EXPECT_DOUBLE_EQ(jtime(&t), 2446895.5);
}

TEST(SiderealTime, PublishedValues) {
    // IAU 1982: GMST at J2000.0 is 18.697374558 h.
    EXPECT_NEAR(gmst(2451545.0), 18.697374558, 0.0005);
    // Meeus example 12.a: 1987 April 10, 0h UT: 13h10m46.3668s.
    EXPECT_NEAR(gmst(2446895.5), 13.0 + 10.0 / 60 + 46.3668 / 3600, 0.0005);
    // Meeus example 12.b: 1987 April 10, 19h21m00s UT: 8h34m57.0896s.
    EXPECT_NEAR(gmst(2446896.30625), 8.0 + 34.0 / 60 + 57.0896 / 3600, 0.0005);
    for (double jd = 2400000.3; jd < 2470000.0; jd += 1234.567) {
        const double h = gmst(jd);
        EXPECT_GE(h, 0.0);
        EXPECT_LT(h, 24.0);
    }
}

TEST(TextForms, ClockAndDate) {
    char buf[32];
    formatTime(Seconds(2026, 11, 21, 7, 5, 9), buf);
    EXPECT_STREQ(buf, "07:05:09");
    formatDateTime(Seconds(2026, 11, 21, 7, 5, 9), buf);
    EXPECT_STREQ(buf, "2026/11/21 07:05:09");
    formatTime(0, nullptr);
    formatDateTime(0, nullptr);
    dateStamp(nullptr);
    dateStamp(buf);
    EXPECT_EQ(std::strlen(buf), 19u);
    EXPECT_EQ(buf[4], '/');
    const UnsignedWide wide{2, 5};
    EXPECT_DOUBLE_EQ(MicrosecondToDouble(&wide), 2.0 * 4294967296.0 + 5.0);
}

std::string Spoken(uint32_t secs, bool withSeconds) {
    char buf[256] = "AO-7 rises in";
    addTimeToAOSString(secs, withSeconds, buf);
    return buf;
}

TEST(TextForms, SpokenDurations) {
    EXPECT_EQ(Spoken(3725, true), "AO-7 rises in1 hour,2 minutes, and 5 seconds,");
    EXPECT_EQ(Spoken(3725, false), "AO-7 rises in1 hour,2 minutes,");
    EXPECT_EQ(Spoken(3720, true), "AO-7 rises in1 hour, and 2 minutes,");
    EXPECT_EQ(Spoken(7200, true), "AO-7 rises in2 hours,");
    EXPECT_EQ(Spoken(61, true), "AO-7 rises in1 minute, and 1 second,");
    EXPECT_EQ(Spoken(45, false), "AO-7 rises in");
    EXPECT_EQ(Spoken(0, true), "AO-7 rises in no time at all, ");
    EXPECT_EQ(Spoken(172800, true), "AO-7 rises in an as yet undetermined amount of time, ");
    EXPECT_EQ(Spoken(86400 + 60, true), "AO-7 rises in1 minute,") << "whole days are dropped";
    addTimeToAOSString(60, true, nullptr);
}

}  // namespace
}  // namespace veloran

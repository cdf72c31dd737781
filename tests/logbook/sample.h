// A contact with every field filled, for the store and ADIF suites.
#pragma once

#include "engine/timebase.h"
#include "logbook/contact.h"

namespace veloran::testing {

inline uint32_t Utc(int year, int month, int day, int hour, int minute, int second) {
    DateTimeRec d{};
    d.year = static_cast<int16_t>(year);
    d.month = static_cast<int16_t>(month);
    d.day = static_cast<int16_t>(day);
    d.hour = static_cast<int16_t>(hour);
    d.minute = static_cast<int16_t>(minute);
    d.second = static_cast<int16_t>(second);
    return QFDateToSeconds(&d);
}

inline ContactRec FullContact() {
    ContactRec c;
    c.startUTC = Utc(2026, 11, 21, 18, 30, 5);
    c.endUTC = Utc(2026, 11, 21, 18, 31, 40);
    c.call = "KH6ABC";
    c.grid = "BL11bh";
    c.rstSent = "59";
    c.rstRcvd = "57";
    c.myCall = "VE3XYZ";
    c.myGrid = "FN03gr";
    c.satellite = "ISS";
    c.transponder = "FM Rptr";
    c.uplinkMHz = 145.99;
    c.downlinkMHz = 437.8;
    c.mode = "FM";
    c.name = "Keoni, \"Kai\"";
    c.qth = "Honolulu";
    c.comment = "first <ISS> contact";
    c.lotwSent = "Y";
    c.lotwRcvd = "N";
    c.qslSent = "R";
    c.qslRcvd = "N";
    c.country = "Hawaii";
    c.dxcc = 110;
    return c;
}

// Field-by-field comparison with names in the failure message.
#define EXPECT_SAME_CONTACT(a, b)                           \
    do {                                                    \
        EXPECT_EQ((a).startUTC, (b).startUTC);              \
        EXPECT_EQ((a).endUTC, (b).endUTC);                  \
        EXPECT_EQ((a).call, (b).call);                      \
        EXPECT_EQ((a).grid, (b).grid);                      \
        EXPECT_EQ((a).rstSent, (b).rstSent);                \
        EXPECT_EQ((a).rstRcvd, (b).rstRcvd);                \
        EXPECT_EQ((a).myCall, (b).myCall);                  \
        EXPECT_EQ((a).myGrid, (b).myGrid);                  \
        EXPECT_EQ((a).satellite, (b).satellite);            \
        EXPECT_EQ((a).transponder, (b).transponder);        \
        EXPECT_DOUBLE_EQ((a).uplinkMHz, (b).uplinkMHz);     \
        EXPECT_DOUBLE_EQ((a).downlinkMHz, (b).downlinkMHz); \
        EXPECT_EQ((a).mode, (b).mode);                      \
        EXPECT_EQ((a).submode, (b).submode);                \
        EXPECT_EQ((a).name, (b).name);                      \
        EXPECT_EQ((a).qth, (b).qth);                        \
        EXPECT_EQ((a).comment, (b).comment);                \
        EXPECT_EQ((a).lotwSent, (b).lotwSent);              \
        EXPECT_EQ((a).lotwRcvd, (b).lotwRcvd);              \
        EXPECT_EQ((a).qslSent, (b).qslSent);                \
        EXPECT_EQ((a).qslRcvd, (b).qslRcvd);                \
        EXPECT_EQ((a).country, (b).country);                \
        EXPECT_EQ((a).dxcc, (b).dxcc);                      \
    } while (0)

}  // namespace veloran::testing

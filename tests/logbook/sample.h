// A contact with every field filled, for the store and ADIF suites, and the
// field-by-field comparison of two contacts.
#pragma once

#include <gtest/gtest.h>

#include <string>

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

// Every text field of a contact: its name for failure messages and the
// value FullContact gives it.
struct ContactTextField {
    const char* name;
    std::string ContactRec::*field;
    const char* sample;
};
inline const ContactTextField kContactTextFields[] = {
    {"call", &ContactRec::call, "KH6ABC"},
    {"grid", &ContactRec::grid, "BL11bh"},
    {"rstSent", &ContactRec::rstSent, "59"},
    {"rstRcvd", &ContactRec::rstRcvd, "57"},
    {"myCall", &ContactRec::myCall, "VE3XYZ"},
    {"myGrid", &ContactRec::myGrid, "FN03gr"},
    {"satellite", &ContactRec::satellite, "ISS"},
    {"transponder", &ContactRec::transponder, "FM Rptr"},
    {"mode", &ContactRec::mode, "FM"},
    {"submode", &ContactRec::submode, ""},
    {"name", &ContactRec::name, "Keoni, \"Kai\""},
    {"qth", &ContactRec::qth, "Honolulu"},
    {"comment", &ContactRec::comment, "first <ISS> contact"},
    {"lotwSent", &ContactRec::lotwSent, "Y"},
    {"lotwRcvd", &ContactRec::lotwRcvd, "N"},
    {"qslSent", &ContactRec::qslSent, "R"},
    {"qslRcvd", &ContactRec::qslRcvd, "N"},
    {"country", &ContactRec::country, "Hawaii"},
};

// A contact with every field filled, quotes and markup in the text.
inline ContactRec FullContact() {
    ContactRec c;
    c.startUTC = Utc(2026, 11, 21, 18, 30, 5);
    c.endUTC = Utc(2026, 11, 21, 18, 31, 40);
    c.uplinkMHz = 145.99;
    c.downlinkMHz = 437.8;
    c.dxcc = 110;
    for (const ContactTextField& f : kContactTextFields) c.*f.field = f.sample;
    return c;
}

// Field-by-field comparison with names in the failure message.
inline void ExpectSameContact(const ContactRec& a, const ContactRec& b) {
    EXPECT_EQ(a.startUTC, b.startUTC);
    EXPECT_EQ(a.endUTC, b.endUTC);
    EXPECT_DOUBLE_EQ(a.uplinkMHz, b.uplinkMHz);
    EXPECT_DOUBLE_EQ(a.downlinkMHz, b.downlinkMHz);
    EXPECT_EQ(a.dxcc, b.dxcc);
    for (const ContactTextField& f : kContactTextFields)
        EXPECT_EQ(a.*f.field, b.*f.field) << f.name;
}

// The comparison, with the caller's line in a failure.
#define EXPECT_SAME_CONTACT(a, b)                    \
    do {                                             \
        SCOPED_TRACE("EXPECT_SAME_CONTACT");         \
        ::veloran::testing::ExpectSameContact(a, b); \
    } while (0)

}  // namespace veloran::testing

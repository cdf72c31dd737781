// The callsign lookup's requests, the service's answers, and the cache.

#include "logbook/callbook.h"

#include <gtest/gtest.h>

namespace veloran {
namespace {

TEST(Callbook, SettingsAndAddresses) {
    MemoryUserDefaults defaults;
    CallbookSettings settings;
    ReadCallbookSettings(defaults, &settings);
    EXPECT_FALSE(settings.enabled);  // off until the user turns it on
    EXPECT_EQ(settings.url, kCallbookDefaultUrl);
    defaults.setBool(callbookkeys::kEnabled, true);
    defaults.setString(callbookkeys::kUser, "ve3xyz");
    defaults.setString(callbookkeys::kPassword, "p&ss w=rd%");
    defaults.setString(callbookkeys::kUrl, "http://127.0.0.1:8080/xml.php");
    ReadCallbookSettings(defaults, &settings);
    EXPECT_TRUE(settings.enabled);
    EXPECT_EQ(CallbookLoginUrl(&settings),
              "http://127.0.0.1:8080/xml.php?u=ve3xyz&p=p%26ss%20w%3Drd%25");
    EXPECT_EQ(CallbookSearchUrl(&settings, "0a1b", "g4abc/p"),
              "http://127.0.0.1:8080/xml.php?id=0a1b&callsign=G4ABC%2FP&prg=Veloran");
}

TEST(Callbook, Answers) {
    const char* head =
        "<?xml version=\"1.0\"?><HamQTH version=\"2.8\" xmlns=\"https://www.hamqth.com\">";
    const struct {
        std::string xml;
        CallbookReply reply;
        const char* text;
    } cases[] = {
        {std::string(head) + "<session><session_id>09b0ae90</session_id></session></HamQTH>",
         CallbookReply::Session, "09b0ae90"},
        {std::string(head) +
             "<session><error>Wrong user name or password</error></session></HamQTH>",
         CallbookReply::Error, "Wrong user name or password"},
        {std::string(head) + "<session><error>Callsign not found</error></session></HamQTH>",
         CallbookReply::NotFound, "Callsign not found"},
        {std::string(head) +
             "<session><error>Session does not exist or expired</error></session></HamQTH>",
         CallbookReply::SessionExpired, "Session does not exist or expired"},
        {std::string(head) +
             "<search><callsign>ok7an</callsign><nick>Petr</nick><qth>Neratovice</qth>"
             "<country>Czech Republic</country><grid>JO70GG</grid></search></HamQTH>",
         CallbookReply::Found, ""},
        {"<html>502 Bad Gateway", CallbookReply::Error, "not XML"},
        {std::string(head) + "</HamQTH>", CallbookReply::Error, "neither"},
    };
    for (const auto& c : cases) {
        CallbookRecord record;
        std::string text;
        EXPECT_EQ(ParseCallbookReply(c.xml, &record, &text), c.reply) << c.xml;
        EXPECT_NE(text.find(c.text), std::string::npos) << text;
        if (c.reply == CallbookReply::Found) {
            EXPECT_EQ(record.call, "OK7AN");
            EXPECT_EQ(record.name, "Petr");
            EXPECT_EQ(record.qth, "Neratovice");
            EXPECT_EQ(record.grid, "JO70GG");
        }
    }
}

TEST(Callbook, CacheKeepsAnswersForADayAndDropsTheOldest) {
    CallbookCache cache;
    cache.capacity = 2;
    CallbookRecord rec;
    rec.name = "Petr";
    CacheCall(&cache, "ok7an", true, &rec, 1000);
    CacheCall(&cache, "Q1XYZ", false, nullptr, 2000);
    ASSERT_NE(CachedCall(&cache, "OK7AN", 1000 + 86400), nullptr);
    EXPECT_EQ(CachedCall(&cache, "OK7AN", 1000)->record.name, "Petr");
    EXPECT_EQ(CachedCall(&cache, "OK7AN", 1001 + 86400), nullptr);
    EXPECT_FALSE(CachedCall(&cache, "q1xyz", 2000)->found);
    CacheCall(&cache, "G4ABC", true, &rec, 3000);
    EXPECT_EQ(CachedCall(&cache, "OK7AN", 3000), nullptr);
    EXPECT_NE(CachedCall(&cache, "Q1XYZ", 3000), nullptr);
}

}  // namespace
}  // namespace veloran

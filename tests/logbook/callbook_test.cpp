// The callsign lookup's requests, the service's answers, and the cache.

#include "logbook/callbook.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "../data/scratch.h"
#include "data/files.h"

namespace veloran {
namespace {

TEST(Callbook, SettingsAndAddresses) {
    testing::ScratchDir config;
    MemoryUserDefaults defaults;
    CallbookSettings settings;
    ReadCallbookSettings(&defaults, config.path(), &settings);
    EXPECT_FALSE(settings.enabled);  // off until the user turns it on
    EXPECT_EQ(settings.url, kCallbookDefaultUrl);
    EXPECT_EQ(settings.password, "");
    defaults.setBool(callbookkeys::kEnabled, true);
    defaults.setString(callbookkeys::kUser, "ve3xyz");
    ASSERT_EQ(StoreCallbookPassword(config.path(), "p&ss w=rd%", nullptr), 1);
    defaults.setString(callbookkeys::kUrl, "http://127.0.0.1:8080/xml.php");
    ReadCallbookSettings(&defaults, config.path(), &settings);
    EXPECT_TRUE(settings.enabled);
    EXPECT_EQ(CallbookLoginUrl(&settings),
              "http://127.0.0.1:8080/xml.php?u=ve3xyz&p=p%26ss%20w%3Drd%25");
    EXPECT_EQ(CallbookSearchUrl(&settings, "0a1b", "g4abc/p"),
              "http://127.0.0.1:8080/xml.php?id=0a1b&callsign=G4ABC%2FP&prg=Veloran");
}

// The password is kept out of the settings in a file only its owner can read;
// one left in the settings by an older release moves there.
TEST(Callbook, PasswordIsPrivate) {
    testing::ScratchDir config;
    const std::string path = CallbookPasswordPath(config.path());
    auto mode = [&] {
        struct stat st {};
        return stat(path.c_str(), &st) == 0 ? static_cast<int>(st.st_mode & 0777) : -1;
    };
    MemoryUserDefaults defaults;
    defaults.setString(callbookkeys::kPassword, "s3cret");
    CallbookSettings settings;
    ReadCallbookSettings(&defaults, config.path(), &settings);
    EXPECT_EQ(settings.password, "s3cret");
    EXPECT_FALSE(defaults.contains(callbookkeys::kPassword));
    EXPECT_EQ(mode(), 0600);

    // A file made world-readable by hand, with a line end, is read and closed again.
    testing::WriteText(path, "n3w pass\n");
    ASSERT_EQ(chmod(path.c_str(), 0644), 0);
    ReadCallbookSettings(&defaults, config.path(), &settings);
    EXPECT_EQ(settings.password, "n3w pass");
    EXPECT_EQ(mode(), 0600);
    // Rewriting keeps it private; an empty password removes it.
    ASSERT_EQ(chmod(path.c_str(), 0644), 0);
    ASSERT_EQ(StoreCallbookPassword(config.path(), "other", nullptr), 1);
    EXPECT_EQ(mode(), 0600);
    EXPECT_EQ(testing::ReadText(path), "other");
    ASSERT_EQ(StoreCallbookPassword(config.path(), "", nullptr), 1);
    EXPECT_EQ(mode(), -1);

    // A folder that cannot be written keeps the old password in the settings.
    defaults.setString(callbookkeys::kPassword, "kept");
    std::string error;
    EXPECT_EQ(StoreCallbookPassword("/proc/veloran-none", "x", &error), 0);
    EXPECT_FALSE(error.empty());
    ReadCallbookSettings(&defaults, "/proc/veloran-none", &settings);
    EXPECT_EQ(settings.password, "kept");
    EXPECT_TRUE(defaults.contains(callbookkeys::kPassword));
}

// What the window's dialog stores reads back the same; the password only
// reaches its file, and only when the operator changed it.
TEST(Callbook, WrittenSettingsReadBack) {
    testing::ScratchDir config;
    MemoryUserDefaults defaults;
    defaults.setString(callbookkeys::kPassword, "from an older release");
    CallbookSettings set;
    set.enabled = true;
    set.user = " ve3xyz ";
    set.password = "s3cret pass";
    set.url = "http://127.0.0.1:8080/xml.php";
    std::string error;
    ASSERT_EQ(WriteCallbookSettings(&defaults, config.path(), &set, true, &error), 1) << error;
    CallbookSettings read;
    ReadCallbookSettings(&defaults, config.path(), &read);
    EXPECT_TRUE(read.enabled);
    EXPECT_EQ(read.user, "ve3xyz");
    EXPECT_EQ(read.password, "s3cret pass");
    EXPECT_EQ(read.url, set.url);
    EXPECT_FALSE(defaults.contains(callbookkeys::kPassword));
    for (const auto& [key, value] : defaults.values())
        EXPECT_EQ(value.find("s3cret"), std::string::npos) << key;

    // Left untouched, the stored password stays; the default address is not
    // written, so the default applies; off keeps the account.
    set.enabled = false;
    set.password = "";
    set.url = kCallbookDefaultUrl;
    ASSERT_EQ(WriteCallbookSettings(&defaults, config.path(), &set, false, &error), 1);
    read = CallbookSettings();
    ReadCallbookSettings(&defaults, config.path(), &read);
    EXPECT_FALSE(read.enabled);
    EXPECT_EQ(read.user, "ve3xyz");
    EXPECT_EQ(read.password, "s3cret pass");
    EXPECT_EQ(read.url, kCallbookDefaultUrl);
    EXPECT_FALSE(defaults.contains(callbookkeys::kUrl));

    // Changed to nothing, it is removed.
    ASSERT_EQ(WriteCallbookSettings(&defaults, config.path(), &set, true, &error), 1);
    read = CallbookSettings();
    ReadCallbookSettings(&defaults, config.path(), &read);
    EXPECT_EQ(read.password, "");
    EXPECT_FALSE(FileExists(CallbookPasswordPath(config.path())));

    // A folder that cannot be written says so and changes nothing.
    set.enabled = true;
    set.user = "other";
    set.password = "x";
    error.clear();
    EXPECT_EQ(WriteCallbookSettings(&defaults, "/proc/veloran-none", &set, true, &error), 0);
    EXPECT_NE(error.find("/proc/veloran-none"), std::string::npos) << error;
    EXPECT_EQ(defaults.stringForKey(callbookkeys::kUser), "ve3xyz");
    EXPECT_FALSE(defaults.boolForKey(callbookkeys::kEnabled));
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

// The places list and the settings through the controller.

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "fakes.h"

namespace veloran {
namespace {

using testing::ControllerRig;
using testing::ReadText;

// A places or modes file that is there but cannot be read (here a named pipe,
// which as root is what stays unreadable) is never replaced by a change: the
// user's file would be lost for what the program fell back on.
TEST(ControllerFiles, AnUnreadableFileIsNeverRewritten) {
    ControllerRig rig;
    MakeDirectories(rig.paths.configDir);
    std::remove(rig.paths.placesFile.c_str());
    ASSERT_EQ(mkfifo(rig.paths.placesFile.c_str(), 0644), 0);
    ASSERT_EQ(mkfifo(rig.paths.userModesFile.c_str(), 0644), 0);
    rig.app->loadKepsAndModes();
    rig.app->loadLocations();
    rig.app->controls().city = "Quillfern";
    rig.app->controls().latitude = "43.7064";
    rig.app->controls().longitude = "-79.2442";
    rig.app->locationOK();
    rig.app->MarkSatelliteEnabled(0, 0);
    struct stat places {
    }, modes{};
    ASSERT_EQ(stat(rig.paths.placesFile.c_str(), &places), 0);
    ASSERT_EQ(stat(rig.paths.userModesFile.c_str(), &modes), 0);
    EXPECT_TRUE(S_ISFIFO(places.st_mode));
    EXPECT_TRUE(S_ISFIFO(modes.st_mode));
}

TEST(ControllerPlaces, LoadChooseAddAndRemove) {
    ControllerRig rig;
    rig.app->loadLocations();
    const size_t count = rig.app->locations().size();
    ASSERT_GE(count, 300u);
    EXPECT_EQ(rig.ui.locationItems.size(), count);
    EXPECT_EQ(rig.app->lightPoints().size(), count);

    size_t reykjavik = 0;
    while (rig.app->locations()[reykjavik].city != "Reykjavik") ++reykjavik;
    rig.app->controls().selectedLocation = static_cast<int>(reykjavik);
    rig.app->locationChosen();
    SiteRec site;
    rig.app->GetSiteRec(&site);
    EXPECT_STREQ(site.locationName, "Reykjavik Capital Region Iceland");
    EXPECT_DOUBLE_EQ(site.siteLatDegs, 64.1466);
    EXPECT_DOUBLE_EQ(site.siteLongDegs, 21.9426);  // west positive
    EXPECT_EQ(rig.ui.shownLocation, "Reykjavik Capital Region Iceland|64.1466|-21.9426");

    ControlsModel& sheet = rig.app->controls();
    sheet.city = "Quillfern";
    sheet.state = "Ontario";
    sheet.country = "Canada";
    sheet.latitude = "43.7064";
    sheet.longitude = "-79.2442";
    rig.app->locationOK();
    EXPECT_EQ(rig.ui.sheetsClosed, 1);
    EXPECT_EQ(rig.app->controls().selectedLocation, -1);  // the reloaded list has none chosen
    rig.app->GetSiteRec(&site);
    EXPECT_DOUBLE_EQ(site.siteLongDegs, 79.2442);
    EXPECT_EQ(rig.ui.shownLocation, "Quillfern Ontario Canada|43.7064|-79.2442");
    // Kept in the file at once, and listed in its sorted place.
    EXPECT_NE(
        ReadText(rig.paths.placesFile).find("Quillfern\tOntario\tCanada\t43.7064\t-79.2442\n"),
        std::string::npos);
    EXPECT_EQ(rig.ui.locationItems.size(), count + 1);
    size_t quebec = 0, quillfern = 0;
    for (size_t i = 0; i < rig.ui.locationItems.size(); ++i) {
        if (rig.ui.locationItems[i] == "Quebec City Quebec Canada") quebec = i;
        if (rig.ui.locationItems[i] == "Quillfern Ontario Canada") quillfern = i;
    }
    EXPECT_EQ(quillfern, quebec + 1);
    reykjavik = 0;
    while (rig.app->locations()[reykjavik].city != "Reykjavik") ++reykjavik;

    rig.app->controls().selectedLocation = -1;
    rig.app->removeLocation();
    EXPECT_EQ(rig.ui.beeps, 1);
    rig.app->controls().selectedLocation = static_cast<int>(reykjavik);
    rig.app->removeLocation();
    // The file is rewritten sorted, the new place in its order, Reykjavik gone.
    const std::string text = ReadText(rig.paths.placesFile);
    EXPECT_EQ(text.find("Reykjavik"), std::string::npos);
    EXPECT_NE(text.find("Quillfern\tOntario\tCanada\t43.7064\t-79.2442\n"), std::string::npos);
    EXPECT_LT(text.find("Quebec City"), text.find("Quillfern"));
    EXPECT_EQ(rig.app->locations().size(), count);
    EXPECT_EQ(rig.ui.locationItems.size(), count);
}

TEST(ControllerPlaces, AMissingFileLeavesTheListEmpty) {
    ControllerRig rig;
    std::remove(rig.paths.placesFile.c_str());
    rig.app->loadLocations();
    EXPECT_TRUE(rig.app->locations().empty());
    EXPECT_TRUE(rig.ui.locationItems.empty());
}

TEST(ControllerPrefs, SavedAtQuitAndReadAtTheNextStart) {
    ControllerRig rig;
    rig.setSite([](SiteRec* s) {
        s->siteLatDegs = -33.9249;
        s->siteLongDegs = -18.4241;
        s->siteMinElevDegs = 3.0;
        s->radio = 4;
        std::strcpy(s->call_sign, "ZS1ABC");
    });
    rig.app->setMainSatNum(5);
    rig.app->savePrefs();

    // The next start: defaults first, then the store.
    ControllerRig next;
    next.defaults = rig.defaults;
    next.app->setSiteDefaults();
    next.app->setUIStateFromPrefs();
    SiteRec site;
    next.app->GetSiteRec(&site);
    EXPECT_DOUBLE_EQ(site.siteLatDegs, -33.9249);
    EXPECT_DOUBLE_EQ(site.siteLatRads, -33.9249 * kDegreesToRadians);
    EXPECT_DOUBLE_EQ(site.siteLongRads, -18.4241 * kDegreesToRadians);
    EXPECT_DOUBLE_EQ(site.siteMinElevRads, 3.0 * kDegreesToRadians);
    EXPECT_EQ(site.radio, 4);
    EXPECT_STREQ(site.call_sign, "ZS1ABC");
    EXPECT_EQ(next.app->mainSatNum(), 5);
    EXPECT_EQ(next.ui.settingsShown, 1);
}

TEST(ControllerPrefs, AFirstStartRunsOnTheDefaults) {
    ControllerRig rig;
    rig.app->setSiteDefaults();
    rig.app->setUIStateFromPrefs();
    SiteRec site, defaults;
    rig.app->GetSiteRec(&site);
    SetSiteDefaults(&defaults);
    EXPECT_EQ(std::memcmp(&site, &defaults, sizeof site), 0);
    EXPECT_EQ(rig.app->mainSatNum(), 1);
}

// The panel's OK: the copy it edited becomes the site, is saved at once
// (not only at quit), and the radians follow the degrees; Cancel shows the
// site again rather than what was typed.
TEST(ControllerPrefs, AcceptedPanelIsSavedAndCancelShowsTheSite) {
    ControllerRig rig;
    rig.app->setSiteDefaults();
    SiteRec shown;
    rig.app->GetSiteRec(&shown);
    std::strcpy(shown.call_sign, "G4XYZ");
    shown.siteLatDegs = 51.5;
    shown.siteLongDegs = 0.25;
    shown.radio = 7;
    shown.icomAddress = 0x60;
    shown.rotor = 10;
    shown.deadSpotState = 2;
    shown.displayKM = 0;
    shown.radioPortFileDescriptor = 99;  // never taken from the panel
    rig.app->prefsAccepted(&shown);

    SiteRec site;
    rig.app->GetSiteRec(&site);
    EXPECT_STREQ(site.call_sign, "G4XYZ");
    EXPECT_DOUBLE_EQ(site.siteLatRads, 51.5 * kDegreesToRadians);
    EXPECT_EQ(site.radioPortFileDescriptor, -1);
    EXPECT_EQ(rig.defaults.stringForKey("userCallSign"), "G4XYZ");
    EXPECT_EQ(rig.defaults.integerForKey("radio"), 7);
    EXPECT_EQ(rig.defaults.integerForKey("icomAddress"), 0x60);
    EXPECT_EQ(rig.defaults.integerForKey("rotor"), 10);
    EXPECT_EQ(rig.defaults.integerForKey("deadspot"), 2);
    EXPECT_FALSE(rig.defaults.boolForKey("kilometers"));

    const int shownBefore = rig.ui.settingsShown;
    rig.app->prefsCancelled();
    EXPECT_EQ(rig.ui.settingsShown, shownBefore + 1);
    // With no port chosen a test says so instead of opening anything.
    EXPECT_EQ(rig.app->testRotor(&site), "No port is chosen.");
}

// A synthesiser that remembers the voice and rate it was given last.
class VoiceRecorder : public Speech {
  public:
    void speak(const std::string&) override {}
    bool isSpeaking() const override { return false; }
    void stop() override {}
    std::vector<std::string> voices() const override { return {"kal", "slt"}; }
    void setVoice(const std::string& v, double r) override {
        voice = v;
        rate = r;
    }
    std::string voice = "unset";
    double rate = 99;
};

// The test sentence speaks in the voice the panel shows; OK keeps it, and
// Cancel goes back to the site's.
TEST(ControllerPrefs, TheSpeechVoiceFollowsThePanel) {
    ControllerRig rig;
    VoiceRecorder speech;
    AppController app({.ui = &rig.ui,
                       .defaults = &rig.defaults,
                       .clock = &rig.clock,
                       .announcer = &rig.announcer,
                       .log = rig.log,
                       .speech = &speech},
                      rig.paths);
    app.setSiteDefaults();
    EXPECT_EQ(app.speechVoices(), (std::vector<std::string>{"kal", "slt"}));
    EXPECT_TRUE(app.speechAudible());

    app.speakTestSentence("slt", -3.0);
    EXPECT_EQ(speech.voice, "slt");
    EXPECT_EQ(speech.rate, -1.0);
    ASSERT_EQ(rig.announcer.items.size(), 1u);
    EXPECT_FALSE(rig.announcer.items[0].transmit);
    app.prefsCancelled();
    EXPECT_EQ(speech.voice, "");
    EXPECT_EQ(speech.rate, 0.0);

    SiteRec shown;
    app.GetSiteRec(&shown);
    std::strcpy(shown.speechVoice, "kal");
    shown.speechRate = 0.4;
    app.prefsAccepted(&shown);
    EXPECT_EQ(speech.voice, "kal");
    EXPECT_DOUBLE_EQ(speech.rate, 0.4);
    EXPECT_EQ(rig.defaults.stringForKey("speechVoice"), "kal");
    double stored = 0;
    EXPECT_TRUE(rig.defaults.readDouble("speechRate", &stored));
    EXPECT_DOUBLE_EQ(stored, 0.4);
}

}  // namespace
}  // namespace veloran

// Settings: start-up defaults, every key written and read back in its
// order, missing keys, tuning offsets.

#include "data/settings.h"

#include <gtest/gtest.h>

#include <clocale>
#include <cmath>
#include <cstring>

#include "engine/observer.h"
#include "scratch.h"

namespace veloran {
namespace {

// Every setting changed away from its default.
void FillSettings(SiteRec* s, ViewPrefs* v) {
    SetSiteDefaults(s);
    v->mainSatNum = 7;
    s->radio = 3;
    s->radioPort = 2;
    s->radioBaud = 4;
    s->vfo_enabled = 1;
    s->vfo_locked = 1;
    s->listenForBeacon = 1;
    s->fullDopplerTuning = 1;
    s->icomAddress = 0x60;
    s->commandDelay = 12.5f;
    s->s_meter_enabled = 1;
    s->dial_tracking_enabled = 1;
    s->rotor = 5;
    s->rotorPort = 1;
    s->rotorBaud = 6;
    s->rotor_enabled = 1;
    s->rotor_manual = 1;
    s->park = 1;
    s->siteParkAz = 181.5;
    s->siteParkEl = 45.25;
    s->siteAzOffset = -3.125;
    s->siteElOffset = 1.0 / 3.0;
    s->deadSpotState = 2;
    std::strcpy(s->call_sign, "VE3ABC");
    s->wants_speech = 1;
    s->wants_sounds = 1;
    s->debug = 1;
    s->displayKM = 0;
    s->displayUTC = 0;
    std::strcpy(s->locationName, "Reykjavik Capital Region Iceland");
    s->siteLatDegs = 64.1466;
    s->siteLongDegs = 21.9426;
    s->siteAltitudeM = 42.0;
    s->siteMinElevDegs = 5.5;
    s->gatewayPort = 3;
    s->gatewayBaud = 1;
    s->gateway_enabled = 1;
    v->map2DWidth = 4096;
    s->displayTrackList = 0;
    s->followSat_enabled = 1;
    v->hasVisibleRect = true;
    v->visibleRect[0] = 10.5f;
    v->visibleRect[1] = 20.25f;
    v->visibleRect[2] = 1024.0f;
    v->visibleRect[3] = 512.0f;
    s->cameraPOV = 2;
    s->maxRezTex = 1;
    s->cameraDistance = 3.75;
    s->nightLight = 40;
    v->globeTrackList = 1;
    s->groundCoverage = 1;
    s->displayMapLabels = 1;
    v->globeLatLongLines = 1;
    s->showSkyTrack = 1;
    s->showGroundTrack = 1;
    s->showOrbitalPlane = 1;
    s->cityLights = 1;
    std::strcpy(s->speechVoice, "kal16");
    s->speechRate = -0.25;
}

TEST(SiteDefaults, TheStartUpStation) {
    SiteRec s;
    std::memset(&s, 0x5A, sizeof s);
    SetSiteDefaults(&s);
    EXPECT_DOUBLE_EQ(s.siteLatDegs, 43.7064);
    EXPECT_DOUBLE_EQ(s.siteLongDegs, 79.2442);
    EXPECT_DOUBLE_EQ(s.siteAltitudeM, 200.0);
    EXPECT_FLOAT_EQ(s.commandDelay, 3.0f);
    EXPECT_EQ(s.displayUTC, 1);
    EXPECT_EQ(s.displayKM, 1);
    EXPECT_EQ(s.displayTrackList, 1);
    EXPECT_EQ(s.deadSpotState, 1);
    EXPECT_EQ(s.rotor_manual, 0);
    EXPECT_EQ(s.park, 0);
    EXPECT_EQ(s.s_meter_enabled, 0);
    EXPECT_STREQ(s.siteName, "Quillfern");
    EXPECT_STREQ(s.locationName, "");
    EXPECT_EQ(s.radioPortFileDescriptor, -1);
    EXPECT_EQ(s.rotorPortFileDescriptor, -1);
    EXPECT_EQ(s.gatewayPortFileDescriptor, -1);
    EXPECT_DOUBLE_EQ(s.siteLatRads, 43.7064 * kDegreesToRadians);
    EXPECT_NEAR(s.SinSiteLat, std::sin(43.7064 * kDegreesToRadians), 1e-15);
}

TEST(Prefs, WrittenInTheirOrder) {
    const std::vector<std::string> expected = {"main_sat_num",
                                               "radio",
                                               "radioport",
                                               "radiobaud",
                                               "vfo_enabled",
                                               "vfo_locked",
                                               "beacon_enabled",
                                               "full_doppler_tuning",
                                               "icomAddress",
                                               "commandDelay",
                                               "s_meter_enabled",
                                               "dial_tracking_enabled",
                                               "rotor",
                                               "rotorport",
                                               "rotorbaud",
                                               "rotor_enabled",
                                               "rotor_manual",
                                               "park",
                                               "siteParkAz",
                                               "siteParkEl",
                                               "siteAzOffset",
                                               "siteElOffset",
                                               "deadspot",
                                               "userCallSign",
                                               "speech",
                                               "sounds",
                                               "debug",
                                               "kilometers",
                                               "utc",
                                               "location_name",
                                               "site_latitude",
                                               "site_longitude",
                                               "siteAltitude",
                                               "siteMinimumElevation",
                                               "gatewayport",
                                               "gatewaybaud",
                                               "gateway_enabled",
                                               "map_2d_width",
                                               "track_list_enabled",
                                               "followSat_enabled",
                                               "2D_Visible_Rect",
                                               "qcameraPOV",
                                               "qresolution",
                                               "qcameraDistance",
                                               "qshowNightLight",
                                               "qdisplayTrackList",
                                               "qgroundCoverage",
                                               "qdisplayMapLabels",
                                               "qlatLongLinesDeg",
                                               "qshowSkyTrack",
                                               "qshowGroundTrack",
                                               "qshowOrbitalPlane",
                                               "qshowCityLights",
                                               "hamlibRadioModel",
                                               "hamlibRotorModel",
                                               "fmRetuneHz",
                                               "speechVoice",
                                               "speechRate"};
    EXPECT_EQ(PrefKeys(), expected);
    SiteRec site;
    ViewPrefs view;
    FillSettings(&site, &view);
    MemoryUserDefaults store;
    SavePrefs(site, view, &store);
    EXPECT_EQ(store.writes(), expected);
    EXPECT_EQ(store.stringForKey("2D_Visible_Rect"), "10.500000 20.250000 1024.000000 512.000000");
    EXPECT_EQ(store.stringForKey("userCallSign"), "VE3ABC");
    EXPECT_EQ(store.stringForKey("debug"), "true");
}

TEST(Prefs, EveryKeyRoundTrips) {
    SiteRec saved;
    ViewPrefs savedView;
    FillSettings(&saved, &savedView);
    MemoryUserDefaults store;
    SavePrefs(saved, savedView, &store);

    SiteRec read;
    SetSiteDefaults(&read);
    ViewPrefs view;
    ReadPrefs(store, &read, &view);
    // The fields the keys do not hold are those of the defaults; the radians
    // follow the degrees.
    SiteRec expected = saved;
    expected.siteLatRads = saved.siteLatDegs * kDegreesToRadians;
    expected.siteLongRads = saved.siteLongDegs * kDegreesToRadians;
    expected.siteMinElevRads = saved.siteMinElevDegs * kDegreesToRadians;
    SitePreCalc(&expected);
    EXPECT_EQ(std::memcmp(&read, &expected, sizeof read), 0);
    EXPECT_DOUBLE_EQ(read.siteElOffset, 1.0 / 3.0);
    EXPECT_DOUBLE_EQ(read.siteMinElevRads, 5.5 * kDegreesToRadians);
    EXPECT_EQ(view.mainSatNum, 7);
    EXPECT_EQ(view.map2DWidth, 4096);
    EXPECT_TRUE(view.hasVisibleRect);
    EXPECT_FLOAT_EQ(view.visibleRect[1], 20.25f);
    EXPECT_EQ(view.globeTrackList, 1);
    EXPECT_EQ(view.globeLatLongLines, 1);
}

TEST(Prefs, MissingOrBrokenKeysLeaveTheDefaults) {
    SiteRec defaults;
    SetSiteDefaults(&defaults);
    SiteRec read = defaults;
    ViewPrefs view;
    MemoryUserDefaults empty;
    ReadPrefs(empty, &read, &view);
    EXPECT_EQ(std::memcmp(&read, &defaults, sizeof read), 0);
    EXPECT_FALSE(view.hasVisibleRect);
    EXPECT_EQ(view.mainSatNum, 1);

    MemoryUserDefaults broken;
    broken.setString("radio", "seven");
    broken.setString("site_latitude", "");
    broken.setString("2D_Visible_Rect", "1 2 3");
    broken.setString("userCallSign", std::string(2000, 'W'));
    broken.setString("speech", "1");
    ReadPrefs(broken, &read, &view);
    EXPECT_EQ(read.radio, 0);
    EXPECT_DOUBLE_EQ(read.siteLatDegs, 43.7064);
    EXPECT_FALSE(view.hasVisibleRect);
    EXPECT_EQ(std::strlen(read.call_sign), sizeof read.call_sign - 1);
    EXPECT_EQ(read.wants_speech, 1);
}

TEST(Prefs, NumbersUseADecimalPointInAnyLocale) {
    const char* previous = std::setlocale(LC_ALL, nullptr);
    const std::string saved = previous != nullptr ? previous : "C";
    if (std::setlocale(LC_ALL, "de_DE.UTF-8") == nullptr)
        GTEST_SKIP() << "de_DE.UTF-8 is not installed";
    SiteRec site;
    ViewPrefs view;
    FillSettings(&site, &view);
    MemoryUserDefaults store;
    SavePrefs(site, view, &store);
    SiteRec read;
    SetSiteDefaults(&read);
    ViewPrefs readView;
    ReadPrefs(store, &read, &readView);
    auto sat = testing::NewSatRec();
    std::strcpy(sat->name, "AO-7");
    sat->numberOfActiveChannels = 1;
    sat->modes[0].RXOffset = 0.5;
    SaveTweaks(&store, *sat);
    std::setlocale(LC_ALL, saved.c_str());
    EXPECT_EQ(store.stringForKey("siteParkAz"), "181.5");
    EXPECT_EQ(store.stringForKey("2D_Visible_Rect"), "10.500000 20.250000 1024.000000 512.000000");
    EXPECT_EQ(store.stringForKey(TweaksKey("AO-7")), "0.500000 0.000000 0.000000\t");
    EXPECT_DOUBLE_EQ(read.siteLatDegs, 64.1466);
    EXPECT_FLOAT_EQ(readView.visibleRect[0], 10.5f);
}

TEST(Tweaks, StoredPerSatelliteAndReadBack) {
    auto sat = testing::NewSatRec();
    std::strcpy(sat->name, "RS-44");
    sat->numberOfActiveChannels = 2;
    sat->modes[0].RXOffset = 0.001;
    sat->modes[0].TXOffset = -0.0025;
    sat->modes[1].BEOffset = 1.5;
    MemoryUserDefaults store;
    SaveTweaks(&store, *sat);
    EXPECT_EQ(store.stringForKey(TweaksKey("RS-44")),
              "0.001000 -0.002500 0.000000\t0.000000 0.000000 1.500000\t");

    auto back = testing::NewSatRec();
    std::strcpy(back->name, "RS-44");
    back->numberOfActiveChannels = 3;
    back->modes[2].RXOffset = 9.0;
    LoadTweaks(store, back.get());
    EXPECT_DOUBLE_EQ(back->modes[0].RXOffset, 0.001);
    EXPECT_DOUBLE_EQ(back->modes[0].TXOffset, -0.0025);
    EXPECT_DOUBLE_EQ(back->modes[1].BEOffset, 1.5);
    EXPECT_DOUBLE_EQ(back->modes[2].RXOffset, 9.0);  // no piece: kept

    std::strcpy(back->name, "AO-7");
    back->modes[0].RXOffset = 4.0;
    LoadTweaks(store, back.get());
    EXPECT_DOUBLE_EQ(back->modes[0].RXOffset, 4.0);  // no key: kept
}

TEST(TrackList, StoredAsNamesEachFollowedByABlank) {
    EXPECT_EQ(TrackListString({"AO-7", "ISS"}), "AO-7 ISS ");
    MemoryUserDefaults store;
    store.setBool(prefkeys::kTrackListEnabled, true);
    store.setString(prefkeys::kTrackListString, "AO-7 ISS ");
    SiteRec site;
    SetSiteDefaults(&site);
    ViewPrefs view;
    ReadPrefs(store, &site, &view);
    EXPECT_EQ(view.trackListEnabled, 1);
    EXPECT_EQ(view.trackListString, "AO-7 ISS ");
}

}  // namespace
}  // namespace veloran

namespace veloran {
namespace {

// A hand-edited settings file: every number that is not finite or not in
// its setting's range is refused, said, and the default kept.
TEST(SettingsValidation, BadNumbersFallBackToTheDefaults) {
    const std::vector<std::pair<std::string, std::string>> bad = {
        {"commandDelay", "inf"},
        {"commandDelay", "nan"},
        {"commandDelay", "-3"},
        {"site_latitude", "91"},
        {"site_longitude", "-1e300"},
        {"siteAltitude", "NaN"},
        {"radiobaud", "99"},
        {"radio", "-2"},
        {"radio", "18"},
        {"rotor", "13"},
        {"icomAddress", "256"},
        {"siteMinimumElevation", "inf"},
        {"main_sat_num", "0"},
        {"2D_Visible_Rect", "0 0 nan 10"},
        {"speechRate", "1.5"},
    };
    SiteRec defaults;
    SetSiteDefaults(&defaults);
    for (const auto& [key, text] : bad) {
        MemoryUserDefaults stored;
        stored.setString(key, text);
        SiteRec site;
        SetSiteDefaults(&site);
        ViewPrefs view;
        std::vector<std::string> problems;
        ReadPrefs(stored, &site, &view, &problems);
        ASSERT_EQ(problems.size(), 1u) << key << "=" << text;
        EXPECT_EQ(problems[0].rfind(key + "=" + text + " is not a", 0), 0u) << problems[0];
        EXPECT_EQ(site.commandDelay, defaults.commandDelay) << key;
        EXPECT_EQ(site.siteLatDegs, defaults.siteLatDegs) << key;
        EXPECT_EQ(site.siteLongDegs, defaults.siteLongDegs) << key;
        EXPECT_EQ(site.radioBaud, defaults.radioBaud) << key;
        EXPECT_EQ(view.mainSatNum, 1) << key;
        EXPECT_FALSE(view.hasVisibleRect) << key;
    }
    MemoryUserDefaults good;
    good.setString("commandDelay", "12.5");
    good.setString("site_longitude", "-0.13");
    good.setString("radio", "17");  // the Hamlib entries follow the built-in tables
    good.setString("rotor", "12");
    SiteRec site;
    SetSiteDefaults(&site);
    ViewPrefs view;
    std::vector<std::string> problems;
    ReadPrefs(good, &site, &view, &problems);
    EXPECT_TRUE(problems.empty());
    EXPECT_FLOAT_EQ(site.commandDelay, 12.5f);
    EXPECT_DOUBLE_EQ(site.siteLongDegs, -0.13);
    EXPECT_EQ(site.radio, 17);
    EXPECT_EQ(site.rotor, 12);
}

}  // namespace
}  // namespace veloran

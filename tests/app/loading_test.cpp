// Loading the satellite table: the bundled files, the element-set file's
// quirks, the limit, the record access and the rotation.

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>

#include "fakes.h"

namespace veloran {
namespace {

using testing::ControllerRig;
using testing::ElementSets;
using testing::ReadText;
using testing::WriteText;

TEST(LoadKepsAndModes, TheBundledSatellitesWithTheirModes) {
    ControllerRig rig;
    rig.app->loadKepsAndModes();
    ASSERT_EQ(rig.app->GetTotalSats(), 11);  // nine, the Moon and the Sun
    EXPECT_EQ(rig.app->moonNum(), 10);       // the Sun's entry, kept so
    EXPECT_EQ(rig.app->sunNum(), 11);
    const std::vector<std::string> items = {"Add Satellite", "AO-7",   "FO-29", "SO-50",
                                            "ISS",           "AO-91",  "AO-73", "RS-44",
                                            "PO-101",        "QO-100", "Moon",  "Sun"};
    EXPECT_EQ(rig.ui.satelliteItems, items);
    EXPECT_EQ(rig.ui.kepsDate.rfind("Keplerian Elements: SAMPLE ELEMENTS FROM VELORAN", 0), 0u);
    EXPECT_TRUE(rig.ui.alerts.empty());

    auto ao7 = rig.sat(0);
    EXPECT_STREQ(ao7->name, "AO-7");
    EXPECT_EQ(ao7->db_index, 0);
    EXPECT_EQ(ao7->enabled, 1);
    EXPECT_EQ(ao7->numberOfActiveChannels, 5);
    EXPECT_STREQ(ao7->modes[0].channel, "Mode B");
    EXPECT_EQ(ao7->modes[0].commMode, 4);  // B_SSB
    EXPECT_DOUBLE_EQ(ao7->currrentDownlink, ao7->modes[0].downFreq);
    EXPECT_STREQ(ao7->speakName, "A O 7");
    // Angles are radians after loading: 101.985 degrees.
    EXPECT_NEAR(ao7->satKep.inclination, 101.985 * kDegreesToRadians, 1e-12);
    EXPECT_GT(ao7->satKep.semiMajorAxis, 7000.0);

    auto moon = rig.sat(9);
    auto sun = rig.sat(10);
    EXPECT_STREQ(moon->name, "Moon");
    EXPECT_EQ(moon->db_index, 9);
    EXPECT_STREQ(sun->name, "Sun");
    EXPECT_EQ(sun->db_index, 10);
    EXPECT_EQ(sun->enabled, 0);  // no block in the modes file

    auto between = testing::NewSatRec();
    ASSERT_EQ(rig.app->GetSatelliteRecordByIndex(-1, between.get()), 1);
    EXPECT_STREQ(between->name, "BetweenPasses");
    ASSERT_EQ(rig.app->GetSatelliteRecordByIndex(-2, between.get()), 1);
    EXPECT_STREQ(between->name, "OnExit");
    EXPECT_EQ(rig.app->GetSatelliteRecordByIndex(11, between.get()), 0);
    EXPECT_EQ(rig.app->GetSatelliteRecordByIndex(-3, between.get()), 0);
}

TEST(LoadKepsAndModes, SpeaksAndLogsWhenAsked) {
    ControllerRig rig;
    rig.setSite([](SiteRec* s) {
        s->wants_speech = 1;
        s->debug = 1;
    });
    rig.app->loadKepsAndModes();
    ASSERT_EQ(rig.announcer.spoken.size(), 1u);
    EXPECT_EQ(rig.announcer.spoken[0], "Keplerian elements for 11 satellites loaded");
    const std::string log = rig.logText();
    EXPECT_NE(log.find("Mode file: " + rig.paths.defaultModesFile + ".\n"), std::string::npos);
    EXPECT_NE(log.find("loadKepsAndModes: 5 modes loaded for satellite: AO-7.\n"),
              std::string::npos);
    EXPECT_NE(log.find("loadKepsAndModes: AO-7 Epoch Day:"), std::string::npos);
    EXPECT_NE(log.find(" Inclination:101.985000 "), std::string::npos);
    EXPECT_NE(log.find("loadKepsAndModes: 11 satellites loaded.\n"), std::string::npos);
}

TEST(LoadKepsAndModes, NothingButTheMoonAndTheSunRaisesTheAlert) {
    ControllerRig rig;
    WriteText(rig.paths.keplerFile, "no element sets in here at all\n");
    rig.app->loadKepsAndModes();
    EXPECT_EQ(rig.app->GetTotalSats(), 2);
    ASSERT_EQ(rig.ui.alerts.size(), 1u);
    EXPECT_EQ(rig.ui.alerts[0],
              "There are no keplerian elements loaded.|Please Download or Import keps|OK");

    std::remove(rig.paths.keplerFile.c_str());
    rig.app->loadKepsAndModes();
    EXPECT_EQ(rig.app->GetTotalSats(), 2);
    EXPECT_EQ(rig.ui.alerts.size(), 2u);
}

TEST(LoadKepsAndModes, NameLinesOfTenCharactersAreNotNames) {
    ControllerRig rig;
    const std::string sets = ElementSets(1);
    const std::string lines = sets.substr(sets.find('\n') + 1);
    WriteText(rig.paths.keplerFile,
              "ISS (ZARYA)\n" + lines + "ISS\n" + lines + "123456789\n" + lines);
    rig.app->loadKepsAndModes();
    ASSERT_EQ(rig.app->GetTotalSats(), 4);
    EXPECT_STREQ(rig.sat(0)->name, "ISS");
    EXPECT_STREQ(rig.sat(1)->name, "123456789");  // nine characters and the line feed
    EXPECT_EQ(rig.sat(0)->satKep.catalogNumber, 25544);
}

TEST(LoadKepsAndModes, CarriageReturnLineFeedFilesLoadNamesWithoutElements) {
    ControllerRig rig;
    WriteText(rig.paths.keplerFile, ElementSets(2, "\r\n"));
    rig.app->loadKepsAndModes();
    // Each name line is followed by the lone line feed, taken as line 1.
    ASSERT_EQ(rig.app->GetTotalSats(), 4);
    EXPECT_STREQ(rig.sat(0)->name, "S0");
    EXPECT_EQ(rig.sat(0)->satKep.catalogNumber, 0);
    EXPECT_EQ(rig.sat(0)->satKep.epochMeanMotion, 0.0);
}

TEST(LoadKepsAndModes, AnUnterminatedLastLineDropsTheLastSetAndTheLastHeaderWins) {
    ControllerRig rig;
    std::string text = ElementSets(2);
    text.pop_back();
    WriteText(rig.paths.keplerFile, "KEPS FROM one\nKEPS FROM two\n" + text);
    rig.app->loadKepsAndModes();
    EXPECT_EQ(rig.app->GetTotalSats(), 3);
    EXPECT_STREQ(rig.sat(0)->name, "S0");
    EXPECT_STREQ(rig.sat(1)->name, "Moon");
    EXPECT_EQ(rig.ui.kepsDate, "Keplerian Elements: KEPS FROM two\n");
    SiteRec site;
    rig.app->GetSiteRec(&site);
    EXPECT_STREQ(site.keps_date, "Keplerian Elements: KEPS FROM two\n");
}

TEST(LoadKepsAndModes, At1021SetsTheFileStops) {
    ControllerRig rig;
    WriteText(rig.paths.keplerFile, ElementSets(1100));
    rig.app->loadKepsAndModes();
    ASSERT_EQ(rig.app->GetTotalSats(), 1023);
    EXPECT_STREQ(rig.sat(1020)->name, "S1020");
    EXPECT_STREQ(rig.sat(1021)->name, "Moon");
    EXPECT_STREQ(rig.sat(1022)->name, "Sun");
    EXPECT_EQ(rig.app->moonNum(), 1022);
    EXPECT_EQ(rig.app->sunNum(), 1023);
    // The 1022nd name reached the pop-up before the loop stopped.
    EXPECT_EQ(rig.ui.satelliteItems[1022], "S1021");
    EXPECT_EQ(rig.ui.satelliteItems.size(), 1025u);
}

TEST(LoadKepsAndModes, HostileFilesLoadWithoutOverflow) {
    ControllerRig rig;
    std::string garbage;
    for (int i = 0; i < 300000; ++i) garbage += static_cast<char>((i * 2654435761u) >> 24);
    WriteText(rig.paths.keplerFile, garbage + std::string(100000, 'L') + "\n" + ElementSets(3) +
                                        std::string(5000, 'F') + "FROM\n");
    WriteText(rig.paths.userModesFile,
              "Satellite:\tS1\nChannel:\t" + std::string(10000, 'C') + "\n" + garbage);
    rig.app->loadKepsAndModes();
    EXPECT_GE(rig.app->GetTotalSats(), 5);
    EXPECT_LE(rig.app->GetTotalSats(), 1023);
    bool found = false;
    for (int i = 0; i < rig.app->GetTotalSats(); ++i) {
        auto s = rig.sat(i);
        EXPECT_LT(std::strlen(s->name), sizeof s->name);
        if (std::strcmp(s->name, "S1") != 0) continue;
        found = true;
        EXPECT_EQ(std::strlen(s->modes[0].channel), sizeof s->modes[0].channel - 1);
    }
    EXPECT_TRUE(found);
}

TEST(RecordAccess, ByNameIsOneSided) {
    ControllerRig rig;
    rig.app->loadKepsAndModes();
    auto rec = testing::NewSatRec();
    ASSERT_EQ(rig.app->GetSatelliteRecordByName("AO-71", rec.get()), 1);
    EXPECT_STREQ(rec->name, "AO-7");
    ASSERT_EQ(rig.app->GetSatelliteRecordByName("ISS (ZARYA)", rec.get()), 1);
    EXPECT_STREQ(rec->name, "ISS");
    EXPECT_EQ(rig.app->GetSatelliteRecordByName("XO-99", rec.get()), 0);
    // An entry with an empty name answers everything.
    auto first = rig.sat(0);
    first->name[0] = '\0';
    rig.app->WriteSatelliteRecord(0, *first);
    ASSERT_EQ(rig.app->GetSatelliteRecordByName("XO-99", rec.get()), 1);
    EXPECT_EQ(rec->db_index, 0);
}

TEST(RecordAccess, WritingAndEnablingPersist) {
    ControllerRig rig;
    rig.app->loadKepsAndModes();
    auto rec = rig.sat(1);
    rec->tracked = 1;
    rig.app->WriteSatelliteRecord(1, *rec);
    EXPECT_EQ(rig.sat(1)->tracked, 1);
    rig.app->WriteSatelliteRecord(5000, *rec);  // outside the table: ignored

    rig.app->MarkSatelliteEnabled(1, 0);
    ASSERT_TRUE(FileExists(rig.paths.userModesFile));
    rig.app->loadKepsAndModes();
    EXPECT_EQ(rig.sat(1)->enabled, 0);
    EXPECT_EQ(rig.sat(1)->numberOfActiveChannels, 3);
    EXPECT_EQ(rig.sat(0)->enabled, 1);

    // Satellites missing from today's element sets keep their modes in the
    // rewritten file and find them again when their elements come back.
    WriteText(rig.paths.keplerFile, "AO-27\n" + ElementSets(1).substr(3));
    rig.app->loadKepsAndModes();
    rig.app->MarkSatelliteEnabled(0, 1);
    WriteText(rig.paths.keplerFile, ReadText(testing::Resource("kepler.dat")));
    rig.app->loadKepsAndModes();
    EXPECT_EQ(rig.sat(1)->enabled, 0);
    EXPECT_EQ(rig.sat(3)->numberOfActiveChannels, 5);  // ISS
    WriteText(rig.paths.keplerFile, "AO-27\n" + ElementSets(1).substr(3));
    rig.app->loadKepsAndModes();
    EXPECT_STREQ(rig.sat(0)->name, "AO-27");
    EXPECT_EQ(rig.sat(0)->numberOfActiveChannels, 1);
}

TEST(RecordAccess, RefreshModesAnswersOnce) {
    ControllerRig rig;
    EXPECT_EQ(rig.app->refreshModes(), 1);  // set at start
    EXPECT_EQ(rig.app->refreshModes(), 0);
}

TEST(Rotation, VisitsTrackedSatellitesSkipsTheMainOneAndNeverTheLast) {
    ControllerRig rig;
    rig.app->loadKepsAndModes();
    for (int i : {1, 3, 10}) {  // FO-29, ISS and the Sun
        auto rec = rig.sat(i);
        rec->tracked = 1;
        rig.app->WriteSatelliteRecord(i, *rec);
    }
    rig.app->setMainSatNum(4);  // ISS
    rig.app->setCycleSatNum(1);
    std::vector<int> visited;
    for (int k = 0; k < 4; ++k) {
        ASSERT_EQ(rig.app->nextSatelliteInDB(), 1);
        visited.push_back(rig.app->cycleSatNum());
    }
    EXPECT_EQ(visited, (std::vector<int>{2, 2, 2, 2}));
    rig.app->setMainSatNum(2);
    EXPECT_EQ(rig.app->nextSatelliteInDB(), 1);
    EXPECT_EQ(rig.app->cycleSatNum(), 4);
    // Only the main satellite and the Sun are tracked: nothing to rotate.
    auto iss = rig.sat(3);
    iss->tracked = 0;
    rig.app->WriteSatelliteRecord(3, *iss);
    EXPECT_EQ(rig.app->nextSatelliteInDB(), 0);
}

}  // namespace
}  // namespace veloran

// The modes menu actions, the channel pop-up and a new main satellite.

#include <gtest/gtest.h>

#include <cstring>

#include "data/modes.h"
#include "fakes.h"

namespace veloran {
namespace {

using testing::ControllerRig;
using testing::NewSatRec;
using testing::ReadText;
using testing::WriteText;

TEST(ModesActions, ExportWritesAFileThatImportsBackTheSame) {
    ControllerRig rig;
    rig.app->loadKepsAndModes();
    rig.files.answer = rig.dir.file("export.txt");
    rig.app->exportModes();
    EXPECT_EQ(rig.files.proposed, "Veloran Modes.txt");
    const std::string exported = ReadText(rig.dir.file("export.txt"));
    // Satellites, then the pseudo-records; the Moon and the Sun have no modes.
    EXPECT_EQ(exported.rfind("Satellite:\tAO-7\n", 0), 0u);
    EXPECT_NE(exported.find("Satellite:\tBetweenPasses\n"), std::string::npos);
    EXPECT_EQ(exported.find("Satellite:\tSun"), std::string::npos);

    rig.app->importModes();
    EXPECT_EQ(ReadText(rig.paths.userModesFile), exported);
    // What was loaded from the bundled file equals what the export holds.
    ModesFile bundled;
    ASSERT_TRUE(bundled.load(rig.paths.defaultModesFile));
    for (int i = 0; i < rig.app->GetTotalSats(); ++i) {
        auto loaded = rig.sat(i);
        auto expected = testing::NewSatRec();
        bundled.getModes(expected.get(), loaded->name);
        EXPECT_EQ(loaded->numberOfActiveChannels, expected->numberOfActiveChannels) << loaded->name;
    }
    rig.app->writeModeFile(rig.dir.file("again.txt"));
    EXPECT_EQ(ReadText(rig.dir.file("again.txt")), exported);
    EXPECT_EQ(rig.app->refreshModes(), 1);
}

TEST(ModesActions, ImportKeepsTheOldUserFileAside) {
    ControllerRig rig;
    rig.app->loadKepsAndModes();
    MakeDirectories(rig.paths.configDir);
    WriteText(rig.paths.userModesFile, "Satellite:\tAO-7\nChannel:\tMine\n\n");
    WriteText(rig.dir.file("theirs.txt"), "Satellite:\tFO-29\nChannel:\tTheirs\n\n");
    rig.files.answer = rig.dir.file("theirs.txt");
    rig.app->setMainSatNum(2);
    rig.app->importModes();
    EXPECT_EQ(ReadText(rig.paths.userModesFile + ".bak"), "Satellite:\tAO-7\nChannel:\tMine\n\n");
    EXPECT_EQ(rig.app->mainSatNum(), 2);
    EXPECT_STREQ(rig.sat(1)->modes[0].channel, "Theirs");
    EXPECT_EQ(rig.sat(0)->enabled, 0);
    EXPECT_EQ(rig.ui.channelItems, (std::vector<std::string>{"Theirs"}));
}

// A backup that cannot be written (here a folder stands where it goes, as a
// full disk would refuse it) stops the import: the user's file stays.
TEST(ModesActions, ImportStopsWhenTheBackupFails) {
    ControllerRig rig;
    rig.app->loadKepsAndModes();
    MakeDirectories(rig.paths.userModesFile + ".bak");
    WriteText(rig.paths.userModesFile, "Satellite:\tAO-7\nChannel:\tMine\n\n");
    WriteText(rig.dir.file("theirs.txt"), "Satellite:\tFO-29\nChannel:\tTheirs\n\n");
    rig.files.answer = rig.dir.file("theirs.txt");
    rig.app->importModes();
    EXPECT_EQ(ReadText(rig.paths.userModesFile), "Satellite:\tAO-7\nChannel:\tMine\n\n");
    ASSERT_EQ(rig.ui.alerts.size(), 1u);
    EXPECT_NE(rig.ui.alerts[0].find("Cannot back up " + rig.paths.userModesFile + ": "),
              std::string::npos)
        << rig.ui.alerts[0];
}

TEST(ModesActions, SatnogsImportAddsChannelsTheProgramUsesAtOnce) {
    ControllerRig rig;
    rig.app->loadKepsAndModes();
    WriteText(rig.paths.userModesFile, ReadText(rig.paths.defaultModesFile));
    rig.app->loadKepsAndModes();
    const std::string before = ReadText(rig.paths.userModesFile);
    rig.files.answer = std::string(VELORAN_RESOURCE_DIR) + "/samples/satnogs-transmitters.json";
    rig.app->importSatnogs();
    ASSERT_TRUE(rig.ui.alerts.empty()) << rig.ui.alerts[0];
    ASSERT_EQ(rig.ui.notices.size(), 1u);
    EXPECT_EQ(rig.ui.notices[0].rfind("SatNOGS transmitters imported: ", 0), 0u);
    EXPECT_NE(rig.ui.notices[0].find("channels added"), std::string::npos);
    EXPECT_EQ(ReadText(rig.paths.userModesFile + ".bak"), before);
    // AO-7's beacon is a channel of the table in memory, without a restart.
    auto ao7 = testing::NewSatRec();
    ASSERT_TRUE(rig.app->GetSatelliteRecordByName("AO-7", ao7.get()));
    bool found = false;
    for (int i = 0; i < ao7->numberOfActiveChannels; ++i)
        found = found || std::strcmp(ao7->modes[i].channel, "Mode B beacon") == 0;
    EXPECT_TRUE(found);

    // Not a transmitters list: told, and the modes file stays.
    const std::string after = ReadText(rig.paths.userModesFile);
    WriteText(rig.dir.file("notes.json"), "{\"not\": \"a list\"}");
    rig.files.answer = rig.dir.file("notes.json");
    rig.app->importSatnogs();
    ASSERT_EQ(rig.ui.alerts.size(), 1u);
    EXPECT_EQ(rig.ui.alerts[0].rfind("The transmitters were not imported.|", 0), 0u);
    EXPECT_EQ(ReadText(rig.paths.userModesFile), after);
}

// What the modes file keeps of a record, compared field by field.
void ExpectSameModes(const SatRec& a, const SatRec& b) {
    SCOPED_TRACE(a.name);
    EXPECT_STREQ(a.name, b.name);
    ASSERT_EQ(a.numberOfActiveChannels, b.numberOfActiveChannels);
    for (int m = 0; m < a.numberOfActiveChannels; ++m) {
        EXPECT_STREQ(a.modes[m].channel, b.modes[m].channel);
        EXPECT_EQ(a.modes[m].commMode, b.modes[m].commMode);
        EXPECT_DOUBLE_EQ(a.modes[m].upFreq, b.modes[m].upFreq);
        EXPECT_DOUBLE_EQ(a.modes[m].downFreq, b.modes[m].downFreq);
    }
    EXPECT_STREQ(a.trackHours, b.trackHours);
    EXPECT_EQ(a.enabled, b.enabled);
    EXPECT_EQ(a.priority, b.priority);
}

std::vector<std::string> Names(const std::vector<SatRec>& records) {
    std::vector<std::string> names;
    for (const SatRec& r : records) names.emplace_back(r.name);
    return names;
}

// The bundled modes file holds AO-27 and IO-86, which the bundled element
// sets do not; the Moon and the Sun have no modes.
TEST(ModesActions, EditorAddsAndDeletesSatellites) {
    ControllerRig rig;
    rig.app->loadKepsAndModes();
    const std::vector<SatRec> before = rig.app->modesForEditing();
    EXPECT_EQ(Names(before), (std::vector<std::string>{
                                 "AO-7", "FO-29", "SO-50", "ISS", "AO-91", "AO-73", "RS-44",
                                 "PO-101", "QO-100", "AO-27", "IO-86", "BetweenPasses", "OnExit"}));
    EXPECT_EQ(before[9].db_index, -1);
    EXPECT_EQ(rig.app->satellitesWithoutModes(), (std::vector<std::string>{"Moon", "Sun"}));

    // Added: one picked from the element sets, one typed; deleted: one of
    // the table and one kept only in the modes file.
    std::vector<SatRec> edited(2);
    NewModesBlock(&edited[0], "Sun");
    std::strcpy(edited[0].modes[0].channel, "Noise");
    edited[0].modes[0].downFreq = 10368.1;
    NewModesBlock(&edited[1], "XO-99");
    edited[1].modes[0].upFreq = 145.9;
    edited[1].priority = 2;
    ASSERT_EQ(rig.app->saveEditedModes(edited.data(), 2, {"RS-44", "IO-86"}), 1);
    EXPECT_TRUE(rig.ui.alerts.empty());

    const std::vector<SatRec> after = rig.app->modesForEditing();
    EXPECT_EQ(Names(after), (std::vector<std::string>{"AO-7", "FO-29", "SO-50", "ISS", "AO-91",
                                                      "AO-73", "PO-101", "QO-100", "Sun", "AO-27",
                                                      "XO-99", "BetweenPasses", "OnExit"}));
    EXPECT_EQ(rig.app->satellitesWithoutModes(), (std::vector<std::string>{"RS-44", "Moon"}));
    // The running program has them: the Sun tunes, RS-44 is off.
    auto sun = NewSatRec();
    ASSERT_TRUE(rig.app->GetSatelliteRecordByName("Sun", sun.get()));
    ExpectSameModes(*sun, edited[0]);
    auto rs44 = NewSatRec();
    ASSERT_TRUE(rig.app->GetSatelliteRecordByName("RS-44", rs44.get()));
    EXPECT_EQ(rs44->numberOfActiveChannels, 0);
    EXPECT_EQ(rs44->enabled, 0);

    // The file reads back the same records, untouched ones included.
    ModesFile file;
    ASSERT_TRUE(file.load(rig.paths.userModesFile));
    EXPECT_EQ(file.names(), (std::vector<std::string>{
                                "AO-7", "FO-29", "SO-50", "ISS", "AO-91", "AO-73", "PO-101",
                                "QO-100", "Sun", "BetweenPasses", "OnExit", "AO-27", "XO-99"}));
    for (const SatRec& shown : after) {
        auto reread = NewSatRec();
        file.getModes(reread.get(), shown.name);
        ExpectSameModes(*reread, shown);
    }
    ExpectSameModes(after[10], edited[1]);
    ExpectSameModes(after[0], before[0]);
    ExpectSameModes(after[9], before[9]);
}

TEST(ModesActions, DeletingBetweenPassesOrOnExitIsRefused) {
    ControllerRig rig;
    rig.app->loadKepsAndModes();
    auto ao7 = rig.sat(0);
    for (const char* pseudo : {"BetweenPasses", "OnExit"}) {
        SCOPED_TRACE(pseudo);
        rig.ui.alerts.clear();
        EXPECT_EQ(rig.app->saveEditedModes(ao7.get(), 1, {"AO-73", pseudo}), 0);
        ASSERT_EQ(rig.ui.alerts.size(), 1u);
        EXPECT_NE(rig.ui.alerts[0].find(std::string(pseudo) + " sets the radio outside passes"),
                  std::string::npos)
            << rig.ui.alerts[0];
        EXPECT_FALSE(FileExists(rig.paths.userModesFile));
        EXPECT_GT(rig.sat(5)->numberOfActiveChannels, 0) << "AO-73 keeps its modes";
    }
}

TEST(ModesActions, DefaultModesClearsOffsetsAndGoesBackToTheBundledFile) {
    ControllerRig rig;
    rig.app->loadKepsAndModes();
    rig.app->defaultModes();  // no user file yet
    EXPECT_EQ(rig.ui.beeps, 1);

    auto ao7 = rig.sat(0);
    ao7->modes[0].RXOffset = 0.002;
    ao7->numberOfActiveChannels = 1;
    std::strcpy(ao7->modes[0].channel, "Edited");
    rig.app->WriteSatelliteRecord(0, *ao7);
    rig.app->writeModeFile(rig.paths.userModesFile);
    rig.app->loadKepsAndModes();
    EXPECT_EQ(rig.sat(0)->numberOfActiveChannels, 1);

    rig.app->setMainSatNum(1);
    rig.app->defaultModes();
    EXPECT_EQ(rig.ui.beeps, 1);
    EXPECT_FALSE(FileExists(rig.paths.userModesFile));
    EXPECT_TRUE(FileExists(rig.paths.userModesFile + ".bak"));
    EXPECT_EQ(rig.sat(0)->numberOfActiveChannels, 5);
    EXPECT_EQ(rig.defaults.stringForKey(TweaksKey("AO-7")).rfind("0.000000 0.000000 0.000000\t", 0),
              0u);
    EXPECT_EQ(rig.ui.channelItems.size(), 5u);
}

TEST(ModesActions, TheChosenModeIsRememberedPerSatellite) {
    ControllerRig rig;
    rig.app->loadKepsAndModes();
    rig.app->setMainSatNum(4);  // ISS
    rig.app->HandleNewSatellite();
    EXPECT_EQ(rig.ui.channelItems.size(), 5u);
    EXPECT_EQ(rig.ui.vfoSlider, 0.0);
    rig.app->controls().selectedChannel = 3;
    rig.ui.vfoSlider = 12.0;
    rig.app->modeChanged();
    EXPECT_EQ(rig.ui.vfoSlider, 0.0);
    EXPECT_EQ(rig.sat(3)->selectedModeIndex, 3);
    EXPECT_EQ(rig.defaults.integerForKey("ISS"), 3);

    rig.app->loadKepsAndModes();
    rig.app->controls().selectedChannel = 0;
    rig.ui.selectedChannel = 0;
    rig.app->HandleNewSatellite();
    EXPECT_EQ(rig.sat(3)->selectedModeIndex, 3);
    EXPECT_EQ(rig.ui.selectedChannel, 3);
    EXPECT_EQ(rig.app->controls().selectedChannel, 3);
    EXPECT_EQ(rig.app->controls().channelCount, 5);

    // A hand-edited store with an impossible index falls back to mode 0.
    rig.defaults.setInteger("ISS", 100000);
    rig.app->HandleNewSatellite();
    EXPECT_EQ(rig.sat(3)->selectedModeIndex, 0);

    rig.app->setMainSatNum(11);  // the Sun has no modes
    rig.app->HandleNewSatellite();
    EXPECT_EQ(rig.ui.channelItems, (std::vector<std::string>{"No Modes"}));
    rig.app->modeChanged();
    EXPECT_FALSE(rig.defaults.contains("Sun"));
}

TEST(ModesActions, TweaksFollowTheSatellite) {
    ControllerRig rig;
    rig.app->loadKepsAndModes();
    auto fo29 = rig.sat(1);
    fo29->modes[1].TXOffset = -0.0015;
    rig.app->WriteSatelliteRecord(1, *fo29);
    rig.app->SaveTweaks(1);
    rig.app->loadKepsAndModes();
    EXPECT_EQ(rig.sat(1)->modes[1].TXOffset, 0.0);
    rig.app->LoadTweaks(1);
    EXPECT_DOUBLE_EQ(rig.sat(1)->modes[1].TXOffset, -0.0015);
}

}  // namespace
}  // namespace veloran

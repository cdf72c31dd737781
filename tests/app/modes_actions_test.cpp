// The modes menu actions, the channel pop-up and a new main satellite.

#include <gtest/gtest.h>

#include <cstring>

#include "data/modes.h"
#include "fakes.h"

namespace veloran {
namespace {

using testing::ControllerRig;
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

// SatNOGS transmitters into the user's modes file: the expected channels
// come in, the user's own channels and edits are never overwritten, and a
// broken list changes nothing.

#include "data/satnogs.h"

#include <gtest/gtest.h>

#include <cstdio>

#include "data/modes.h"
#include "scratch.h"

namespace veloran {
namespace {

using testing::ReadText;
using testing::Resource;
using testing::ScratchDir;
using testing::WriteText;

DataPaths Paths(const ScratchDir& dir) {
    DataPaths p = DataPaths::InFolders(VELORAN_RESOURCE_DIR, dir.path(), dir.path());
    p.keplerFile = dir.file("none.dat");  // names from the names table only
    return p;
}

// The mode named `channel` of satellite `sat` in the user modes file.
bool FindMode(const DataPaths& paths, const char* sat, const char* channel, ModeRec* out) {
    ModesFile modes;
    if (!modes.load(paths.userModesFile)) return false;
    auto rec = testing::NewSatRec();
    modes.getModes(rec.get(), sat);
    for (int i = 0; i < rec->numberOfActiveChannels; ++i) {
        if (std::string(rec->modes[i].channel) == channel) {
            *out = rec->modes[i];
            return true;
        }
    }
    return false;
}

TEST(SatnogsImport, AddsTheSampleChannelsWithBandsAndModes) {
    ScratchDir dir;
    const DataPaths paths = Paths(dir);
    SatnogsImportResult result;
    ASSERT_TRUE(ImportSatnogs(Resource("samples/satnogs-transmitters.json"), paths, &result))
        << result.message;
    EXPECT_EQ(result.channelsAdded, 6);
    EXPECT_EQ(result.satellitesAdded, 1);  // 99901 is not in the bundled modes file
    EXPECT_EQ(result.skipped, 2);          // the dead and the inactive transmitter
    // Frequencies are the sample file's hertz in MHz; transponders at their centre.
    const struct {
        const char* sat;
        const char* channel;
        const char* mode;
        double up, down;
    } expected[] = {
        {"SO-50", "FM voice", "J_FM", 145.85, 436.795},
        {"RS-44", "Linear transponder", "JA_SSB", 145.965, 435.64},
        {"AO-7", "Mode B transponder", "B_SSB", 432.15, 145.95},
        {"AO-7", "Mode B beacon", "SIMP_SSB", 0.0, 145.975},
        {"QO-100", "NB transponder", "T_SSB", 2400.175, 10489.675},
        {"SAT99901", "Telemetry 9k6", "SIMP_FM", 0.0, 437.1},
    };
    for (const auto& e : expected) {
        ModeRec m{};
        ASSERT_TRUE(FindMode(paths, e.sat, e.channel, &m)) << e.sat << " " << e.channel;
        char mode[kModeNameSize];
        ModeToStr(m.commMode, mode);
        EXPECT_STREQ(mode, e.mode) << e.channel;
        EXPECT_NEAR(m.upFreq, e.up, 1e-6) << e.channel;
        EXPECT_NEAR(m.downFreq, e.down, 1e-6) << e.channel;
    }
    ModeRec kept{};
    EXPECT_TRUE(FindMode(paths, "SO-50", "FM", &kept)) << "the bundled channels stay";
    EXPECT_FALSE(FindMode(paths, "SO-50", "Old beacon", &kept));
}

TEST(SatnogsImport, NeverOverwritesTheUsersChannels) {
    ScratchDir dir;
    const DataPaths paths = Paths(dir);
    // The user has a channel of the same name as one in the list.
    WriteText(
        paths.userModesFile,
        "Satellite:\tSO-50\nChannel: \tFM voice\nUplink:  \t145.840000\nDownlink:\t436.800000\n"
        "CMode:   \tJ_FM\nEnabled:\t1\nPriority:\t5\n\n");
    SatnogsImportResult result;
    ASSERT_TRUE(ImportSatnogs(Resource("samples/satnogs-transmitters.json"), paths, &result));
    EXPECT_EQ(result.keptUser, 1);
    ModeRec m{};
    ASSERT_TRUE(FindMode(paths, "SO-50", "FM voice", &m));
    EXPECT_DOUBLE_EQ(m.upFreq, 145.84);

    // The user edits an imported channel; the next import leaves it.
    std::string text = ReadText(paths.userModesFile);
    const size_t at = text.find("432.150000");
    ASSERT_NE(at, std::string::npos);
    text.replace(at, 10, "432.160000");
    WriteText(paths.userModesFile, text);
    ASSERT_TRUE(ImportSatnogs(Resource("samples/satnogs-transmitters.json"), paths, &result));
    EXPECT_EQ(result.channelsAdded, 0);
    EXPECT_EQ(result.keptUser, 2);
    ASSERT_TRUE(FindMode(paths, "AO-7", "Mode B transponder", &m));
    EXPECT_DOUBLE_EQ(m.upFreq, 432.16);

    // An untouched imported channel follows the list when it changes.
    std::string list = ReadText(Resource("samples/satnogs-transmitters.json"));
    const std::string beacon = "\"downlink_low\": 145975000";  // the AO-7 beacon moved
    list.replace(list.find(beacon), beacon.size(), "\"downlink_low\": 145970000");
    WriteText(dir.file("moved.json"), list);
    ASSERT_TRUE(ImportSatnogs(dir.file("moved.json"), paths, &result));
    EXPECT_EQ(result.channelsUpdated, 1);
    ASSERT_TRUE(FindMode(paths, "AO-7", "Mode B beacon", &m));
    EXPECT_DOUBLE_EQ(m.downFreq, 145.97);
}

TEST(SatnogsImport, ABrokenListChangesNothing) {
    for (const char* content : {"", "[{\"norad_cat_id\": 7530,", "{\"norad_cat_id\": 7530}"}) {
        ScratchDir dir;
        const DataPaths paths = Paths(dir);
        WriteText(paths.userModesFile, "Satellite:\tAO-7\n");
        WriteText(dir.file("t.json"), content);
        SatnogsImportResult result;
        EXPECT_FALSE(ImportSatnogs(dir.file("t.json"), paths, &result)) << content;
        EXPECT_NE(result.message.find("The modes file is unchanged"), std::string::npos);
        EXPECT_EQ(ReadText(paths.userModesFile), "Satellite:\tAO-7\n");
    }
}

}  // namespace
}  // namespace veloran

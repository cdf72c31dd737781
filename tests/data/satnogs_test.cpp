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

TEST(SatnogsImport, ModesFollowTheBandsAndTheMode) {
    const struct {
        const char* mode;
        double up, down;
        bool inverting;
        const char* expected;
        double upOut;
    } cases[] = {
        {"FM", 145.85, 436.795, false, "J_FM", 145.85},  // 2 m up, 70 cm down
        {"FM", 435.25, 145.96, false, "B_FM", 435.25},
        {"FM", 145.99, 145.80, false, "REPEATER", 145.99},
        {"FM", 0.0, 145.96, false, "SIMP_FM", 0.0},
        {"SSB", 145.965, 435.64, true, "JA_SSB", 145.965},
        {"CW", 432.15, 145.95, true, "B_CW", 432.15},
        {"USB", 145.9, 29.45, false, "A_SSB", 145.9},
        {"SSB", 21.3, 145.9, false, "T_SSB", 21.3},
        {"CW", 0.0, 145.975, false, "SIMP_SSB", 0.0},
        {"BPSK", 145.9, 435.1, false, "SIMP_SSB", 0.0},  // data: received only
        {"AFSK", 145.825, 145.825, false, "SIMP_FM", 0.0},
        {"APT", 0.0, 137.1, false, "WIDE_FM", 0.0},
        {"AM", 0.0, 121.5, false, "SIMP_AM", 0.0},
    };
    for (const auto& c : cases) {
        double up = -1.0;
        char name[kModeNameSize];
        ModeToStr(CommModeFor(c.mode, c.up, c.down, c.inverting, &up), name);
        EXPECT_STREQ(name, c.expected) << c.mode << " " << c.up << " " << c.down;
        EXPECT_DOUBLE_EQ(up, c.upOut) << c.mode;
    }
}

TEST(SatnogsImport, AddsTheSampleChannelsTheModesFileLacks) {
    ScratchDir dir;
    const DataPaths paths = Paths(dir);
    SatnogsImportResult result;
    ASSERT_TRUE(ImportSatnogs(Resource("samples/satnogs-transmitters.json"), paths, &result))
        << result.message;
    EXPECT_EQ(result.channelsAdded, 3);
    EXPECT_EQ(result.alreadyThere, 6);     // the bundled file has their frequencies
    EXPECT_EQ(result.satellitesAdded, 1);  // 99901 is not in the bundled modes file
    EXPECT_EQ(result.skipped, 2);          // the dead and the inactive transmitter
    // The sample file's hertz in MHz.
    const struct {
        const char* sat;
        const char* channel;
        const char* mode;
        double down;
    } expected[] = {
        {"AO-7", "Mode B beacon", "SIMP_SSB", 145.975},
        {"SAT99901", "Telemetry 9k6", "SIMP_FM", 437.1},
        {"AO-91", "Telemetry DUV", "SIMP_FM", 145.96},
    };
    for (const auto& e : expected) {
        ModeRec m{};
        ASSERT_TRUE(FindMode(paths, e.sat, e.channel, &m)) << e.sat << " " << e.channel;
        char mode[kModeNameSize];
        ModeToStr(m.commMode, mode);
        EXPECT_STREQ(mode, e.mode) << e.channel;
        EXPECT_EQ(m.upFreq, 0.0) << e.channel;
        EXPECT_NEAR(m.downFreq, e.down, 1e-6) << e.channel;
    }
    ModeRec m{};
    EXPECT_TRUE(FindMode(paths, "AO-7", "Mode B", &m)) << "the bundled channels stay";
    EXPECT_FALSE(FindMode(paths, "AO-7", "Mode B transponder", &m));
    EXPECT_FALSE(FindMode(paths, "AO-73", "BPSK telemetry", &m)) << "the bundled Telemetry";
    EXPECT_FALSE(FindMode(paths, "SO-50", "Old beacon", &m));
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
    const size_t at = text.find("145.975000");
    ASSERT_NE(at, std::string::npos);
    text.replace(at, 10, "145.976000");
    WriteText(paths.userModesFile, text);
    ASSERT_TRUE(ImportSatnogs(Resource("samples/satnogs-transmitters.json"), paths, &result));
    EXPECT_EQ(result.channelsAdded, 0);
    EXPECT_EQ(result.keptUser, 2);
    ASSERT_TRUE(FindMode(paths, "AO-7", "Mode B beacon", &m));
    EXPECT_DOUBLE_EQ(m.downFreq, 145.976);

    // An untouched imported channel follows the list when it changes.
    std::string list = ReadText(Resource("samples/satnogs-transmitters.json"));
    const std::string telemetry = "\"downlink_low\": 437100000";
    list.replace(list.find(telemetry), telemetry.size(), "\"downlink_low\": 437105000");
    WriteText(dir.file("moved.json"), list);
    ASSERT_TRUE(ImportSatnogs(dir.file("moved.json"), paths, &result));
    EXPECT_EQ(result.channelsUpdated, 1);
    ASSERT_TRUE(FindMode(paths, "SAT99901", "Telemetry 9k6", &m));
    EXPECT_DOUBLE_EQ(m.downFreq, 437.105);
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
    ScratchDir dir;
    SatnogsImportResult result;
    EXPECT_FALSE(ImportSatnogs("/dev/zero", Paths(dir), &result)) << "never read for ever";
    EXPECT_NE(result.message.find("not a regular file"), std::string::npos);
}

}  // namespace
}  // namespace veloran

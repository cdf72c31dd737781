// The modes file: names of the communication modes, the exact written
// format, the reading rules and their quirks, and the in-memory lookup that
// must answer exactly as the file reader does.

#include "data/modes.h"

#include <gtest/gtest.h>

#include <clocale>
#include <cstring>
#include <string>

#include "data/files.h"
#include "scratch.h"

namespace veloran {
namespace {

using testing::NewSatRec;
using testing::ReadText;
using testing::Resource;
using testing::ScratchDir;
using testing::WriteText;

// Reads `name` from `text` through the in-memory index.
std::unique_ptr<SatRec> ModesOf(const std::string& text, const char* name, int* count = nullptr) {
    auto rec = NewSatRec();
    InitSatRec(rec.get());
    ModesFile modes;
    modes.setText(text);
    const int n = modes.getModes(rec.get(), name);
    if (count != nullptr) *count = n;
    return rec;
}

void FillExample(SatRec* s) {
    InitSatRec(s);
    ResetModes(s);
    std::strcpy(s->name, "FO-29");
    s->numberOfActiveChannels = 3;
    const char* channels[] = {"SSB", "CW Narrow", "Beacon"};
    for (int i = 0; i < 3; ++i) {
        ModeRec& m = s->modes[i];
        std::strcpy(m.channel, channels[i]);
        m.commMode = static_cast<int16_t>(i == 0 ? 3 : (i == 1 ? 7 : 14));
        m.upFreq = 145.95 - 0.015 * i;
        m.downFreq = 435.85 + 0.0125 * i;
        m.beaconFreq = 435.795;
        m.gTone = i;
        m.gCTone = 2 * i;
        m.txVrtrUp = i == 2 ? 116.0 : 0.0;
        m.txVrtrDn = i == 2 ? 9750.0 : 0.0;
        m.beamUpWidthDegs = 30.5;
        m.beamDwnWidthDegs = 21.25;
    }
    std::strcpy(s->trackHours, "000000111111111111000000");
    std::strcpy(s->speakName, "Fuji Oscar  29");
    s->hasBVals = 1;
    s->bLatDegs = -2.5;
    s->bLonDegs = 180.25;
    s->startMA = 10;
    s->endMA = 200;
    s->enabled = 1;
    s->priority = 3;
}

void ExpectSameModes(const SatRec& a, const SatRec& b) {
    EXPECT_STREQ(a.name, b.name);
    ASSERT_EQ(a.numberOfActiveChannels, b.numberOfActiveChannels);
    for (int i = 0; i < a.numberOfActiveChannels; ++i) {
        SCOPED_TRACE(i);
        const ModeRec& x = a.modes[i];
        const ModeRec& y = b.modes[i];
        EXPECT_STREQ(x.channel, y.channel);
        EXPECT_EQ(x.commMode, y.commMode);
        EXPECT_NEAR(x.upFreq, y.upFreq, 1e-6);  // "%f": one hertz
        EXPECT_NEAR(x.downFreq, y.downFreq, 1e-6);
        EXPECT_NEAR(x.beaconFreq, y.beaconFreq, 1e-6);
        EXPECT_EQ(x.gTone, y.gTone);
        EXPECT_EQ(x.gCTone, y.gCTone);
        EXPECT_NEAR(x.txVrtrUp, y.txVrtrUp, 1e-6);
        EXPECT_NEAR(x.txVrtrDn, y.txVrtrDn, 1e-6);
        EXPECT_NEAR(x.beamUpWidthDegs, y.beamUpWidthDegs, 0.005);
        EXPECT_NEAR(x.beamDwnWidthDegs, y.beamDwnWidthDegs, 0.005);
    }
    EXPECT_STREQ(a.trackHours, b.trackHours);
    EXPECT_STREQ(a.speakName, b.speakName);
    EXPECT_EQ(a.hasBVals, b.hasBVals);
    EXPECT_NEAR(a.bLatDegs, b.bLatDegs, 1e-6);
    EXPECT_NEAR(a.bLonDegs, b.bLonDegs, 1e-6);
    EXPECT_EQ(a.startMA, b.startMA);
    EXPECT_EQ(a.endMA, b.endMA);
    EXPECT_EQ(a.enabled, b.enabled);
    EXPECT_EQ(a.priority, b.priority);
}

TEST(ModeNames, RoundTripAndUnknownValues) {
    char name[kModeNameSize];
    for (int v = 1; v <= kLastCommMode; ++v) {
        ModeToStr(v, name);
        EXPECT_EQ(StrToMode(name), v) << name;
    }
    ModeToStr(-1, name);
    EXPECT_STREQ(name, "UNKNOWN");
    ModeToStr(18, name);
    EXPECT_STREQ(name, "UNKNOWN");
    ModeToStr(0, name);
    EXPECT_STREQ(name, "UNKNOWN");
    EXPECT_EQ(StrToMode("UNKNOWN"), 0);
}

TEST(ModeNames, TheLongerNamesAreTestedFirst) {
    EXPECT_EQ(StrToMode("JA_SSB"), 3);
    EXPECT_EQ(StrToMode("JA_CW"), 7);
    EXPECT_EQ(StrToMode("xA_SSBy"), 5);
    EXPECT_EQ(StrToMode("FM"), 0);
    EXPECT_EQ(StrToMode("ja_ssb"), 0);  // case-sensitive
    EXPECT_EQ(StrToMode(nullptr), 0);
}

TEST(ModesWriter, WritesTheExactFormat) {
    auto s = NewSatRec();
    InitSatRec(s.get());
    ResetModes(s.get());
    std::strcpy(s->name, "SO-50");
    s->numberOfActiveChannels = 2;
    std::strcpy(s->modes[0].channel, "FM");
    s->modes[0].commMode = 2;
    s->modes[0].upFreq = 145.85;
    s->modes[0].downFreq = 436.795;
    s->modes[0].gTone = 1;
    std::strcpy(s->modes[1].channel, "Arm");
    s->enabled = 1;
    ScratchDir dir;
    ASSERT_TRUE(WriteModeFile(dir.file("m.txt"), s.get(), 1, *NewSatRec(), *NewSatRec()));
    EXPECT_EQ(ReadText(dir.file("m.txt")),
              "Satellite:\tSO-50\n"
              "Channel: \tFM        \tArm       \n"
              "Uplink:  \t145.850000\t0.000000\n"
              "Downlink:\t436.795000\t0.000000\n"
              "CMode:   \tJ_FM      \tUNKNOWN   \n"
              "Beacon:  \t0.000000\t0.000000\n"
              "Tone:    \t1         \t0         \n"
              "CTone:   \t0         \t0         \n"
              "TxVrtrUp: \t0.000000\t0.000000\n"
              "TxVrtrDn: \t0.000000\t0.000000\n"
              "BeamUp:   \t0.00      \t0.00      \n"
              "BeamDwn:  \t0.00      \t0.00      \n"
              "TrackHours:\t111111111111111111111111\n"
              "Enabled:\t1\n"
              "Priority:\t5\n"
              "\n");
}

TEST(ModesWriter, OptionalLinesAndSatellitesWithoutModes) {
    auto s = NewSatRec();
    FillExample(s.get());
    auto empty = NewSatRec();
    InitSatRec(empty.get());
    std::strcpy(empty->name, "AO-7");
    ScratchDir dir;
    ASSERT_TRUE(WriteModeFile(dir.file("m.txt"), s.get(), 1, *empty, *empty));
    const std::string text = ReadText(dir.file("m.txt"));
    EXPECT_NE(text.find("SpeakName:\tFuji Oscar  29\n"), std::string::npos);
    EXPECT_NE(text.find("BLat:    \t-2.500000\nBLon:    \t180.250000\n"), std::string::npos);
    EXPECT_NE(text.find("StartMA: \t10\nEndMA:   \t200\nEnabled:\t1\nPriority:\t3\n\n"),
              std::string::npos);
    EXPECT_EQ(text.find("AO-7"), std::string::npos);

    s->speakName[0] = '\0';
    s->hasBVals = 0;
    s->startMA = 0;
    ASSERT_TRUE(WriteModeFile(dir.file("m.txt"), s.get(), 1, *empty, *empty));
    const std::string bare = ReadText(dir.file("m.txt"));
    EXPECT_EQ(bare.find("SpeakName:"), std::string::npos);
    EXPECT_EQ(bare.find("BLat:"), std::string::npos);
    EXPECT_EQ(bare.find("StartMA:"), std::string::npos);
}

TEST(ModesFileRoundTrip, WriteThenReadGivesTheSameRecords) {
    auto s = NewSatRec();
    FillExample(s.get());
    auto between = NewSatRec();
    FillExample(between.get());
    std::strcpy(between->name, kBetweenPassesName);
    between->numberOfActiveChannels = 1;
    ScratchDir dir;
    ASSERT_TRUE(WriteModeFile(dir.file("m.txt"), s.get(), 1, *between, *NewSatRec()));

    ModesFile modes;
    ASSERT_TRUE(modes.load(dir.file("m.txt")));
    auto back = NewSatRec();
    EXPECT_EQ(modes.getModes(back.get(), "FO-29"), 3);
    ExpectSameModes(*s, *back);
    EXPECT_EQ(modes.getModes(back.get(), kBetweenPassesName), 1);
    ExpectSameModes(*between, *back);

    // The file reader agrees.
    FILE* f = std::fopen(dir.file("m.txt").c_str(), "r");
    auto viaFile = NewSatRec();
    EXPECT_EQ(GetModes(viaFile.get(), f, "FO-29"), 3);
    std::fclose(f);
    ExpectSameModes(*s, *viaFile);
}

TEST(ModesFileRoundTrip, ManyModesAndTheLimitOfPiecesPerLine) {
    auto s = NewSatRec();
    FillExample(s.get());
    for (int i = 0; i < kMaxModes; ++i) {
        std::snprintf(s->modes[i].channel, sizeof s->modes[i].channel, "Ch%d", i);
        s->modes[i].upFreq = 100.0 + i;
        s->modes[i].commMode = 1;
    }
    ScratchDir dir;
    s->numberOfActiveChannels = kMaxModes - 1;
    ASSERT_TRUE(WriteModeFile(dir.file("m.txt"), s.get(), 1, *NewSatRec(), *NewSatRec()));
    auto back = ModesOf(ReadText(dir.file("m.txt")), "FO-29");
    ExpectSameModes(*s, *back);
    // With all 128 modes written the blank piece before the first tab takes
    // one of the 128 pieces looked at, so the last mode is not read back.
    s->numberOfActiveChannels = kMaxModes;
    ASSERT_TRUE(WriteModeFile(dir.file("m.txt"), s.get(), 1, *NewSatRec(), *NewSatRec()));
    int count = 0;
    auto full = ModesOf(ReadText(dir.file("m.txt")), "FO-29", &count);
    EXPECT_EQ(count, kMaxModes - 1);
    EXPECT_DOUBLE_EQ(full->modes[kMaxModes - 2].upFreq, 100.0 + kMaxModes - 2);
}

TEST(ModesReader, DefaultsForASatelliteWithoutABlock) {
    int count = -1;
    auto s = ModesOf("Satellite:\tAO-7\nChannel:\tSSB\n\n", "AO-71", &count);
    EXPECT_EQ(count, 0);
    EXPECT_EQ(s->enabled, 0);
    EXPECT_EQ(s->priority, 5);
    EXPECT_STREQ(s->trackHours, "111111111111111111111111");
    EXPECT_EQ(s->numberOfActiveChannels, 0);
    EXPECT_EQ(s->modes[0].commMode, -1);
    EXPECT_EQ(s->modes[kMaxModes - 1].commMode, -1);
}

TEST(ModesReader, MissingValuesAreZeroAndBlankPiecesTakeNoSlot) {
    auto s = ModesOf(
        "Satellite:\tXO-1\n"
        "Channel:\tA\tB\tC\n"
        "Uplink:\t145.1\t145.2\n"
        "Downlink:\t435.1\t-\t\t435.3\n"
        "CMode:\tJ_FM\n"
        "Tone:\t88.9\t-3.7\t1e300\n",
        "XO-1");
    EXPECT_EQ(s->numberOfActiveChannels, 3);
    EXPECT_EQ(s->enabled, 1);
    EXPECT_DOUBLE_EQ(s->modes[1].upFreq, 145.2);
    EXPECT_DOUBLE_EQ(s->modes[2].upFreq, 0.0);
    // "-" is blank: 435.3 moves up to the second mode.
    EXPECT_DOUBLE_EQ(s->modes[1].downFreq, 435.3);
    EXPECT_DOUBLE_EQ(s->modes[2].downFreq, 0.0);
    EXPECT_EQ(s->modes[0].commMode, 2);
    EXPECT_EQ(s->modes[1].commMode, -1);  // no piece: written back as UNKNOWN
    EXPECT_EQ(s->modes[0].gTone, 88);     // truncated
    EXPECT_EQ(s->modes[1].gTone, -3);
    EXPECT_EQ(s->modes[2].gTone, 0);  // beyond the integer range
}

TEST(ModesReader, TheFirstBlockWinsAndNamesMatchExactly) {
    const std::string text =
        "Satellite:\tAO-7\nChannel:\tFirst\n\n"
        "Satellite:\tAO-71\nChannel:\tOther\n\n"
        "Satellite:\tAO-7\nChannel:\tSecond\n\n";
    EXPECT_STREQ(ModesOf(text, "AO-7")->modes[0].channel, "First");
    EXPECT_STREQ(ModesOf(text, "AO-71")->modes[0].channel, "Other");
    EXPECT_EQ(ModesOf(text, "ao-7")->enabled, 0);
}

TEST(ModesReader, LinesOutOfOrderAreLost) {
    auto s = ModesOf(
        "Satellite:\tXO-1\n"
        "Channel:\tA\n"
        "Downlink:\t435.1\n"
        "Uplink:\t145.1\n"
        "Enabled:\t1\n"
        "Priority:\t2\n",
        "XO-1");
    EXPECT_DOUBLE_EQ(s->modes[0].downFreq, 435.1);
    EXPECT_DOUBLE_EQ(s->modes[0].upFreq, 0.0);  // came too late
    // Everything after the stray line is skipped until the next block.
    EXPECT_EQ(s->priority, 5);
}

TEST(ModesReader, PerSatelliteLines) {
    auto s = ModesOf(
        "Satellite:\tXO-1\r\n"
        "TrackHours:\t000111  ignored\r\n"
        "SpeakName:\t   X  O   one\t\r\n"
        "BLon:    \t12.5\n"
        "StartMA: \t-5\n"
        "EndMA:   \t99999999999\n"
        "Enabled:\t0\n"
        "Priority:\t65537\n",
        "XO-1");
    EXPECT_STREQ(s->trackHours, "000111");
    EXPECT_STREQ(s->speakName, "X  O   one");
    EXPECT_EQ(s->hasBVals, 1);  // BLon alone sets it
    EXPECT_DOUBLE_EQ(s->bLatDegs, 0.0);
    EXPECT_DOUBLE_EQ(s->bLonDegs, 12.5);
    EXPECT_EQ(s->startMA, -5);
    EXPECT_EQ(s->endMA, 2147483647);
    EXPECT_EQ(s->enabled, 0);   // found, but disabled by its line
    EXPECT_EQ(s->priority, 1);  // kept in 16 bits
    EXPECT_EQ(s->numberOfActiveChannels, 0);
}

TEST(ModesReader, LongTextIsCutToTheFields) {
    const std::string longName(300, 'N');
    const std::string longWord(400, '1');  // within the 512 characters read
    auto s = ModesOf("Satellite:\tXO-1\nChannel:\t" + longName + "\tB\n" + "TrackHours:\t" +
                         longWord + "\nSpeakName:\t" + longName + "\n",
                     "XO-1");
    EXPECT_EQ(std::strlen(s->modes[0].channel), sizeof s->modes[0].channel - 1);
    EXPECT_STREQ(s->modes[1].channel, "B");
    EXPECT_EQ(std::strlen(s->trackHours), sizeof s->trackHours - 1);
    EXPECT_EQ(std::strlen(s->speakName), sizeof s->speakName - 1);
}

TEST(ModesReader, MemoryIndexAnswersExactlyAsTheFileReader) {
    std::string text = testing::ReadText(Resource("mode.dat"));
    text +=
        "Satellite:\tAO-7\nChannel:\tShadowed\n\n"
        "Satellite:XO-2\nChannel:\tA\tB\nUplink:\t1\t-\t2\nCMode:\tB_FMJA_SSB\nBeacon:\t7\n"
        "Satellite: \t XO-3 trailing words\nDownlink:\t9\nChannel:\tLate\n"
        "Satellite:\n\nSatellite:\tXO-4";
    ScratchDir dir;
    WriteText(dir.file("m.txt"), text);
    ModesFile modes;
    ASSERT_TRUE(modes.load(dir.file("m.txt")));
    FILE* f = std::fopen(dir.file("m.txt").c_str(), "r");
    for (const char* name : {"AO-7", "FO-29", "ISS", "QO-100", "BetweenPasses", "OnExit", "XO-2",
                             "XO-3", "XO-4", "Moon", "", "AO"}) {
        SCOPED_TRACE(name);
        auto fromMemory = NewSatRec();
        auto fromFile = NewSatRec();
        const int a = modes.getModes(fromMemory.get(), name);
        const int b = GetModes(fromFile.get(), f, name);
        EXPECT_EQ(a, b);
        EXPECT_EQ(std::memcmp(fromMemory.get(), fromFile.get(), sizeof(SatRec)), 0);
    }
    std::fclose(f);
}

TEST(ModesFileRoundTrip, BlocksOfOtherSatellitesAreKeptWhole) {
    ModesFile modes;
    modes.setText(
        "Satellite:\tAO-7\nChannel:\tA\n\nSatellite:\tRS-44\nChannel:\tB\nEnabled:\t0\n\n"
        "Satellite:\tAO-7\nChannel:\tShadowed\n\nSatellite:\tXO-9\nChannel:\tC");
    EXPECT_EQ(modes.blocksNotIn({"AO-7"}),
              "Satellite:\tRS-44\nChannel:\tB\nEnabled:\t0\n\nSatellite:\tXO-9\nChannel:\tC\n\n");
    EXPECT_EQ(modes.blocksNotIn({"AO-7", "RS-44", "XO-9"}), "");

    auto s = NewSatRec();
    FillExample(s.get());
    ScratchDir dir;
    ASSERT_TRUE(WriteModeFile(dir.file("m.txt"), s.get(), 1, *NewSatRec(), *NewSatRec(),
                              modes.blocksNotIn({"AO-7"})));
    ModesFile back;
    ASSERT_TRUE(back.load(dir.file("m.txt")));
    auto rs44 = NewSatRec();
    EXPECT_EQ(back.getModes(rs44.get(), "RS-44"), 1);
    EXPECT_STREQ(rs44->modes[0].channel, "B");
    EXPECT_EQ(rs44->enabled, 0);
    EXPECT_EQ(back.getModes(rs44.get(), "FO-29"), 3);
}

// The modes editor's rewrite of blocks outside the table: one changed in
// place, one left out, one added at the end, the rest kept as they were.
TEST(ModesFileRoundTrip, BlocksOutsideTheTableAreReplacedDroppedOrAdded) {
    ModesFile modes;
    modes.setText(
        "Satellite:\tAO-7\nChannel:\tA\n\nSatellite:\tRS-44\nChannel:\tB\n\n"
        "Satellite:\tAO-7\nChannel:\tShadowed\n\nSatellite:\tXO-9\nChannel:\tC\n\n"
        "Satellite:\tIO-86\nChannel:\tD\n\n");
    EXPECT_EQ(modes.names(), (std::vector<std::string>{"AO-7", "RS-44", "XO-9", "IO-86"}));
    EXPECT_EQ(modes.blocksOutside({"AO-7"}, {}, {}), modes.blocksNotIn({"AO-7"}));

    std::vector<SatRec> replaced(2);
    NewModesBlock(&replaced[0], "XO-9");
    replaced[0].modes[0].downFreq = 435.1;
    NewModesBlock(&replaced[1], "XO-10");
    const std::string text = modes.blocksOutside({"AO-7"}, replaced, {"IO-86"});
    EXPECT_EQ(text, "Satellite:\tRS-44\nChannel:\tB\n\n" + ModeBlockText(replaced[0]) +
                        ModeBlockText(replaced[1]));

    ModesFile back;
    back.setText(text);
    EXPECT_EQ(back.names(), (std::vector<std::string>{"RS-44", "XO-9", "XO-10"}));
    auto xo10 = NewSatRec();
    ASSERT_EQ(back.getModes(xo10.get(), "XO-10"), 1);
    EXPECT_STREQ(xo10->modes[0].channel, kNewModeName);
    EXPECT_EQ(xo10->modes[0].commMode, 0);
    EXPECT_EQ(xo10->enabled, 1);
    EXPECT_EQ(xo10->priority, 5);
    EXPECT_STREQ(xo10->trackHours, "111111111111111111111111");

    // A replacing record without modes writes no block: it is gone.
    replaced[0].numberOfActiveChannels = 0;
    EXPECT_EQ(modes.blocksOutside({"AO-7", "RS-44", "IO-86"}, replaced, {}),
              ModeBlockText(replaced[1]));
}

TEST(ModesFileRoundTrip, OnlyOneWordNamesKeyABlock) {
    for (const char* good : {"AO-7", "XO-999", "Tevel-3", "\xc3\x85SAT"})
        EXPECT_TRUE(IsModesBlockName(good)) << good;
    for (const std::string& bad : {std::string(), std::string("AO 7"), std::string("AO-7\t"),
                                   std::string("\nAO"), std::string(sizeof(SatRec::name), 'X')})
        EXPECT_FALSE(IsModesBlockName(bad)) << bad;
}

TEST(ModesReader, HostileFilesLoadWithoutOverflow) {
    std::string garbage;
    for (int i = 0; i < 200000; ++i) garbage += static_cast<char>((i * 7919) % 256);
    std::string hostile = "Satellite:\tXO-1\nChannel:" + std::string(100000, '\t') +
                          "\nUplink:" + std::string(100000, 'x') + "\nSatellite:\t" +
                          std::string(5000, 'Y') + "\n" + garbage;
    for (const std::string& text : {garbage, hostile}) {
        int count = -1;
        auto s = ModesOf(text, "XO-1", &count);
        EXPECT_GE(count, 0);
        EXPECT_LE(count, kMaxModes);
    }
}

TEST(ModesFileRoundTrip, NumbersUseADecimalPointInAnyLocale) {
    const char* previous = std::setlocale(LC_ALL, nullptr);
    const std::string saved = previous != nullptr ? previous : "C";
    if (std::setlocale(LC_ALL, "de_DE.UTF-8") == nullptr)
        GTEST_SKIP() << "de_DE.UTF-8 is not installed";
    char probe[32];
    std::snprintf(probe, sizeof probe, "%.1f", 1.5);
    EXPECT_STREQ(probe, "1,5");  // the locale is really in force
    auto s = NewSatRec();
    FillExample(s.get());
    ScratchDir dir;
    ASSERT_TRUE(WriteModeFile(dir.file("m.txt"), s.get(), 1, *NewSatRec(), *NewSatRec()));
    const std::string text = ReadText(dir.file("m.txt"));
    auto back = ModesOf(text, "FO-29");
    std::setlocale(LC_ALL, saved.c_str());
    EXPECT_NE(text.find("145.950000"), std::string::npos);
    ExpectSameModes(*s, *back);
}

}  // namespace
}  // namespace veloran

// Contacts from the live state: the frequencies at the satellite in each way
// the radio can be tuned, the mode, the country, and the duplicate check.

#include "logbook/livecontact.h"

#include <gtest/gtest.h>

#include <cstring>

#include "../data/scratch.h"
#include "logbook/adif.h"

namespace veloran {
namespace {

ModeRec Mode(const char* channel, int16_t commMode, double up, double down) {
    ModeRec m{};
    std::strncpy(m.channel, channel, sizeof m.channel - 1);
    m.commMode = commMode;
    m.upFreq = up;
    m.downFreq = down;
    return m;
}

TEST(LiveContact, FrequenciesAreThoseAtTheSatellite) {
    // The mode's frequencies plus the trims, never what the radio was set to:
    // transverter offsets and Doppler stay out, the beacon changes nothing.
    ModeRec fm = Mode("FM", 2, 145.85, 436.795);
    ModeRec qo100 = Mode("NB", 16, 2400.1, 10489.6);
    qo100.txVrtrUp = 2256.0;
    qo100.txVrtrDn = 10345.0;
    ModeRec ao7 = Mode("Mode B", 4, 432.15, 145.95);
    ao7.TXOffset = 0.001;
    ao7.RXOffset = -0.002;
    ao7.BEOffset = 0.0005;
    ao7.beaconFreq = 145.9775;
    ModeRec beaconOnly = Mode("Beacon", 17, 0, 0);
    beaconOnly.beaconFreq = 435.35;
    beaconOnly.BEOffset = -0.0004;
    const struct {
        const ModeRec* mode;
        double up, down;
        const char* adifMode;
    } cases[] = {
        {&fm, 145.85, 436.795, "FM"},
        {&qo100, 2400.1, 10489.6, "SSB"},
        {&ao7, 432.151, 145.948, "SSB"},
        {&beaconOnly, 0, 435.3496, ""},
    };
    for (const auto& c : cases) {
        LiveContactState state;
        state.satellite = "QO-100";
        FillMode(c.mode, &state);
        state.nowUTC = 3900000000u;
        state.myCall = "ve3xyz";
        state.myGrid = "FN03gr";
        ContactEntry entry{"dl1abc", "59", "55", "JO62", "", "", ""};
        ContactRec out;
        ASSERT_EQ(MakeContact(&state, &entry, nullptr, &out), 1);
        EXPECT_DOUBLE_EQ(out.uplinkMHz, c.up) << c.mode->channel;
        EXPECT_DOUBLE_EQ(out.downlinkMHz, c.down) << c.mode->channel;
        EXPECT_EQ(out.mode, c.adifMode) << c.mode->channel;
        EXPECT_EQ(out.transponder, c.mode->channel);
        EXPECT_EQ(out.call, "DL1ABC");
        EXPECT_EQ(out.myCall, "VE3XYZ");
        EXPECT_EQ(out.startUTC, 3900000000u);
    }
    EXPECT_EQ(AdifBand(2400.1), "13cm");  // the transverter station logs 13 cm, not 2 m
    ContactEntry empty;
    ContactRec out;
    LiveContactState state;
    EXPECT_EQ(MakeContact(&state, &empty, nullptr, &out), 0);
}

TEST(LiveContact, StationFromTheSiteRecord) {
    SiteRec site{};
    std::strcpy(site.call_sign, "w1aw");
    site.siteLatDegs = 41.7147;   // W1AW, Newington CT: FN31pr (ARRL)
    site.siteLongDegs = 72.7272;  // west positive
    LiveContactState state;
    FillStation(&site, &state);
    EXPECT_EQ(state.myCall, "W1AW");
    EXPECT_EQ(state.myGrid, "FN31pr");
}

TEST(LiveContact, CountryFromTheTable) {
    DxccTable table;
    ASSERT_EQ(LoadDxccTable(testing::Resource(kDxccFileName), &table, nullptr), 1);
    LiveContactState state;
    ContactEntry entry{"kh6/w1aw", "", "", "", "", "", ""};
    ContactRec out;
    ASSERT_EQ(MakeContact(&state, &entry, &table, &out), 1);
    EXPECT_EQ(out.country, "Hawaii");
    EXPECT_EQ(out.dxcc, 110);
}

TEST(LiveContact, DuplicatesAreSameCallSatelliteAndPass) {
    const uint32_t aos = 3900000000u, los = aos + 600;
    std::vector<ContactRec> log(4);
    log[0].call = "G4ABC", log[0].satellite = "SO-50", log[0].startUTC = aos - 3600;  // last pass
    log[1].call = "G4ABC", log[1].satellite = "AO-91", log[1].startUTC = aos + 60;
    log[2].call = "G4ABC/P", log[2].satellite = "SO-50", log[2].startUTC = aos + 120;
    log[3].call = "DL1ABC", log[3].satellite = "SO-50", log[3].startUTC = aos + 30;
    log[2].id = 7;
    const struct {
        const char* call;
        const char* satellite;
        int64_t id;
        int duplicate;
    } cases[] = {
        {"g4abc", "SO-50", 0, 2},   // the portable call is the same station
        {"G4ABC", "so-50", 7, -1},  // the contact itself, being edited
        {"G4ABC", "FO-29", 0, -1}, {"W1AW", "SO-50", 0, -1}, {"DL1ABC", "SO-50", 0, 3},
    };
    for (const auto& c : cases) {
        ContactRec candidate;
        candidate.call = c.call;
        candidate.satellite = c.satellite;
        candidate.id = c.id;
        EXPECT_EQ(FindDuplicate(log, &candidate, aos, los), c.duplicate) << c.call;
    }

    // The same check on the saved log, from the pass's start to now.
    testing::ScratchDir dir;
    LogStore store;
    ASSERT_EQ(OpenLogStore(LogbookPath(dir.path()), &store), 1);
    ASSERT_EQ(AddContacts(&store, &log), 1);
    ContactRec now = log[2];
    now.id = 0;
    now.startUTC = aos + 300;
    ContactRec earlier;
    EXPECT_EQ(CheckDuplicate(&store, &now, aos, &earlier), 1);
    EXPECT_EQ(earlier.call, "G4ABC/P");
    now.startUTC = aos + 119;  // before the other contact: nothing earlier in this pass
    EXPECT_EQ(CheckDuplicate(&store, &now, aos, &earlier), 0);
    CloseLogStore(&store);
}

}  // namespace
}  // namespace veloran

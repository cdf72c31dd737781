// Choosing the main satellite, the rotation of the other one, and the main
// satellite's rise, set and warnings.

#include <gtest/gtest.h>

#include <cstring>

#include "data/settings.h"
#include "fakes.h"
#include "tests/support/element_sets.h"

namespace veloran {
namespace {

using testing::ControllerRig;
using testing::WriteText;

// A rig with n satellites S0.. loaded, every one a candidate: tracked,
// enabled, with a predicted pass, one mode.
struct SelectionRig : ControllerRig {
    explicit SelectionRig(int n) {
        WriteText(paths.keplerFile, testing::ElementSets(n));
        app->loadKepsAndModes();
        for (int i = 0; i < n; ++i) {
            edit(i, [](SatRec* s) {
                s->tracked = 1;
                s->enabled = 1;
                s->satActivePass = 1;
                s->numberOfActiveChannels = 1;
                std::strcpy(s->modes[0].channel, "FM");
                s->modes[0].upFreq = 145.9;
                s->modes[0].downFreq = 435.8;
                s->modes[0].beaconFreq = 435.79;
                s->selectedModeIndex = 0;
                s->maxElevation = 45.0;
            });
        }
    }
    template <typename F>
    void edit(int index, F change) {
        auto rec = sat(index);
        change(rec.get());
        app->WriteSatelliteRecord(index, *rec);
    }
    void candidate(int index, uint32_t secondsToAOS, int16_t priority) {
        edit(index, [&](SatRec* s) {
            s->secondsToAOS = secondsToAOS;
            s->priority = priority;
        });
    }
    void speech(bool on, bool sounds = false, bool gateway = false) {
        SiteRec site;
        app->GetSiteRec(&site);
        site.wants_speech = on;
        site.wants_sounds = sounds;
        site.gateway_enabled = gateway;
        app->SetSiteRec(&site);
    }
    const std::vector<Announcement>& queued() const { return announcer.items; }
};

TEST(Selection, EarliestAOSWinsThenLowerPriorityAgainstEveryPriorityTakenSoFar) {
    SelectionRig rig(6);
    for (int i = 0; i < 6; ++i) rig.edit(i, [](SatRec* s) { s->tracked = 0; });
    rig.candidate(0, 600, 2);
    rig.candidate(1, 300, 8);  // earlier: taken although its priority is worse
    rig.candidate(2, 300, 5);  // same AOS, but 5 does not beat the 2 accepted before
    for (int i = 0; i < 3; ++i) rig.edit(i, [](SatRec* s) { s->tracked = 1; });
    EXPECT_TRUE(rig.app->findNextSatInList());
    EXPECT_EQ(rig.app->mainSatNum(), 2);

    rig.candidate(3, 300, 1);  // same AOS and the best priority yet
    rig.edit(3, [](SatRec* s) { s->tracked = 1; });
    EXPECT_TRUE(rig.app->findNextSatInList());
    EXPECT_EQ(rig.app->mainSatNum(), 4);
    EXPECT_FALSE(rig.app->findNextSatInList());  // no change the second time
}

TEST(Selection, NoCandidateLeavesTheMainSatellite) {
    SelectionRig rig(4);
    rig.app->setMainSatNum(3);
    rig.edit(0, [](SatRec* s) { s->tracked = 0; });
    rig.edit(1, [](SatRec* s) { s->enabled = 0; });
    rig.edit(2, [](SatRec* s) { s->satActivePass = 0; });
    rig.edit(3, [](SatRec* s) { s->satActivePass = 0; });
    rig.app->findNextSatInList();
    EXPECT_EQ(rig.app->mainSatNum(), 3);
    // A rise exactly two days away still ties with the limit and is taken
    // on its priority.
    rig.candidate(3, 172800, 1);
    rig.edit(3, [](SatRec* s) { s->satActivePass = 1; });
    rig.app->findNextSatInList();
    EXPECT_EQ(rig.app->mainSatNum(), 4);
}

TEST(Selection, ASwitchSavesTheOldSatellitesTrims) {
    SelectionRig rig(3);
    rig.candidate(0, 900, 5);
    rig.candidate(1, 1800, 5);
    rig.candidate(2, 2700, 5);
    ASSERT_TRUE(rig.app->findNextSatInList());
    EXPECT_FALSE(rig.defaults.contains(TweaksKey("S0")));
    rig.candidate(1, 100, 5);
    ASSERT_TRUE(rig.app->findNextSatInList());
    EXPECT_EQ(rig.app->mainSatNum(), 2);
    EXPECT_TRUE(rig.defaults.contains(TweaksKey("S0")));
}

TEST(Selection, RotationSkipsTheMainSatelliteAndNeverReachesTheLastEntry) {
    SelectionRig rig(4);  // S0..S3, then the Moon and the Sun: 6 entries
    for (int i = 0; i < rig.app->GetTotalSats(); ++i)
        rig.edit(i, [](SatRec* s) { s->tracked = 1; });
    rig.app->setMainSatNum(2);
    rig.app->setCycleSatNum(1);
    std::vector<int> visited;
    for (int k = 0; k < 12; ++k) {
        ASSERT_TRUE(rig.app->nextSatelliteInDB());
        visited.push_back(rig.app->cycleSatNum());
    }
    for (int n : visited) {
        EXPECT_NE(n, 2);
        EXPECT_NE(n, rig.app->GetTotalSats());
    }
    EXPECT_EQ(std::vector<int>(visited.begin(), visited.begin() + 5),
              (std::vector<int>{3, 4, 5, 1, 3}));

    // Only the main satellite tracked: nothing else to refresh.
    for (int i = 0; i < rig.app->GetTotalSats(); ++i)
        rig.edit(i, [](SatRec* s) { s->tracked = 0; });
    rig.edit(1, [](SatRec* s) { s->tracked = 1; });
    EXPECT_FALSE(rig.app->nextSatelliteInDB());
}

TEST(Visibility, EachTimedWarningIsSpokenOnceWithItsExactSentence) {
    SelectionRig rig(1);
    rig.speech(true);
    rig.edit(0, [](SatRec* s) { s->elevationRads = -0.2; });
    for (uint32_t s : {3601u, 3600u, 3600u, 3599u}) {
        rig.edit(0, [&](SatRec* r) { r->secondsToAOS = s; });
        rig.app->CheckVisibility();
    }
    ASSERT_EQ(rig.queued().size(), 1u);
    EXPECT_EQ(rig.queued()[0].text,
              "S0 will be visible in 1 hour,, with a maximum elevation of 45.0 degrees, and an "
              "uplink frequency "
              "of 145.90 mhz.");
    EXPECT_EQ(rig.queued()[0].sound, Announcement::kAnnounce);
    EXPECT_FALSE(rig.queued()[0].transmit);

    // Over the air when the gateway is on, and upper side band named.
    rig.speech(true, false, true);
    rig.edit(0, [](SatRec* r) {
        r->secondsToAOS = 300;
        r->modes[0].commMode = 17;
    });
    rig.app->CheckVisibility();
    ASSERT_EQ(rig.queued().size(), 2u);
    EXPECT_EQ(rig.queued()[1].text,
              "S0 will be visible in 5 minutes,, with a maximum elevation of 45.0 degrees, and an "
              "uplink frequency "
              "of 145.90 mhz, upper side band.");
    EXPECT_TRUE(rig.queued()[1].transmit);
    EXPECT_TRUE(rig.queued()[1].waitForCOR);
}

TEST(Visibility, OneMinuteBeforeAOSTheRotorChimesAndTurns) {
    SelectionRig rig(1);
    rig.speech(false, true);
    rig.edit(0, [](SatRec* r) {
        r->elevationRads = -0.05;
        r->secondsToAOS = 61;
    });
    rig.app->CheckVisibility();
    EXPECT_TRUE(rig.queued().empty());
    rig.edit(0, [](SatRec* r) { r->secondsToAOS = 60; });
    rig.app->CheckVisibility();
    ASSERT_EQ(rig.queued().size(), 1u);
    EXPECT_EQ(rig.queued()[0].text, "");
    EXPECT_EQ(rig.queued()[0].sound, Announcement::kRotor);
}

TEST(Visibility, RiseShiftsTheFrequenciesAndSetZeroesThem) {
    SelectionRig rig(1);
    rig.speech(true);
    rig.edit(0, [](SatRec* r) {
        r->elevationRads = 0.1;
        r->elevationDegs = 5.7;
        r->satVelocity = 6.5;
    });
    rig.app->CheckVisibility();
    EXPECT_TRUE(rig.sat(0)->AOS);
    ASSERT_GE(rig.queued().size(), 1u);
    EXPECT_EQ(rig.queued()[0].text, "S0 is visible");
    EXPECT_EQ(rig.queued()[0].sound, Announcement::kAOS);
    EXPECT_TRUE(rig.queued()[0].transmit);  // even with the gateway off
    // The shift uses 299792.5 km/s.
    EXPECT_DOUBLE_EQ(rig.app->vfo().dopplerTX, 145.9 * 6.5 / 299792.5);
    EXPECT_DOUBLE_EQ(rig.app->vfo().dopplerRX, 435.8 * 6.5 / 299792.5);
    EXPECT_DOUBLE_EQ(rig.app->vfo().dopplerBE, 435.79 * 6.5 / 299792.5);
    EXPECT_DOUBLE_EQ(rig.sat(0)->currrentDownlink, 435.8 + 435.8 * 6.5 / 299792.5);

    const size_t before = rig.queued().size();
    rig.edit(0, [](SatRec* r) { r->elevationRads = -0.01; });
    rig.app->CheckVisibility();
    EXPECT_FALSE(rig.sat(0)->AOS);
    ASSERT_EQ(rig.queued().size(), before + 1);
    EXPECT_EQ(rig.queued().back().text, "S0 is no longer visible");
    EXPECT_EQ(rig.queued().back().sound, Announcement::kLOS);
    EXPECT_FALSE(rig.queued().back().transmit);
    EXPECT_EQ(rig.app->vfo().dopplerTX, 0.0);
    EXPECT_EQ(rig.app->vfo().dopplerRX, 0.0);
    EXPECT_EQ(rig.sat(0)->currrentDownlink, 435.8);
}

TEST(Visibility, ElevationIsCalledOutEveryThirdClockMinuteOnlyOffTheAir) {
    SelectionRig rig(1);
    rig.speech(true);
    rig.edit(0, [](SatRec* r) {
        r->AOS = 1;
        r->elevationRads = 0.3;
        r->elevationDegs = 17.26;
        r->elevationRising = 1;
    });
    rig.clock.now = testing::Seconds(2026, 11, 21, 12, 3, 0);
    rig.app->CheckVisibility();
    rig.app->CheckVisibility();  // the same minute: once
    rig.clock.now = testing::Seconds(2026, 11, 21, 12, 4, 0);
    rig.app->CheckVisibility();  // not a multiple of three
    rig.clock.now = testing::Seconds(2026, 11, 21, 12, 6, 0);
    rig.edit(0, [](SatRec* r) { r->elevationRising = 0; });
    rig.app->CheckVisibility();
    ASSERT_EQ(rig.queued().size(), 2u);
    EXPECT_EQ(rig.queued()[0].text, "S0 is 17.3 degrees, rising");
    EXPECT_EQ(rig.queued()[1].text, "S0 is 17.3 degrees, descending");
    EXPECT_FALSE(rig.queued()[1].transmit);

    rig.speech(true, false, true);  // the gateway on: never over the radio
    rig.clock.now = testing::Seconds(2026, 11, 21, 12, 9, 0);
    rig.app->CheckVisibility();
    EXPECT_EQ(rig.queued().size(), 2u);
}

TEST(Announcing, NextSatelliteSentenceDependsOnTheTrackListAndTheSky) {
    SelectionRig rig(1);
    rig.speech(true, false, true);
    rig.edit(0, [](SatRec* r) {
        r->secondsToAOS = 3900;
        std::strcpy(r->speakName, "Oscar zero");
    });
    rig.app->NextSatelliteAnnouncement();
    rig.app->setTrackList(true);
    rig.app->NextSatelliteAnnouncement();
    rig.edit(0, [](SatRec* r) { r->AOS = 1; });
    rig.app->NextSatelliteAnnouncement();
    ASSERT_EQ(rig.queued().size(), 4u);
    EXPECT_EQ(rig.queued()[0].text,
              "Oscar zero will be visible in 1 hour, and 5 minutes, with a maximum elevation of "
              "45.0 degrees, and "
              "an uplink frequency of 145.90 mhz.");
    EXPECT_TRUE(rig.queued()[0].transmit);
    EXPECT_TRUE(rig.queued()[0].waitForCOR);
    EXPECT_EQ(rig.queued()[1].text, "track list enabled");
    EXPECT_EQ(
        rig.queued()[2].text.rfind("Oscar zero is the next Satellite, and will be visible in ", 0),
        0u);
    EXPECT_EQ(rig.queued()[3].text, "Oscar zero is visible.");
}

TEST(Announcing, SpeechSwitchAnnouncesItselfAndIsStored) {
    SelectionRig rig(1);
    rig.speech(false);
    rig.app->speechChanged();
    ASSERT_EQ(rig.queued().size(), 1u);
    EXPECT_EQ(rig.queued()[0].text, "Speech enabled.");
    EXPECT_TRUE(rig.defaults.boolForKey(prefkeys::kSpeech));
    rig.app->speechChanged();
    EXPECT_EQ(rig.queued().size(), 1u);
    EXPECT_FALSE(rig.defaults.boolForKey(prefkeys::kSpeech));
}

TEST(Announcing, SpokenNameFallsBackToTheCatalogueName) {
    auto rec = testing::NewSatRec();
    std::strcpy(rec->name, "AO-7");
    EXPECT_EQ(AppController::FixSatNameForAgnes(*rec), "AO-7");
    std::strcpy(rec->speakName, "Oscar seven");
    EXPECT_EQ(AppController::FixSatNameForAgnes(*rec), "Oscar seven");
}

}  // namespace
}  // namespace veloran

// The announcement queue and the speaker: order, keying, the wait for a
// clear channel, chimes, and the thread's start and stop.

#include "app/announcements.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <thread>
#include <vector>

namespace veloran {
namespace {

// Everything the speaker does, in order, as one line each.
struct Trace {
    std::vector<std::string> events;
    void add(const std::string& e) { events.push_back(e); }
};

class FakeSpeech : public Speech {
  public:
    explicit FakeSpeech(Trace* t, AnnouncementQueue* q = nullptr) : trace(t), queue(q) {}
    void speak(const std::string& text) override {
        trace->add("speak:" + text);
        if (queue != nullptr) queuedWhileSpeaking.push_back(queue->size());
        busyTicks = 3;
    }
    bool isSpeaking() const override { return busyTicks > 0; }
    void stop() override { busyTicks = 0; }
    bool canPlay() const override { return playable; }
    Trace* trace;
    bool playable = true;
    AnnouncementQueue* queue;
    std::vector<size_t> queuedWhileSpeaking;
    int busyTicks = 0;
};

class FakeSounds : public SoundPlayer {
  public:
    explicit FakeSounds(Trace* t) : trace(t) {}
    void play(int32_t sound) override { trace->add("sound:" + std::to_string(sound)); }
    bool isPlaying() const override { return false; }
    Trace* trace;
};

// Sleeping only lets the fake synthesiser finish its sentence.
class FakeSleeper : public TickSleeper {
  public:
    FakeSleeper(Trace* t, FakeSpeech* s) : trace(t), speech(s) {}
    void sleepTicks(int ticks) override {
        if (ticks > 1 && ticks != 30) trace->add("sleep:" + std::to_string(ticks));
        if (speech->busyTicks > 0) --speech->busyTicks;
        std::this_thread::yield();
    }
    Trace* trace;
    FakeSpeech* speech;
};

class FakeGateway : public GatewayLine {
  public:
    explicit FakeGateway(Trace* t) : trace(t) {}
    void pushToTalk(int, int on, bool) override { trace->add(on ? "ptt:on" : "ptt:off"); }
    int waitForRadio(int, unsigned long limit, unsigned long* waited, bool) override {
        trace->add("cor:" + std::to_string(limit));
        *waited = waitedTicks;
        return clears;
    }
    Trace* trace;
    unsigned long waitedTicks = 0;
    int clears = 1;
};

struct SpeakerRig {
    Trace trace;
    AnnouncementQueue queue;
    AnnouncementSettings settings;
    FakeSpeech speech{&trace, &queue};
    FakeSounds sounds{&trace};
    FakeSleeper sleeper{&trace, &speech};
    FakeGateway gateway{&trace};
    FILE* log = std::tmpfile();
    AnnouncementSpeaker speaker{&queue, &settings, &speech, &sounds, &sleeper, &gateway, log};
    ~SpeakerRig() { std::fclose(log); }

    std::string logText() {
        std::fflush(log);
        std::rewind(log);
        char buf[1024] = {};
        const size_t n = std::fread(buf, 1, sizeof buf - 1, log);
        return std::string(buf, n);
    }
    static Announcement Item(const std::string& text, int32_t sound, bool transmit, bool cor) {
        Announcement a;
        a.text = text;
        a.sound = sound;
        a.transmit = transmit;
        a.waitForCOR = cor;
        return a;
    }
};

TEST(AnnouncementQueue, SpeaksInOrderAndKeepsTheItemQueuedWhileSpeaking) {
    SpeakerRig rig;
    rig.queue.queueAnnouncement(SpeakerRig::Item("first", 0, false, false));
    rig.queue.queueAnnouncement(SpeakerRig::Item("second", 0, false, false));
    EXPECT_EQ(rig.speaker.speakNext(), 1);
    EXPECT_EQ(rig.speaker.speakNext(), 1);
    EXPECT_EQ(rig.speaker.speakNext(), 0);
    EXPECT_EQ(rig.trace.events, (std::vector<std::string>{"speak:first", "speak:second"}));
    EXPECT_EQ(rig.speech.queuedWhileSpeaking, (std::vector<size_t>{2, 1}));
    EXPECT_EQ(rig.queue.size(), 0u);
}

TEST(AnnouncementSpeaker, KeysChimesSpeaksAndUnkeysASecondAfterTheSpeech) {
    SpeakerRig rig;
    rig.settings.wantsSounds = true;
    const Announcement item = SpeakerRig::Item("AO-7 is visible", Announcement::kAOS, true, false);
    rig.speaker.makeTheAnnouncement(&item);
    EXPECT_EQ(rig.trace.events,
              (std::vector<std::string>{"ptt:on", "sleep:60", "sound:2", "speak:AO-7 is visible",
                                        "sleep:60", "ptt:off"}));
}

TEST(AnnouncementSpeaker, WithoutAudioNothingIsKeyedAndTheReasonIsLoggedOnce) {
    SpeakerRig rig;
    rig.speech.playable = false;
    for (const bool cor : {false, true}) {
        const Announcement item = SpeakerRig::Item("AO-7 is visible", 0, true, cor);
        rig.speaker.makeTheAnnouncement(&item);
    }
    EXPECT_EQ(rig.trace.events,
              (std::vector<std::string>{"speak:AO-7 is visible", "speak:AO-7 is visible"}));
    const std::string log = rig.logText();
    EXPECT_NE(log.find("transmitter stays unkeyed"), std::string::npos) << log;
    EXPECT_EQ(log.find("unkeyed"), log.rfind("unkeyed")) << "said once";
}

TEST(AnnouncementSpeaker, ChimesOnlyWhenWantedAndAnEmptyTextIsAPureChime) {
    SpeakerRig rig;
    const Announcement chime = SpeakerRig::Item("", Announcement::kRotor, false, false);
    rig.speaker.makeTheAnnouncement(&chime);
    EXPECT_TRUE(rig.trace.events.empty());
    rig.settings.wantsSounds = true;
    rig.speaker.makeTheAnnouncement(&chime);
    EXPECT_EQ(rig.trace.events, (std::vector<std::string>{"sound:4"}));
    rig.speaker.makeTheAnnouncement(nullptr);
    EXPECT_EQ(rig.trace.events.size(), 1u);
}

TEST(AnnouncementSpeaker, AShortWaitForAClearChannelNeedsNoReminder) {
    SpeakerRig rig;
    rig.gateway.waitedTicks = 7200;
    const Announcement item = SpeakerRig::Item("warning", 0, true, true);
    rig.speaker.makeTheAnnouncement(&item);
    EXPECT_EQ(rig.trace.events, (std::vector<std::string>{"cor:21600", "ptt:on", "sleep:60",
                                                          "speak:warning", "sleep:60", "ptt:off"}));
    EXPECT_EQ(rig.logText(), "");  // that line is for debugging only
    rig.settings.debug = true;
    rig.speaker.makeTheAnnouncement(&item);
    EXPECT_NE(rig.logText().find("for COR. No Warning Necessary.\n"), std::string::npos);
}

TEST(AnnouncementSpeaker, ALongWaitBringsTheReminderBeforeTheWarning) {
    SpeakerRig rig;
    rig.gateway.waitedTicks = 7201;
    const Announcement item = SpeakerRig::Item("warning", 0, true, true);
    rig.speaker.makeTheAnnouncement(&item);
    ASSERT_GE(rig.trace.events.size(), 4u);
    EXPECT_EQ(rig.trace.events[3], std::string("speak:") + kLeavePausesSentence);
    EXPECT_EQ(rig.trace.events[4], "speak:warning");
    EXPECT_EQ(std::string(kLeavePausesSentence),
              "Please, leave a short pause between your transmissions. I had to wait several "
              "minutes for an "
              "openning. Resistance is futile.");
    EXPECT_NE(rig.logText().find("for COR. Too Long - warning given\n"), std::string::npos);
}

TEST(AnnouncementSpeaker, AChannelThatNeverClearsIsSpokenUnkeyedAndStillUnkeyed) {
    SpeakerRig rig;
    rig.gateway.clears = 0;
    rig.gateway.waitedTicks = 0;
    const Announcement item = SpeakerRig::Item("warning", 0, true, true);
    rig.speaker.makeTheAnnouncement(&item);
    EXPECT_EQ(rig.trace.events,
              (std::vector<std::string>{"cor:21600", "speak:warning", "sleep:60", "ptt:off"}));
}

TEST(AnnouncementSpeaker, ThreadSpeaksTheQueueAndStopsWhenAsked) {
    SpeakerRig rig;
    rig.speaker.start();
    EXPECT_TRUE(rig.speaker.running());
    rig.queue.queueAnnouncement(SpeakerRig::Item("from the core thread", 0, false, false));
    // The fake sleeper only yields, so the thread comes round at once.
    for (long spins = 0; rig.queue.size() > 0 && spins < 100000000; ++spins)
        std::this_thread::yield();
    rig.speaker.stop();
    EXPECT_FALSE(rig.speaker.running());
    EXPECT_EQ(rig.queue.size(), 0u);
    EXPECT_EQ(rig.speech.queuedWhileSpeaking.size(), 1u);
}

}  // namespace
}  // namespace veloran

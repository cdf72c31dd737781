// Spoken announcements: the queue the core thread fills, and the one
// background thread that speaks it, keying the transmitter through the
// gateway board when an announcement goes over the air.
//
// The queue is the only data the two threads share. One mutex guards
// append, peek-first and remove-first; it is never held while speaking, so
// the core thread never waits for speech or keying.
#pragma once

#include <atomic>
#include <cstdio>
#include <deque>
#include <mutex>
#include <string>
#include <thread>

#include "app/interfaces.h"

namespace veloran {

// Ticks of 1/60 s, the unit of every wait of the announcement thread.
constexpr int kTicksPerSecond = 60;
// The longest wait for a clear channel, and the wait after which the
// operators get a reminder to leave pauses (ticks).
constexpr unsigned long kCORWaitLimitTicks = 21600;
constexpr unsigned long kCORReminderTicks = 7200;

// The announcement queue, oldest first.
class AnnouncementQueue : public Announcer {
  public:
    void queueAnnouncement(const Announcement& item) override;
    // Copies the oldest element into *item (it stays queued); false when
    // the queue is empty.
    bool peekFirst(Announcement* item) const;
    void removeFirst();
    size_t size() const;

  private:
    mutable std::mutex mutex_;
    std::deque<Announcement> items_;
};

// Waiting in ticks of 1/60 s. Tests give a fake that only counts.
class TickSleeper {
  public:
    virtual ~TickSleeper() = default;
    virtual void sleepTicks(int ticks) = 0;
};

// The real one: std::this_thread::sleep_for.
class RealTickSleeper : public TickSleeper {
  public:
    void sleepTicks(int ticks) override;
};

// The gateway board's two operations as the announcements use them: line 0
// keys the transmitter, line 1 senses the carrier-operated relay. The real
// one calls pushToTalk and waitForRadio of the serial layer.
class GatewayLine {
  public:
    virtual ~GatewayLine() = default;
    virtual void pushToTalk(int fd, int on, bool debug);
    // 1 when the channel became clear within limitTicks; *waitedTicks the
    // time it took.
    virtual int waitForRadio(int fd, unsigned long limitTicks, unsigned long* waitedTicks,
                             bool debug);
    // Set by the speaker: a wait gives up soon after this turns true, so
    // that quitting never waits out the six-minute limit.
    const std::atomic<bool>* cancel = nullptr;
};

// What the announcement thread reads of the site record. The core thread
// writes these copies whenever the site changes (each tick), so the two
// threads never share the record itself.
struct AnnouncementSettings {
    std::atomic<int> gatewayFd{-1};
    std::atomic<bool> wantsSounds{false};
    std::atomic<bool> debug{false};
};

// The consumer: speaks the queue one element at a time, in order.
class AnnouncementSpeaker {
  public:
    // Every pointer must outlive the speaker; `log` takes the COR lines.
    AnnouncementSpeaker(AnnouncementQueue* queue, const AnnouncementSettings* settings,
                        Speech* speech, SoundPlayer* sounds, TickSleeper* sleeper,
                        GatewayLine* gateway, FILE* log);
    ~AnnouncementSpeaker();
    AnnouncementSpeaker(const AnnouncementSpeaker&) = delete;
    AnnouncementSpeaker& operator=(const AnnouncementSpeaker&) = delete;

    // Starts announcementThread on a thread of its own (once).
    void start();
    // Asks the thread to end after the current wait and joins it. Queued
    // announcements not yet spoken are dropped with the queue's owner.
    void stop();
    bool running() const { return thread_.joinable(); }

    // The thread's body: speak the first element, remove it, sleep 30
    // ticks; until stop().
    void announcementThread();
    // One pass of that loop without the sleep: 1 when an element was
    // spoken. Tests drive the speaker with it on their own thread.
    int speakNext();
    // Speaks one announcement: keying, the wait for a clear channel, the
    // chime, the text, unkeying. Null does nothing.
    void makeTheAnnouncement(const Announcement* item);

  private:
    // Sleeps in single ticks until the synthesiser (or the chime) is silent,
    // at most maxTicks (negative: no limit); ends early on stop().
    void waitWhileSpeaking(int maxTicks);
    void waitWhilePlaying();
    bool stopping() const { return stop_.load(); }

    AnnouncementQueue* queue_;
    const AnnouncementSettings* settings_;
    Speech* speech_;
    SoundPlayer* sounds_;
    TickSleeper* sleeper_;
    GatewayLine* gateway_;
    FILE* log_;
    std::atomic<bool> stop_{false};
    bool saidNoAudio_ = false;  // the announcement thread's own: told once
    std::thread thread_;
};

// The reminder spoken after a long wait for a clear channel.
constexpr const char* kLeavePausesSentence =
    "Please, leave a short pause between your transmissions. I had to wait several minutes for an "
    "openning. Resistance is futile.";

}  // namespace veloran

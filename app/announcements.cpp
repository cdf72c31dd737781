// The announcement queue and the thread that speaks it.

#include "app/announcements.h"

#include <chrono>

#include "serial/gateway.h"
#include "serial/serial.h"

namespace veloran {

namespace {

// The gateway's push-to-talk output and carrier-sense input.
constexpr int kPttLine = 0;
constexpr int kCORLine = 1;
// The pause between two looks at the queue.
constexpr int kQueuePollTicks = 30;

}  // namespace

void AnnouncementQueue::queueAnnouncement(const Announcement& item) {
    std::lock_guard<std::mutex> lock(mutex_);
    items_.push_back(item);
}

bool AnnouncementQueue::peekFirst(Announcement* item) const {
    std::lock_guard<std::mutex> lock(mutex_);
    if (items_.empty()) return false;
    if (item != nullptr) *item = items_.front();
    return true;
}

void AnnouncementQueue::removeFirst() {
    std::lock_guard<std::mutex> lock(mutex_);
    if (!items_.empty()) items_.pop_front();
}

size_t AnnouncementQueue::size() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return items_.size();
}

void RealTickSleeper::sleepTicks(int ticks) {
    if (ticks > 0)
        std::this_thread::sleep_for(std::chrono::microseconds(ticks * 1000000L / kTicksPerSecond));
}

void GatewayLine::pushToTalk(int fd, int on, bool debug) {
    veloran::pushToTalk(fd, kPttLine, on, debug);
}

int GatewayLine::waitForRadio(int fd, unsigned long limitTicks, unsigned long* waitedTicks,
                              bool debug) {
    return veloran::waitForRadio(fd, kCORLine, limitTicks, waitedTicks, debug, cancel);
}

AnnouncementSpeaker::AnnouncementSpeaker(AnnouncementQueue* queue,
                                         const AnnouncementSettings* settings, Speech* speech,
                                         SoundPlayer* sounds, TickSleeper* sleeper,
                                         GatewayLine* gateway, FILE* log)
    : queue_(queue),
      settings_(settings),
      speech_(speech),
      sounds_(sounds),
      sleeper_(sleeper),
      gateway_(gateway),
      log_(log) {
    if (gateway_ != nullptr) gateway_->cancel = &stop_;
}

AnnouncementSpeaker::~AnnouncementSpeaker() {
    stop();
}

void AnnouncementSpeaker::start() {
    if (thread_.joinable()) return;
    stop_ = false;
    thread_ = std::thread([this] { announcementThread(); });
}

void AnnouncementSpeaker::stop() {
    stop_ = true;
    if (thread_.joinable()) thread_.join();
}

void AnnouncementSpeaker::announcementThread() {
    while (!stopping()) {
        speakNext();
        sleeper_->sleepTicks(kQueuePollTicks);
    }
}

int AnnouncementSpeaker::speakNext() {
    Announcement item;
    if (!queue_->peekFirst(&item)) return 0;
    // The element stays queued while it is spoken, as a reader of the
    // queue would expect of "the one being spoken".
    makeTheAnnouncement(&item);
    queue_->removeFirst();
    return 1;
}

void AnnouncementSpeaker::waitWhileSpeaking(int maxTicks) {
    for (int waited = 0; speech_->isSpeaking() && !stopping(); ++waited) {
        if (maxTicks >= 0 && waited >= maxTicks) return;
        sleeper_->sleepTicks(1);
    }
}

void AnnouncementSpeaker::waitWhilePlaying() {
    while (sounds_->isPlaying() && !stopping()) sleeper_->sleepTicks(1);
}

void AnnouncementSpeaker::makeTheAnnouncement(const Announcement* item) {
    if (item == nullptr) return;
    const int fd = settings_->gatewayFd.load();
    const bool debug = settings_->debug.load();
    const bool transmit = item->transmit && speech_->canPlay();
    if (item->transmit && !transmit && !saidNoAudio_) {
        saidNoAudio_ = true;
        if (log_ != nullptr)
            std::fprintf(log_,
                         "Announcements are not sent over the air: speech cannot play here, "
                         "so the transmitter stays unkeyed.\n");
    }
    if (transmit) {
        if (!item->waitForCOR) {
            gateway_->pushToTalk(fd, 1, debug);
            sleeper_->sleepTicks(kTicksPerSecond);
        } else {
            unsigned long waited = 0;
            if (gateway_->waitForRadio(fd, kCORWaitLimitTicks, &waited, debug)) {
                gateway_->pushToTalk(fd, 1, debug);
                sleeper_->sleepTicks(kTicksPerSecond);
            }
            if (stopping()) return;  // quitting: the transmitter was never keyed
            char shown[48];
            std::snprintf(shown, sizeof shown, "%.1f seconds",
                          static_cast<double>(waited) / kTicksPerSecond);
            if (waited <= kCORReminderTicks) {
                if (debug && log_ != nullptr)
                    std::fprintf(log_, "Announcement waited %s for COR. No Warning Necessary.\n",
                                 shown);
            } else {
                if (log_ != nullptr)
                    std::fprintf(log_, "Announcement waited %s for COR. Too Long - warning given\n",
                                 shown);
                speech_->speak(kLeavePausesSentence);
                waitWhileSpeaking(-1);
            }
        }
    }
    waitWhileSpeaking(kTicksPerSecond);
    if (settings_->wantsSounds.load() && item->sound != Announcement::kNone) {
        sounds_->play(item->sound);
        waitWhilePlaying();
    }
    if (!item->text.empty()) speech_->speak(item->text);
    if (transmit) {
        waitWhileSpeaking(-1);
        sleeper_->sleepTicks(kTicksPerSecond);
        gateway_->pushToTalk(fd, 0, debug);
    }
}

}  // namespace veloran

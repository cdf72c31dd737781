// The four chimes before announcements.

#include "platform/qtsounds.h"

#include <QAudioDevice>
#include <QFile>
#include <QMediaDevices>
#include <QSoundEffect>
#include <QUrl>
#include <cstdio>

namespace veloran {

namespace {

constexpr const char* kSoundFiles[4] = {"announce.wav", "AOS.wav", "LOS.wav", "rotor.wav"};
// A sound still loading after this long counts as played.
constexpr int kStartLimitMs = 3000;
// Slack on top of a chime's own length before it counts as finished: some
// outputs report "playing" long after the samples are gone.
constexpr int kPlaySlackMs = 500;

uint32_t LittleEndian32(const QByteArray& bytes, int at) {
    if (at + 4 > bytes.size()) return 0;
    const auto* p = reinterpret_cast<const unsigned char*>(bytes.constData() + at);
    return p[0] | (p[1] << 8) | (p[2] << 16) | (static_cast<uint32_t>(p[3]) << 24);
}

// Playing time of a PCM WAV file from its "fmt " byte rate and "data" size;
// 0 when the file is missing or not a WAV file.
qint64 WavLengthMs(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) return 0;
    const QByteArray bytes = file.read(1 << 20);
    if (bytes.size() < 12 || !bytes.startsWith("RIFF") || bytes.mid(8, 4) != "WAVE") return 0;
    uint32_t byteRate = 0, dataSize = 0;
    for (int at = 12; at + 8 <= bytes.size();) {
        const QByteArray id = bytes.mid(at, 4);
        const uint32_t size = LittleEndian32(bytes, at + 4);
        if (id == "fmt ") byteRate = LittleEndian32(bytes, at + 16);
        if (id == "data") dataSize = size;
        if (size > static_cast<uint32_t>(bytes.size())) break;
        at += 8 + static_cast<int>(size + (size & 1));
    }
    return byteRate == 0 ? 0 : static_cast<qint64>(dataSize) * 1000 / byteRate;
}

}  // namespace

SoundWorker::SoundWorker(std::string folder, std::atomic<bool>* playing)
    : folder_(std::move(folder)), playing_(playing) {}

void SoundWorker::setUp() {
    haveOutput_ = !QMediaDevices::defaultAudioOutput().isNull();
    if (!haveOutput_) std::fprintf(stderr, "No audio output: the chimes stay silent.\n");
    for (size_t i = 0; i < effects_.size(); ++i) {
        const QString path = QString::fromStdString(folder_ + "/" + kSoundFiles[i]);
        lengthMs_[i] = WavLengthMs(path);
        if (!haveOutput_ || lengthMs_[i] == 0)
            continue;  // nothing to play it on, or nothing to play
        auto* effect = new QSoundEffect(this);
        effect->setSource(QUrl::fromLocalFile(path));
        effects_[i] = effect;
    }
    poll_.setInterval(50);
    connect(&poll_, &QTimer::timeout, this, &SoundWorker::check);
}

void SoundWorker::start(int sound) {
    QSoundEffect* effect =
        (sound >= 1 && sound <= 4) ? effects_[static_cast<size_t>(sound - 1)] : nullptr;
    if (effect == nullptr || effect->status() == QSoundEffect::Error) {
        playing_->store(false);
        return;
    }
    current_ = effect;
    currentLengthMs_ = lengthMs_[static_cast<size_t>(sound - 1)];
    effect->play();
    started_.start();
    poll_.start();
}

// Polled rather than signalled: an output that cannot play may report
// "playing" for ever, so the chime's own length bounds the wait.
void SoundWorker::check() {
    const bool loading = current_ != nullptr && current_->status() == QSoundEffect::Loading;
    const bool playing = current_ != nullptr && current_->isPlaying();
    const qint64 elapsed = started_.elapsed();
    if ((playing && elapsed < currentLengthMs_ + kPlaySlackMs) ||
        (loading && elapsed < kStartLimitMs))
        return;
    poll_.stop();
    current_ = nullptr;
    playing_->store(false);
}

QtSoundPlayer::QtSoundPlayer(const std::string& folder)
    : worker_(new SoundWorker(folder, &playing_)) {
    worker_->moveToThread(&thread_);
    QObject::connect(&thread_, &QThread::finished, worker_, &QObject::deleteLater);
    thread_.setObjectName("sounds");
    thread_.start();
    QMetaObject::invokeMethod(worker_, "setUp", Qt::QueuedConnection);
}

QtSoundPlayer::~QtSoundPlayer() {
    thread_.quit();
    thread_.wait();
}

void QtSoundPlayer::play(int32_t sound) {
    if (sound < 1 || sound > 4) return;
    playing_.store(true);
    QMetaObject::invokeMethod(worker_, "start", Qt::QueuedConnection, Q_ARG(int, sound));
}

bool QtSoundPlayer::isPlaying() const {
    return playing_.load();
}

}  // namespace veloran

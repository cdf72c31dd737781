// The speech synthesiser. The offline flite engine is preferred, so that a
// station computer speaks without a network or a desktop speech service.

#include "platform/qtspeech.h"

#include <QAudioDevice>
#include <QMediaDevices>
#include <QTextToSpeech>
#include <algorithm>
#include <cmath>
#include <cstdio>

namespace veloran {

SpeechWorker::SpeechWorker(std::atomic<bool>* speaking, std::atomic<bool>* playable,
                           std::vector<std::string>* voices, std::mutex* voicesLock)
    : speaking_(speaking), playable_(playable), voices_(voices), voicesLock_(voicesLock) {}

void SpeechWorker::setUp() {
    const QStringList engines = QTextToSpeech::availableEngines();
    if (engines.isEmpty()) {
        complain("no speech engine is installed");
        return;
    }
    engine_ =
        new QTextToSpeech(engines.contains("flite") ? QString("flite") : engines.first(), this);
    defaultVoice_ = engine_->voice();
    {
        // The engine lists the voices of the current language; flite speaks
        // English whatever the desktop's language.
        std::vector<std::string> names;
        for (const QVoice& voice : engine_->availableVoices())
            names.push_back(voice.name().toStdString());
        const std::lock_guard<std::mutex> hold(*voicesLock_);
        *voices_ = std::move(names);
    }
    applyChoice();
    if (QMediaDevices::defaultAudioOutput().isNull()) {
        complain("no audio output");
    } else if (engine_->state() == QTextToSpeech::Error) {
        complain(engine_->errorString());
    } else {
        playable_->store(true);
    }
    connect(engine_, &QTextToSpeech::stateChanged, this, [this](QTextToSpeech::State state) {
        if (state == QTextToSpeech::Error) complain(engine_->errorString());
        if (state != QTextToSpeech::Speaking) speaking_->store(false);
    });
}

void SpeechWorker::say(const QString& text) {
    if (engine_ == nullptr || engine_->state() == QTextToSpeech::Error) {
        if (engine_ != nullptr) complain(engine_->errorString());
        speaking_->store(false);
        return;
    }
    engine_->say(text);
    // An engine that cannot speak may stay Ready without a state change.
    if (engine_->state() == QTextToSpeech::Ready) speaking_->store(false);
}

void SpeechWorker::halt() {
    if (engine_ != nullptr) engine_->stop();
    speaking_->store(false);
}

void SpeechWorker::choose(const QString& voice, double rate) {
    voice_ = voice;
    rate_ = rate;
    if (engine_ != nullptr) applyChoice();
}

void SpeechWorker::applyChoice() {
    QVoice chosen = defaultVoice_;
    for (const QVoice& voice : engine_->availableVoices())
        if (!voice_.isEmpty() && voice.name() == voice_) chosen = voice;
    if (chosen != engine_->voice()) engine_->setVoice(chosen);
    engine_->setRate(std::clamp(rate_, -1.0, 1.0));
}

void SpeechWorker::complain(const QString& why) {
    playable_->store(false);
    if (complained_) return;
    complained_ = true;
    std::fprintf(stderr, "Speech unavailable (%s): announcements stay silent.\n",
                 why.toLocal8Bit().constData());
}

QtSpeech::QtSpeech() : worker_(new SpeechWorker(&speaking_, &playable_, &voices_, &voicesLock_)) {
    worker_->moveToThread(&thread_);
    QObject::connect(&thread_, &QThread::finished, worker_, &QObject::deleteLater);
    thread_.setObjectName("speech");
    thread_.start();
    QMetaObject::invokeMethod(worker_, "setUp", Qt::QueuedConnection);
}

QtSpeech::~QtSpeech() {
    thread_.quit();
    thread_.wait();
}

void QtSpeech::speak(const std::string& text) {
    // Set before the request is queued, so that a caller waiting for silence
    // right after speak() waits for this sentence.
    speaking_.store(true);
    QMetaObject::invokeMethod(worker_, "say", Qt::QueuedConnection,
                              Q_ARG(QString, QString::fromStdString(text)));
}

bool QtSpeech::isSpeaking() const {
    return speaking_.load();
}

bool QtSpeech::canPlay() const {
    return playable_.load();
}

std::vector<std::string> QtSpeech::voices() const {
    const std::lock_guard<std::mutex> hold(voicesLock_);
    return voices_;
}

void QtSpeech::setVoice(const std::string& voice, double rate) {
    QMetaObject::invokeMethod(worker_, "choose", Qt::QueuedConnection,
                              Q_ARG(QString, QString::fromStdString(voice)),
                              Q_ARG(double, std::isfinite(rate) ? rate : 0.0));
}

void QtSpeech::stop() {
    QMetaObject::invokeMethod(worker_, "halt", Qt::QueuedConnection);
}

}  // namespace veloran

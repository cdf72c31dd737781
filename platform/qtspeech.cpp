// The speech synthesiser. The offline flite engine is preferred, so that a
// station computer speaks without a network or a desktop speech service.

#include "platform/qtspeech.h"

#include <QAudioDevice>
#include <QMediaDevices>
#include <QTextToSpeech>
#include <cstdio>

namespace veloran {

SpeechWorker::SpeechWorker(std::atomic<bool>* speaking, std::atomic<bool>* playable)
    : speaking_(speaking), playable_(playable) {}

void SpeechWorker::setUp() {
    const QStringList engines = QTextToSpeech::availableEngines();
    if (engines.isEmpty()) {
        complain("no speech engine is installed");
        return;
    }
    engine_ =
        new QTextToSpeech(engines.contains("flite") ? QString("flite") : engines.first(), this);
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

void SpeechWorker::complain(const QString& why) {
    playable_->store(false);
    if (complained_) return;
    complained_ = true;
    std::fprintf(stderr, "Speech unavailable (%s): announcements stay silent.\n",
                 why.toLocal8Bit().constData());
}

QtSpeech::QtSpeech() : worker_(new SpeechWorker(&speaking_, &playable_)) {
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

void QtSpeech::stop() {
    QMetaObject::invokeMethod(worker_, "halt", Qt::QueuedConnection);
}

}  // namespace veloran

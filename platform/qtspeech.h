// The speech synthesiser on QTextToSpeech, for the announcement thread.
#pragma once

#include <QObject>
#include <QThread>
#include <atomic>
#include <string>

#include "app/interfaces.h"

class QTextToSpeech;

namespace veloran {

// Lives on a thread of its own with an event loop, as QTextToSpeech wants;
// the announcement thread only posts to it and reads an atomic flag.
class SpeechWorker : public QObject {
    Q_OBJECT
  public:
    SpeechWorker(std::atomic<bool>* speaking, std::atomic<bool>* playable);
  public slots:
    void setUp();
    void say(const QString& text);
    void halt();

  private:
    QTextToSpeech* engine_ = nullptr;
    std::atomic<bool>* speaking_;
    std::atomic<bool>* playable_;
    bool complained_ = false;
    void complain(const QString& why);
};

// With no speech engine or no audio device (a station computer without
// sound, a CI machine) it stays silent and says so once on standard error.
class QtSpeech : public Speech {
  public:
    QtSpeech();
    ~QtSpeech() override;
    QtSpeech(const QtSpeech&) = delete;
    QtSpeech& operator=(const QtSpeech&) = delete;

    void speak(const std::string& text) override;
    bool isSpeaking() const override;
    void stop() override;
    // False until an engine is up with an audio output, and after it fails.
    bool canPlay() const override;

  private:
    QThread thread_;
    SpeechWorker* worker_;
    std::atomic<bool> speaking_{false};
    std::atomic<bool> playable_{false};
};

}  // namespace veloran

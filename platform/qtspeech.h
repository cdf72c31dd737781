// The speech synthesiser on QTextToSpeech, for the announcement thread.
#pragma once

#include <QObject>
#include <QStringList>
#include <QThread>
#include <QVoice>
#include <atomic>
#include <mutex>
#include <string>
#include <vector>

#include "app/interfaces.h"

class QTextToSpeech;

namespace veloran {

// Lives on a thread of its own with an event loop, as QTextToSpeech wants;
// the announcement thread only posts to it and reads an atomic flag.
class SpeechWorker : public QObject {
    Q_OBJECT
  public:
    // `voices` receives the names of the engine's voices once it is up,
    // under `voicesLock`.
    SpeechWorker(std::atomic<bool>* speaking, std::atomic<bool>* playable,
                 std::vector<std::string>* voices, std::mutex* voicesLock);
  public slots:
    void setUp();
    void say(const QString& text);
    void halt();
    // An empty or unknown name is the engine's default voice.
    void choose(const QString& voice, double rate);

  private:
    QTextToSpeech* engine_ = nullptr;
    QVoice defaultVoice_;
    std::atomic<bool>* speaking_;
    std::atomic<bool>* playable_;
    std::vector<std::string>* voices_;
    std::mutex* voicesLock_;
    // A choice that came before the engine was up.
    QString voice_;
    double rate_ = 0;
    bool complained_ = false;
    void complain(const QString& why);
    void applyChoice();
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
    // Empty until the engine is up, and without one.
    std::vector<std::string> voices() const override;
    void setVoice(const std::string& voice, double rate) override;

  private:
    QThread thread_;
    SpeechWorker* worker_;
    std::atomic<bool> speaking_{false};
    std::atomic<bool> playable_{false};
    mutable std::mutex voicesLock_;
    std::vector<std::string> voices_;
};

}  // namespace veloran

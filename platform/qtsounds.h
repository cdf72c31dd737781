// The four chimes, played with QSoundEffect on a thread of their own.
#pragma once

#include <QElapsedTimer>
#include <QObject>
#include <QThread>
#include <QTimer>
#include <array>
#include <atomic>
#include <string>

#include "app/interfaces.h"

class QSoundEffect;

namespace veloran {

class SoundWorker : public QObject {
    Q_OBJECT
  public:
    SoundWorker(std::string folder, std::atomic<bool>* playing);
  public slots:
    void setUp();
    void start(int sound);

  private:
    void check();

    std::string folder_;
    std::atomic<bool>* playing_;
    std::array<QSoundEffect*, 4> effects_{};  // announce, AOS, LOS, rotor
    std::array<qint64, 4> lengthMs_{};        // from the WAV headers
    bool haveOutput_ = false;
    QSoundEffect* current_ = nullptr;
    qint64 currentLengthMs_ = 0;
    QTimer poll_;
    QElapsedTimer started_;
};

// Loads announce.wav, AOS.wav, LOS.wav and rotor.wav from a folder. A file
// that is missing, or a machine without an audio device, plays as silence.
class QtSoundPlayer : public SoundPlayer {
  public:
    explicit QtSoundPlayer(const std::string& folder);
    ~QtSoundPlayer() override;
    QtSoundPlayer(const QtSoundPlayer&) = delete;
    QtSoundPlayer& operator=(const QtSoundPlayer&) = delete;

    void play(int32_t sound) override;
    bool isPlaying() const override;

  private:
    QThread thread_;
    SoundWorker* worker_;
    std::atomic<bool> playing_{false};
};

}  // namespace veloran

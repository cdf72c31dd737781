// The two repeating timers that drive the core: the one-second tick and the
// fifteen-second Sun and Moon tick. They fire on the thread that owns them
// (the core thread), so a tick never overlaps another or a user action.
#pragma once

#include <QObject>
#include <QTimer>
#include <functional>

namespace veloran {

class CoreTimers : public QObject {
    Q_OBJECT
  public:
    CoreTimers(std::function<void()> everySecond, std::function<void()> everyFifteenSeconds,
               QObject* parent = nullptr);
    void start();
    void stop();

  private:
    QTimer timer1_;  // 1.0 s: the main tick
    QTimer timer2_;  // 15.0 s: the Sun and the Moon
};

// Makes SIGINT and SIGTERM quit the Qt event loop of this process (through
// a self-pipe, so nothing but a write happens in the signal handler). Call
// once, after the application object exists.
void QuitOnSignals();

}  // namespace veloran

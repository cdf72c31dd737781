// The core's timers and a clean quit on SIGINT and SIGTERM.

#include "platform/coretimers.h"

#include <unistd.h>

#include <QCoreApplication>
#include <QSocketNotifier>
#include <csignal>

namespace veloran {

namespace {

int gSignalPipe[2] = {-1, -1};

void OnSignal(int) {
    const char byte = 1;
    // Nothing else is safe here; the event loop does the rest.
    [[maybe_unused]] const ssize_t written = ::write(gSignalPipe[1], &byte, 1);
}

}  // namespace

CoreTimers::CoreTimers(std::function<void()> everySecond, std::function<void()> everyFifteenSeconds,
                       QObject* parent)
    : QObject(parent) {
    timer1_.setInterval(1000);
    timer2_.setInterval(15000);
    timer1_.setTimerType(Qt::PreciseTimer);
    connect(&timer1_, &QTimer::timeout, this, [tick = std::move(everySecond)]() { tick(); });
    connect(&timer2_, &QTimer::timeout, this,
            [tick = std::move(everyFifteenSeconds)]() { tick(); });
}

void CoreTimers::start() {
    timer1_.start();
    timer2_.start();
}

void CoreTimers::stop() {
    timer1_.stop();
    timer2_.stop();
}

void QuitOnSignals() {
    if (gSignalPipe[0] >= 0 || ::pipe(gSignalPipe) != 0) return;
    auto* notifier =
        new QSocketNotifier(gSignalPipe[0], QSocketNotifier::Read, QCoreApplication::instance());
    QObject::connect(notifier, &QSocketNotifier::activated, []() {
        char byte = 0;
        [[maybe_unused]] const ssize_t got = ::read(gSignalPipe[0], &byte, 1);
        QCoreApplication::quit();
    });
    struct sigaction action {};
    action.sa_handler = OnSignal;
    sigemptyset(&action.sa_mask);
    action.sa_flags = SA_RESTART;
    sigaction(SIGINT, &action, nullptr);
    sigaction(SIGTERM, &action, nullptr);
}

}  // namespace veloran

// veloran: the desktop station. Without a display it says so and points at
// --headless, which runs the same station with no window.

#include <QApplication>
#include <QLocalServer>
#include <QLocalSocket>
#include <QMessageBox>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "app/appcontroller.h"
#include "cli/headless.h"
#include "engine/timebase.h"
#include "gui/corethread.h"
#include "gui/mainwindow.h"
#include "gui/uibridge.h"
#include "platform/coretimers.h"
#include "platform/numericlocale.h"
#include "station/options.h"
#include "station/station.h"

namespace {

bool HasDisplay() {
    const char* platform = std::getenv("QT_QPA_PLATFORM");
    if (platform != nullptr && *platform != '\0') return true;
    const char* x = std::getenv("DISPLAY");
    const char* wayland = std::getenv("WAYLAND_DISPLAY");
    return (x != nullptr && *x != '\0') || (wayland != nullptr && *wayland != '\0');
}

// A second start on the same settings asks the running window to come
// forward; true when one answered.
bool RaiseRunningWindow(const QString& channel) {
    QLocalSocket running;
    running.connectToServer(channel);
    if (!running.waitForConnected(1000)) return false;
    running.write("show\n");
    running.waitForBytesWritten(1000);
    return true;
}

}  // namespace

int main(int argc, char** argv) {
    for (int i = 1; i < argc; ++i) {
        if (std::strcmp(argv[i], "--headless") == 0) {
            // Everything but --headless itself goes to the runner.
            for (int j = i; j + 1 < argc; ++j) argv[j] = argv[j + 1];
            return veloran::cli::RunHeadless(argc - 2, argv + 1);
        }
    }
    veloran::SetProgramName("veloran");
    veloran::StationOptions options;
    const int status = veloran::ParseStationOptions(
        "usage: veloran [options]             the station with its window\n"
        "       veloran --headless [options]  the same station without a window",
        argc - 1, argv + 1, veloran::QFGetDateTimeUTC(), &options);
    if (status >= 0) return status;
    if (!HasDisplay()) {
        std::fprintf(stderr,
                     "veloran: no display to open the window on; on a computer without a "
                     "screen run veloran --headless\n");
        return 1;
    }
    const veloran::DataPaths paths = veloran::ResolveDataPaths(options.folders);
    std::string error;
    if (!veloran::SeedDataFiles(paths, &error)) {
        std::fprintf(stderr, "veloran: %s\n", error.c_str());
        return 1;
    }

    static char programName[] = "veloran";
    char* qtArgv[] = {programName, nullptr};
    int qtArgc = 1;
    QApplication app(qtArgc, qtArgv);
    veloran::UseCNumericLocale();
    QApplication::setApplicationName("Veloran");
    QApplication::setDesktopFileName("org.veloran.Veloran");
    QApplication::setQuitOnLastWindowClosed(false);

    const QString channel =
        QString::fromStdString(veloran::InstanceLock::channelName(paths.configDir));
    veloran::InstanceLock lock;
    pid_t holder = 0;
    if (!lock.acquire(paths.configDir, &holder, &error)) {
        if (RaiseRunningWindow(channel)) {
            std::fprintf(stderr, "veloran: already running; its window was brought forward\n");
            return 0;
        }
        std::fprintf(stderr, "veloran: %s\n", error.c_str());
        return 1;
    }
    QLocalServer::removeServer(channel);
    QLocalServer server;
    server.listen(channel);
    veloran::QuitOnSignals();

    veloran::CoreThread core(options, paths);
    veloran::MainWindow window(
        core.bridge(), [&core](veloran::CoreAction action) { core.post(std::move(action)); });
    QObject::connect(&core, &veloran::CoreThread::startFailed, &window, [&](const QString& why) {
        std::fprintf(stderr, "veloran: %s\n", why.toUtf8().constData());
        QApplication::exit(1);
    });
    QObject::connect(&server, &QLocalServer::newConnection, &window, [&] {
        while (QLocalSocket* other = server.nextPendingConnection()) {
            other->deleteLater();
            window.showAgain();
        }
    });
    window.setUpTray();
    core.start();
    window.show();
    const int exitStatus = app.exec();
    window.saveWindowState();
    if (!core.stop(2000)) {
        std::fprintf(stderr, "veloran: a device kept the core busy; quitting without it\n");
        std::fflush(stderr);
        std::_Exit(exitStatus);
    }
    return exitStatus;
}

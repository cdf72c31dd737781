// veloran: the desktop station. Without a display it says so and points at
// --headless, which runs the same core with no window.

#include <unistd.h>

#include <QApplication>
#include <QLocalServer>
#include <QLocalSocket>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "app/appcontroller.h"
#include "cli/headless.h"
#include "cli/options.h"
#include "data/settings.h"
#include "gui/corethread.h"
#include "gui/mainwindow.h"
#include "gui/uibridge.h"
#include "platform/coretimers.h"
#include "platform/numericlocale.h"
#include "platform/qtserialports.h"
#include "radio/ports.h"

namespace {

using veloran::StationSetup;
using namespace veloran::cli;

void PrintHelp() {
    std::printf(
        "usage: veloran [options]            the station with its window\n"
        "       veloran --headless [options] the same station without a window\n"
        "  --config-dir DIR, --data-dir DIR  the settings/modes and element-set/places folders\n"
        "  --time-offset MINUTES             start the time slider there\n"
        "  --sat NAME                        the satellite to work\n"
        "  --track NAME,NAME,...             the track list;  --auto  pick from it\n"
        "  --radio INDEX --radio-port PATH   the radio driver and its port\n"
        "  --rotor INDEX --rotor-port PATH   the rotor controller and its port\n"
        "  --gateway-port PATH               the gateway board's port\n"
        "Options win over the settings file for this run only.\n");
}

bool HasDisplay() {
    const char* platform = std::getenv("QT_QPA_PLATFORM");
    if (platform != nullptr && *platform != '\0') return true;
    const char* x = std::getenv("DISPLAY");
    const char* wayland = std::getenv("WAYLAND_DISPLAY");
    return (x != nullptr && *x != '\0') || (wayland != nullptr && *wayland != '\0');
}

// This run's options as a station setup; false after a message.
bool ReadOptions(int argc, char** argv, StationSetup* setup) {
    Arguments args;
    if (!ParseArguments(argc, argv, {"--auto"}, &args)) return false;
    const std::vector<std::string> known = {
        "--config-dir", "--data-dir",   "--time-offset", "--sat",        "--track",       "--auto",
        "--radio",      "--radio-port", "--rotor",       "--rotor-port", "--gateway-port"};
    if (!CheckOptions(args, known)) return false;
    if (!args.positional.empty()) {
        Fail("veloran takes no file: " + args.positional[0]);
        return false;
    }
    double offset = 0, radio = -1, rotor = -1;
    if (!ParseNumber(args, "--time-offset", 0, &offset) ||
        !ParseNumber(args, "--radio", -1, &radio) || !ParseNumber(args, "--rotor", -1, &rotor))
        return false;
    if (std::fabs(offset) > 60 * 24 * 365) {
        Fail("--time-offset is in minutes, at most a year either way");
        return false;
    }
    setup->paths =
        veloran::ResolveDataPaths({args.value("--data-dir"), args.value("--config-dir")});
    setup->timeOffsetMinutes = static_cast<int>(offset);
    setup->satellite = args.value("--sat");
    // Typed paths follow the machine's own ports in the port table.
    veloran::PortNameRecord probe[veloran::kMaxSerialPorts]{};
    const int machinePorts = veloran::QtSerialPortList().findPorts(probe, veloran::kMaxSerialPorts);
    const auto usePort = [&](const char* option, const char* portKey, const char* enabledKey) {
        if (!args.has(option)) return;
        setup->typedPorts.push_back(args.value(option));
        setup->overrides[portKey] =
            std::to_string(machinePorts + static_cast<int>(setup->typedPorts.size()) - 1);
        setup->overrides[enabledKey] = "true";
    };
    namespace keys = veloran::prefkeys;
    usePort("--radio-port", "radioport", keys::kVfoEnabled);
    usePort("--rotor-port", "rotorport", keys::kRotorEnabled);
    usePort("--gateway-port", "gatewayport", keys::kGatewayEnabled);
    if (radio >= 0) setup->overrides["radio"] = std::to_string(static_cast<int>(radio));
    if (rotor >= 0) setup->overrides["rotor"] = std::to_string(static_cast<int>(rotor));
    if (args.has("--track")) {
        std::string list;
        for (const std::string& n : SplitNames(args.value("--track"))) list += n + " ";
        setup->overrides[keys::kTrackListString] = list;
    }
    if (args.has("--auto")) setup->overrides[keys::kTrackListEnabled] = "true";
    return true;
}

// One window per settings folder: a second start asks the first to come
// forward and leaves.
QString InstanceName(const StationSetup& setup) {
    return QString("veloran-%1-%2")
        .arg(getuid())
        .arg(qHash(QString::fromStdString(setup.paths.configDir)), 0, 16);
}

}  // namespace

// The window's icon is compiled into the gui library.
static void LoadGuiResources() {
    Q_INIT_RESOURCE(resources);
}

int main(int argc, char** argv) {
    for (int i = 1; i < argc; ++i) {
        if (std::strcmp(argv[i], "--headless") == 0) {
            for (int j = i; j + 1 < argc; ++j) argv[j] = argv[j + 1];
            return RunHeadless(argc - 2, argv + 1);
        }
        if (std::strcmp(argv[i], "--help") == 0 || std::strcmp(argv[i], "-h") == 0) {
            PrintHelp();
            return 0;
        }
    }
    StationSetup setup;
    if (!ReadOptions(argc - 1, argv + 1, &setup)) return kUsageError;
    if (!HasDisplay()) {
        std::fprintf(stderr,
                     "veloran: no display to open the window on; without a screen run "
                     "veloran --headless\n");
        return 1;
    }
    std::string error;
    if (!veloran::SeedDataFiles(setup.paths, &error)) {
        std::fprintf(stderr, "veloran: %s\n", error.c_str());
        return 1;
    }

    static char programName[] = "veloran";
    char* qtArgv[] = {programName, nullptr};
    int qtArgc = 1;
    QApplication app(qtArgc, qtArgv);
    LoadGuiResources();
    veloran::UseCNumericLocale();
    QApplication::setApplicationName("Veloran");
    QApplication::setDesktopFileName("org.veloran.Veloran");
    QApplication::setQuitOnLastWindowClosed(false);

    const QString instance = InstanceName(setup);
    {
        QLocalSocket first;
        first.connectToServer(instance);
        if (first.waitForConnected(500)) {
            first.write("raise\n");
            first.waitForBytesWritten(500);
            std::fprintf(stderr, "veloran: already running; its window was brought forward\n");
            return 0;
        }
    }
    QLocalServer::removeServer(instance);
    QLocalServer server;
    server.listen(instance);
    veloran::QuitOnSignals();

    veloran::CoreThread core(setup);
    veloran::MainWindow window(
        core.bridge(), [&core](veloran::CoreAction action) { core.post(std::move(action)); });
    QObject::connect(&server, &QLocalServer::newConnection, &window, [&] {
        while (QLocalSocket* other = server.nextPendingConnection()) {
            other->deleteLater();
            window.show();
            window.raise();
            window.activateWindow();
            core.post([](veloran::Station& s) {
                if (!s.app->windowOpen()) s.app->openNewWindow();
            });
        }
    });
    window.setUpTray();
    core.start();
    window.show();
    const int status = app.exec();
    if (!core.stop(2000)) {
        std::fprintf(stderr, "veloran: a device kept the core busy; quitting without it\n");
        std::fflush(stderr);
        std::_Exit(status);
    }
    if (!core.saveError().empty())
        std::fprintf(stderr, "veloran: settings not saved: %s\n", core.saveError().c_str());
    return status;
}

// The station as the window runs it: on a core thread of its own, reached
// only through posted actions; and one station per settings folder.

#include "station/station.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <QCoreApplication>
#include <QThread>
#include <atomic>
#include <memory>
#include <string>

#include "app/appcontroller.h"
#include "app/silentui.h"
#include "tests/data/scratch.h"

namespace veloran {
namespace {

struct QuietUi : SilentUserInterface, TrackListUi {
    void beep() override {}
};

DataPaths TempFolders(const std::string& name) {
    const std::string root = ::testing::TempDir() + name;
    DataPaths paths = DataPaths::InFolders(VELORAN_RESOURCE_DIR, root + "/data", root + "/config");
    std::string error;
    EXPECT_TRUE(SeedDataFiles(paths, &error)) << error;
    return paths;
}

TEST(StationThread, RunsTheCoreOffTheCallersThreadAndStops) {
    QuietUi ui;
    StationFrontEnd frontEnd;
    frontEnd.ui = &ui;
    frontEnd.trackListUi = &ui;
    StationOptions options;
    options.sat = "FO-29";
    const DataPaths paths = TempFolders("station_thread");
    const std::string stale = paths.keplerFile + ".Ab12Cd";
    testing::WriteText(stale, "half a file");
    StationThread core(options, paths, frontEnd);
    std::string error;
    ASSERT_EQ(core.start(&error), 1) << error;

    std::atomic<int> ranOn{0};  // 1: the core thread, 2: the caller's
    std::atomic<int> mainSat{0};
    QThread* const caller = QThread::currentThread();
    core.post([&](Station& station) {
        mainSat = station.controller()->mainSatNum();
        ranOn = QThread::currentThread() == caller ? 2 : 1;
    });
    while (ranOn == 0) QThread::yieldCurrentThread();
    EXPECT_EQ(ranOn, 1);
    EXPECT_FALSE(FileExists(stale)) << "an interrupted write's leftover is removed at start";
    EXPECT_EQ(mainSat, 2) << "--sat FO-29, the second entry of the bundled sets";
    core.stop();
    core.post([&](Station&) { ranOn = 3; });
    EXPECT_EQ(ranOn, 1) << "nothing runs after stop";
}

TEST(StationThread, UnknownSatelliteFailsTheStart) {
    QuietUi ui;
    StationFrontEnd frontEnd;
    frontEnd.ui = &ui;
    frontEnd.trackListUi = &ui;
    StationOptions options;
    options.sat = "NO-SUCH-SAT";
    StationThread core(options, TempFolders("station_unknown"), frontEnd);
    std::string error;
    EXPECT_EQ(core.start(&error), 0);
    EXPECT_NE(error.find("NO-SUCH-SAT"), std::string::npos) << error;
}

TEST(InstanceLock, ASecondStationOnTheFolderIsToldWhoHoldsIt) {
    const std::string folder = TempFolders("station_lock").configDir;
    pid_t holder = -1;
    std::string error;
    auto first = std::make_unique<InstanceLock>();
    ASSERT_EQ(first->acquire(folder, &holder, &error), 1) << error;
    InstanceLock second;
    EXPECT_EQ(second.acquire(folder, &holder, &error), 0);
    EXPECT_EQ(holder, getpid());
    EXPECT_NE(error.find("process " + std::to_string(getpid())), std::string::npos) << error;
    first.reset();
    EXPECT_EQ(second.acquire(folder, &holder, &error), 1) << "released with its holder";
    EXPECT_NE(InstanceLock::channelName(folder), InstanceLock::channelName(folder + "x"));
}

}  // namespace
}  // namespace veloran

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}

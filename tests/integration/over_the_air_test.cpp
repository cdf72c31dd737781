// An announcement over the air: the core queues it, the announcement thread
// waits on the simulated gateway board until the channel has been clear for
// a second, keys the transmitter, speaks, and unkeys.

#include <gtest/gtest.h>

#include <chrono>
#include <thread>

#include "app/announcements.h"
#include "serial/serial.h"
#include "sim/gateway_sim.h"
#include "station.h"
#include "tests/support/pty.h"

namespace veloran {
namespace {

using testing::Station;

TEST(OverTheAir, WaitsForAClearChannelThenKeysSpeaksAndUnkeys) {
    const testing::Elements e = testing::Leo();
    Station station(testing::ElementSetText("PASSAT", e),
                    testing::ModeBlock("PASSAT", "Pass Sat", 5));
    sim::GatewayBoard board;
    sim::PtyServer line;
    ASSERT_TRUE(line.open());
    line.start(&board);
    board.setCarrier(true);  // someone is talking
    board.dropCarrierAfterReads(5);
    // The board's one-second waits pass at once, and a reply time-out only
    // while the board is idle.
    testing::DeviceClock clock({{line.path(), -1, [&] { line.waitIdle(); }}});
    std::vector<bool> keyedWhileSpeaking;
    // A real board has switched long before the second the program waits;
    // the simulated one is given the time to read what was sent.
    station.speech.onSpeak = [&](const std::string&) {
        line.waitIdle();
        keyedWhileSpeaking.push_back(board.keyed());
    };

    station.clock.now = testing::Seconds(2026, 11, 21, 6);
    station.app->awakeFromNib();
    station.app->mainTimerTasks();
    const int port = station.app->addTypedPort(line.path().c_str());
    station.setSite([&](SiteRec* s) {
        s->gatewayPort = port;
        s->gatewayBaud = 5;
        s->commandDelay = 0;
        s->wants_speech = 1;
    });
    station.app->openCloseGateway(true);
    ASSERT_EQ(station.site().gateway_enabled, 1);
    station.app->NextSatelliteAnnouncement();
    station.drainAnnouncements();
    line.waitIdle();

    const std::vector<std::string> said = station.speech.said();
    ASSERT_EQ(said.size(), 1u);
    EXPECT_EQ(said[0].rfind("Pass Sat will be visible in ", 0), 0u) << said[0];
    EXPECT_EQ(keyedWhileSpeaking, std::vector<bool>{true});
    EXPECT_FALSE(board.keyedOverCarrier());
    EXPECT_FALSE(board.keyed());
    EXPECT_EQ(board.carrierReads(), 6);  // four busy, then clear twice a second apart

    const std::vector<std::string> commands = board.commands();
    ASSERT_GE(commands.size(), 5u);
    EXPECT_EQ(commands.front(), "CPA11111110");
    EXPECT_EQ(commands[1], "RPA1");
    const std::vector<std::string> tail(commands.end() - 4, commands.end());
    EXPECT_EQ(tail, (std::vector<std::string>{"CPA11111110", "RESPA0", "CPA11111110", "SETPA0"}));
    line.stop();
}

TEST(OverTheAir, QuittingDoesNotWaitOutABusyChannel) {
    // Someone holds the channel for good: the announcement waits, and the
    // program is told to quit. The wait gives up at once instead of after its
    // six-minute limit, and the transmitter is never keyed.
    sim::GatewayBoard board;
    sim::PtyServer line;
    ASSERT_TRUE(line.open());
    line.start(&board);
    board.setCarrier(true);
    SetCommandDelay(0);
    const int fd = openSerialPort(line.path().c_str(), 5, 0, false);
    ASSERT_NE(fd, -1);
    AnnouncementQueue queue;
    AnnouncementSettings settings;
    settings.gatewayFd = fd;
    testing::RecordingSpeech speech;
    testing::RecordingSounds sounds;
    testing::FastSleeper sleeper;
    GatewayLine gateway;
    AnnouncementSpeaker speaker(&queue, &settings, &speech, &sounds, &sleeper, &gateway, nullptr);
    Announcement warning;
    warning.text = "Pass Sat will be visible in 5 minutes,";
    warning.transmit = true;
    warning.waitForCOR = true;
    queue.queueAnnouncement(warning);
    speaker.start();
    for (int i = 0; i < 1000 && board.carrierReads() < 2; ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    ASSERT_GE(board.carrierReads(), 2) << "the thread is waiting for the channel";
    speaker.stop();  // returns within a poll of the board
    EXPECT_FALSE(board.keyed());
    EXPECT_FALSE(board.keyedOverCarrier());
    EXPECT_TRUE(speech.said().empty()) << "nothing is spoken on the way out";
    closeSerialPort(fd, false);
    line.stop();
}

}  // namespace
}  // namespace veloran

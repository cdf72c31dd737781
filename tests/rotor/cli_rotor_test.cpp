// `veloran-cli rotor` against a simulated controller, as an operator runs it
// to check a rotor's wiring.

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdio>
#include <string>

#include "sim/rotor_sim.h"
#include "tests/support/run.h"

namespace veloran {
namespace {

using CliRun = testing::CommandRun;

CliRun Cli(const std::string& arguments) {
    return testing::Run(std::string(VELORAN_CLI) + " rotor " + arguments);
}

class CliRotor : public ::testing::Test {
  protected:
    void Open(sim::RotorProtocol protocol) {
        rotor.clock = [] { return 0.0; };  // the rotator stays where it is
        ASSERT_TRUE(sim::OpenRotorSim(&rotor, protocol, 6.0, 10.0, 20.0));
        sim::StartRotorSimThread(&rotor);
    }
    void TearDown() override { sim::CloseRotorSim(&rotor); }
    std::string port() const { return std::string(" --port ") + rotor.slavePath; }
    sim::RotorSim rotor;
};

TEST_F(CliRotor, PointsAndReadsBackAGS232) {
    Open(sim::RotorProtocol::kGS232);
    const CliRun run = Cli("--type 0" + port() + " --read 120.4 30.4");
    EXPECT_EQ(run.status, 0) << run.out;
    EXPECT_NE(run.out.find("sent azimuth 120 elevation 30"), std::string::npos) << run.out;
    EXPECT_NE(run.out.find("read back azimuth 10 elevation 20"), std::string::npos) << run.out;
    ASSERT_TRUE(sim::WaitForRotorSimBytes(&rotor, 12, 30000));
    EXPECT_EQ(sim::RotorSimSnapshot(&rotor).received, "W120 030\rC2\r");
}

TEST_F(CliRotor, DebugShowsTheTraffic) {
    Open(sim::RotorProtocol::kGS232);
    const CliRun run = Cli("--type 0" + port() + " --debug 5 -3");
    EXPECT_EQ(run.status, 0) << run.out;
    EXPECT_NE(run.out.find("->09:W005 000<0D>"), std::string::npos) << run.out;
}

TEST_F(CliRotor, StartsAndStopsComputerControl) {
    Open(sim::RotorProtocol::kSatEL);
    const CliRun run = Cli("--type 8" + port() + " 120 30");
    EXPECT_EQ(run.status, 0) << run.out;
    ASSERT_TRUE(sim::WaitForRotorSimBytes(&rotor, 12, 30000));
    EXPECT_EQ(sim::RotorSimSnapshot(&rotor).received, "G\rP120 30\rS\r");
}

TEST_F(CliRotor, ReadBackOnAControllerThatCannotReport) {
    Open(sim::RotorProtocol::kEasyComm);
    const CliRun run = Cli("--type 4" + port() + " --read 1 2");
    EXPECT_EQ(run.status, 1);
    EXPECT_NE(run.out.find("cannot report its position"), std::string::npos) << run.out;
}

TEST(CliRotorMistakes, ClearMessages) {
    CliRun run = Cli("--type 0 --port /nonexistent/ttyUSB7 1 2");
    EXPECT_EQ(run.status, 1);
    EXPECT_NE(run.out.find("cannot open rotor port /nonexistent/ttyUSB7"), std::string::npos)
        << run.out;
    run = Cli("--type 12 --port /dev/null 1 2");
    EXPECT_EQ(run.status, 2);
    EXPECT_NE(run.out.find("--type wants a whole number from 0 to 11"), std::string::npos)
        << run.out;
    run = Cli("--type 0 --port /dev/null north 2");
    EXPECT_EQ(run.status, 2);
    EXPECT_NE(run.out.find("AZ wants a number"), std::string::npos) << run.out;
    run = Cli("--port /dev/null 1 2");
    EXPECT_EQ(run.status, 2);
    run = Cli("--type 0 --port /dev/null 1");
    EXPECT_EQ(run.status, 2);
}

}  // namespace
}  // namespace veloran

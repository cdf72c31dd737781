// The rotor's reported position for the sky plot: read back every few ticks
// from a simulated GS-232, and not at all once the setting is off.

#include <gtest/gtest.h>

#include "data/settings.h"
#include "sim/rotor_sim.h"
#include "station.h"
#include "tests/support/pty.h"

namespace veloran {
namespace {

constexpr int kGs232 = 0;

TEST(RotorReadBack, EveryFewTicksUnlessTurnedOff) {
    testing::Elements e;
    testing::Station station(testing::ElementSetText("READSAT", e), "");
    sim::RotorSim rotor;
    ASSERT_TRUE(sim::OpenRotorSim(&rotor, sim::RotorProtocol::kGS232, 6.0, 123.0, 45.0));
    sim::StartRotorSimThread(&rotor);
    struct Closer {
        sim::RotorSim* r;
        ~Closer() { sim::CloseRotorSim(r); }
    } closeRotor{&rotor};
    testing::DeviceClock clock({{rotor.slavePath, -1, [&] { sim::WaitForRotorSimIdle(&rotor); }}});
    station.clock.now = testing::Seconds(2026, 11, 21, 0);
    station.app->awakeFromNib();
    const int rotorPort = station.app->addTypedPort(rotor.slavePath);
    station.setSite([&](SiteRec* s) {
        s->rotor = kGs232;
        s->rotorPort = rotorPort;
        s->rotorBaud = 5;
    });
    station.app->openCloseRotor(true);
    ASSERT_EQ(station.site().rotor_enabled, 1);

    double az = 0, el = 0;
    for (int i = 0; i < 6 && !station.app->rotorPosition(&az, &el); ++i)
        station.tickAt(station.clock.now + 1);
    ASSERT_EQ(station.app->rotorPosition(&az, &el), 1);
    const sim::RotorSimState now = sim::RotorSimSnapshot(&rotor);
    EXPECT_NEAR(az, now.currentAzimuth, 1.0);
    EXPECT_NEAR(el, now.currentElevation, 1.0);

    station.defaults.setBool(prefkeys::kRotorReadBack, false);
    station.tickAt(station.clock.now + 1);
    EXPECT_EQ(station.app->rotorPosition(&az, &el), 0);
}

}  // namespace
}  // namespace veloran

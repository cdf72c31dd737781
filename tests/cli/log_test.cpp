// veloran-cli log: a contact logged during a pass goes out as ADIF for LoTW
// and comes back the same through an import into a fresh data folder.

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdio>
#include <cstring>
#include <string>

#include "../data/scratch.h"
#include "../logbook/sample.h"
#include "logbook/livecontact.h"
#include "logbook/store.h"

namespace veloran {
namespace {

struct CliRun {
    int status;
    std::string out;
};

CliRun Cli(const std::string& arguments) {
    const std::string command = std::string(VELORAN_CLI) + " " + arguments + " 2>&1";
    CliRun run{-1, ""};
    FILE* pipe = popen(command.c_str(), "r");
    if (pipe == nullptr) return run;
    char buf[4096];
    size_t n = 0;
    while ((n = std::fread(buf, 1, sizeof buf, pipe)) > 0) run.out.append(buf, n);
    const int status = pclose(pipe);
    run.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return run;
}

TEST(CliLog, APassContactRoundTripsThroughAdif) {
    testing::ScratchDir station, fresh, config;
    ModeRec fm{};
    std::strcpy(fm.channel, "FM Rptr");
    fm.commMode = 2;  // J_FM
    fm.upFreq = 145.99;
    fm.downFreq = 437.8;
    LiveContactState state;
    state.satellite = "ISS";
    FillMode(&fm, &state);
    state.nowUTC = testing::Utc(2026, 11, 21, 18, 30, 5);
    state.myCall = "VE3XYZ";
    state.myGrid = "FN03gr";
    ContactEntry entry{"KH6ABC", "59", "57", "BL11bh", "loud", "", ""};
    ContactRec logged;
    ASSERT_EQ(MakeContact(&state, &entry, nullptr, &logged), 1);
    LogStore store;
    ASSERT_EQ(OpenLogStore(LogbookPath(station.path()), &store), 1);
    ASSERT_EQ(AddContact(&store, &logged), 1);
    CloseLogStore(&store);

    const std::string adi = station.file("lotw.adi");
    const std::string dirs = " --config-dir " + config.path() + " --data-dir ";
    CliRun run = Cli("log export --adif " + adi + dirs + station.path());
    ASSERT_EQ(run.status, 0) << run.out;
    const std::string text = testing::ReadText(adi);
    for (const char* field : {"<PROP_MODE:3>SAT", "<SAT_NAME:5>ARISS", "<FREQ:10>145.990000",
                              "<BAND:2>2m", "<FREQ_RX:10>437.800000", "<BAND_RX:4>70cm"})
        EXPECT_NE(text.find(field), std::string::npos) << field << " missing from\n" << text;

    run = Cli("log import " + adi + dirs + fresh.path());
    ASSERT_EQ(run.status, 0) << run.out;
    EXPECT_NE(run.out.find("1 contact imported"), std::string::npos) << run.out;
    ASSERT_EQ(OpenLogStore(LogbookPath(fresh.path()), &store), 1);
    std::vector<ContactRec> back;
    ASSERT_EQ(ListContacts(&store, 0, &back), 1);
    CloseLogStore(&store);
    logged.country = "Hawaii";  // the import names the country
    logged.dxcc = 110;
    EXPECT_SAME_CONTACT(back[0], logged);

    run = Cli("log list --since 2026-11-22" + dirs + fresh.path());
    EXPECT_EQ(run.out, "0 contacts\n");
    run = Cli("log export" + dirs + fresh.path());
    EXPECT_EQ(run.status, 2);
}

}  // namespace
}  // namespace veloran

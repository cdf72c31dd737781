// veloran-cli as a user runs it: its output, its exit status, its messages.

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <string>

#include "tests/support/element_sets.h"

namespace veloran {
namespace {

struct CliRun {
    int status;
    std::string out;  // standard output and standard error together
};

CliRun Cli(const std::string& arguments) {
    // Private, empty folders: nothing of the machine's user leaks in or is written.
    const std::string folders = "VELORAN_DATA_DIR=" + ::testing::TempDir() +
                                "cli_data VELORAN_CONFIG_DIR=" + ::testing::TempDir() +
                                "cli_config ";
    const std::string command = folders + std::string(VELORAN_CLI) + " " + arguments + " 2>&1";
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

int Lines(const std::string& text) {
    int n = 0;
    for (char c : text) n += c == '\n';
    return n;
}

const std::string kSample = std::string(VELORAN_RESOURCE_DIR) + "/kepler.dat";

TEST(Cli, PassesOfTheBundledSample) {
    const CliRun run = Cli("passes " + kSample + " --time 2026-11-21T12:00:00Z --hours 6");
    ASSERT_EQ(run.status, 0) << run.out;
    EXPECT_NE(run.out.find(
                  "Passes from 2026-11-21T12:00:00Z for 6 hours, site 43.7064 N 79.2442 W 200 m"),
              std::string::npos)
        << run.out;
    EXPECT_NE(run.out.find("AO-7"), std::string::npos);
    EXPECT_NE(run.out.find("FO-29"), std::string::npos);
    EXPECT_GT(Lines(run.out), 5);
}

TEST(Cli, PassesOfASyntheticSatelliteMatchTheEngine) {
    // One polar LEO; its listed passes must each last minutes and follow
    // one another by roughly an orbital period or more.
    testing::Elements e;
    e.inclination = 97.6;
    e.meanMotion = 14.8;
    const std::string path = ::testing::TempDir() + "cli_polar.dat";
    std::ofstream(path) << "HEADER FROM THE TESTS\n" << testing::ElementSetText("POLAR", e);
    const CliRun run =
        Cli("passes " + path + " --site 60,25,0 --time 2026-11-17T00:00:00Z --hours 24");
    ASSERT_EQ(run.status, 0) << run.out;
    int passes = 0;
    size_t at = 0;
    while ((at = run.out.find("\nPOLAR", at + 1)) != std::string::npos) ++passes;
    // From 60 degrees north a sun-synchronous LEO is seen on most revolutions.
    EXPECT_GE(passes, 6) << run.out;
    EXPECT_LE(passes, 15) << run.out;
}

TEST(Cli, LookShowsOneSatellite) {
    const CliRun run =
        Cli("look " + kSample + " --sat iss --time 2026-11-21T12:00:00Z --site 51.5,-0.13,20");
    ASSERT_EQ(run.status, 0) << run.out;
    EXPECT_NE(run.out.find("site 51.5000 N 0.1300 W 20 m"), std::string::npos) << run.out;
    EXPECT_NE(run.out.find("\nISS "), std::string::npos);
    EXPECT_EQ(Lines(run.out), 3) << run.out;
}

TEST(Cli, MistakesGetOneLineAndStatusTwo) {
    const char* cases[] = {
        "look /no/such/kepler.dat",
        "passes A B",
        "look RES --time yesterday",
        "look RES --time 2041-01-01T00:00:00Z",
        "look RES --time 2026-13-01",
        "look RES --site 43.7",
        "look RES --site 95,0",
        "look RES --site north,west",
        "passes RES --hours many",
        "passes RES --hours -3",
        "look RES --sat NOSUCHSAT",
        "look RES --time",
        "frobnicate",
    };
    for (std::string c : cases) {
        const size_t res = c.find("RES");
        if (res != std::string::npos) c.replace(res, 3, kSample);
        const CliRun run = Cli(c);
        EXPECT_EQ(run.status, 2) << c << "\n" << run.out;
        EXPECT_EQ(Lines(run.out), 1) << c << "\n" << run.out;
        EXPECT_EQ(run.out.rfind("veloran-cli: ", 0), 0u) << c << "\n" << run.out;
    }
}

TEST(Cli, Help) {
    const CliRun run = Cli("--help");
    EXPECT_EQ(run.status, 0);
    EXPECT_NE(run.out.find("passes [FILE]"), std::string::npos);
    EXPECT_EQ(Cli("look --help").status, 0);
}

TEST(Cli, HostileElementFileDoesNotCrash) {
    const std::string path = ::testing::TempDir() + "cli_hostile.dat";
    {
        std::ofstream f(path, std::ios::binary);
        f << "AB\n" << std::string(100000, 'x') << "\n";
        for (int i = 0; i < 256; ++i) f << static_cast<char>(i);
        f << "\nNAME\n1 nan\n2 nan\n";
    }
    const CliRun run = Cli("look " + path + " --time 2026-11-21T12:00:00Z");
    EXPECT_EQ(run.status, 0) << run.out;
}

// A CelesTrak-style file with long names and an OMM JSON file leave element
// sets that look shows alike; a bad file is refused and changes nothing.
TEST(Cli, KepsImportOfLongNamesAndOmmLooksTheSame) {
    const std::string samples = std::string(VELORAN_RESOURCE_DIR) + "/samples/";
    const std::string base = ::testing::TempDir() + "cli_keps_";
    std::string looks[2];
    const char* files[] = {"samples-long.tle", "samples.json"};
    for (int i = 0; i < 2; ++i) {
        const std::string folders = " --data-dir " + base + std::to_string(i) + " --config-dir " +
                                    base + "config" + std::to_string(i);
        const CliRun import = Cli("keps import " + samples + files[i] + folders);
        ASSERT_EQ(import.status, 0) << import.out;
        EXPECT_NE(import.out.find("3 element sets installed"), std::string::npos) << import.out;
        const CliRun look = Cli("look --time 2026-11-20T00:00:00Z" + folders);
        ASSERT_EQ(look.status, 0) << look.out;
        looks[i] = look.out;

        const CliRun bad = Cli("keps import " + samples + "satnogs-transmitters.json" + folders);
        EXPECT_EQ(bad.status, 2) << bad.out;
        EXPECT_NE(bad.out.find("The current element sets are kept"), std::string::npos) << bad.out;
        EXPECT_EQ(Cli("look --time 2026-11-20T00:00:00Z" + folders).out, looks[i]);
    }
    EXPECT_EQ(looks[0], looks[1]);
    for (const char* name : {"\nVS-1 ", "\nSAMPLESAT ", "\nSAMPLE-3 "})
        EXPECT_NE(looks[0].find(name), std::string::npos) << name << looks[0];

    const std::string folders = " --data-dir " + base + "0 --config-dir " + base + "config0";
    const CliRun satnogs =
        Cli("modes import-satnogs " + samples + "satnogs-transmitters.json" + folders);
    ASSERT_EQ(satnogs.status, 0) << satnogs.out;
    const CliRun modes = Cli("look --modes --sat VS-1 --time 2026-11-20T00:00:00Z" + folders);
    EXPECT_NE(modes.out.find("Telemetry 9k6"), std::string::npos) << modes.out;
}

}  // namespace
}  // namespace veloran

// veloran-cli as a user runs it: its output, its exit status, its messages.

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "tests/integration/hamlib_daemon.h"
#include "tests/support/element_sets.h"
#include "tests/support/run.h"

namespace veloran {
namespace {

using CliRun = testing::CommandRun;

CliRun Cli(const std::string& arguments) {
    return testing::Run(std::string(VELORAN_CLI) + " " + arguments);
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
    const testing::Elements e = testing::PolarLeo();
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

std::vector<std::string> Words(const std::string& line, char separator) {
    std::vector<std::string> words;
    std::string word;
    for (char c : line + separator) {
        if (c != separator) {
            word += c;
        } else if (separator == ',' || !word.empty()) {
            words.push_back(word);
            word.clear();
        }
    }
    return words;
}

TEST(Cli, PassesAsCsvMatchTheTable) {
    const std::string common =
        "passes " + kSample +
        " --time 2026-11-21T12:00:00Z --days 2 --sat ao-7,SO-50 --min-elev 10";
    const CliRun table = Cli(common), csv = Cli(common + " --csv");
    ASSERT_EQ(table.status, 0) << table.out;
    ASSERT_EQ(csv.status, 0) << csv.out;
    std::vector<std::vector<std::string>> rows, lines;
    for (const std::string& line : Words(csv.out, '\n')) rows.push_back(Words(line, ','));
    for (const std::string& line : Words(table.out, '\n')) lines.push_back(Words(line, ' '));
    ASSERT_EQ(rows.size() + 1, lines.size()) << "a title line above the table";
    EXPECT_EQ(rows[0][0], "name");
    ASSERT_GT(rows.size(), 3u) << csv.out;
    for (size_t i = 1; i < rows.size(); ++i) {
        const std::vector<std::string>& r = rows[i];
        std::vector<std::string> t = lines[i + 1];
        ASSERT_EQ(r.size(), 12u) << csv.out;
        if (t[4] == "beyond") {  // a pass still up at the end: no LOS, length or LOS azimuth
            t.erase(t.begin() + 4, t.begin() + 6);
            t.insert(t.begin() + 4, {"", ""});
            t[8] = "";
        }
        ASSERT_EQ(t.size(), 10u) << lines[i + 1][0];
        EXPECT_TRUE(r[0] == "AO-7" || r[0] == "SO-50") << r[0];
        for (int c = 0; c < 9; ++c) EXPECT_EQ(r[c], t[c]) << "column " << c << " of row " << i;
        std::string lit;
        for (const std::string& word : Words(t[9], '/')) lit += word == "yes" ? "1" : "0";
        EXPECT_EQ(r[9] + r[10] + r[11], lit) << t[9];
        EXPECT_GE(std::stod(r[3]), 10.0) << "below the minimum elevation";
    }
}

TEST(Cli, SkyPlotOfTheNextPass) {
    const std::string svg = ::testing::TempDir() + "sky.svg";
    const CliRun run = Cli("sky " + kSample +
                           " --sat AO-7 --time 2026-11-21T12:00:00Z --target 20,170 --out " + svg);
    ASSERT_EQ(run.status, 0) << run.out;
    std::ifstream file(svg);
    const std::string text((std::istreambuf_iterator<char>(file)),
                           std::istreambuf_iterator<char>());
    for (const char* cls :
         {"class=\"track\"", "class=\"aos\"", "class=\"los\"", "class=\"target\"", "AO-7"})
        EXPECT_NE(text.find(cls), std::string::npos) << cls;
    EXPECT_EQ(Cli("sky " + kSample + " --out " + svg).status, 2) << "no satellite named";
    EXPECT_EQ(Cli("sky " + kSample + " --sat AO-7 --target 20").status, 2);
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
        "passes RES --days 31",
        "passes RES --days 1 --hours 3",
        "passes RES --min-elev 91",
        "passes RES --sat AO-7,NOSUCHSAT",
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

// Garbage, a folder and a device are refused at once with exit 2, never
// read for ever or shown as rows of nan.
TEST(Cli, HostileElementFilesAreRefused) {
    const std::string path = ::testing::TempDir() + "cli_hostile.dat";
    {
        std::ofstream f(path, std::ios::binary);
        f << "AB\n" << std::string(100000, 'x') << "\n";
        for (int i = 0; i < 256; ++i) f << static_cast<char>(i);
        f << "\nNAME\n1 nan\n2 nan\n";
    }
    const std::vector<std::pair<std::string, std::string>> cases = {
        {path, "holds no two-line element sets"},
        {::testing::TempDir(), "is a folder, not a file"},
        {"/dev/null", "is not a regular file"},
        {"--modes=/ --sat AO-7", "cannot open modes file /: is a folder"},
    };
    for (const auto& [file, message] : cases) {
        const CliRun run = Cli("look " + file + " --time 2026-11-21T12:00:00Z");
        EXPECT_EQ(run.status, 2) << file << ": " << run.out;
        EXPECT_NE(run.out.find(message), std::string::npos) << run.out;
        EXPECT_EQ(run.out.find("nan"), std::string::npos) << run.out;
    }
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

// The hand checks reach a rigctld and a rotctld (Hamlib's dummies) by address.
TEST(Cli, RadioAndRotorThroughHamlibDaemons) {
    testing::HamlibDaemon rig("rigctld", {}), rotator("rotctld", {});
    ASSERT_TRUE(rig.start());
    ASSERT_TRUE(rotator.start());
    const CliRun radio = Cli("radio --type hamlib:2 --port " + rig.address() +
                             " --up 435.1 --down 145.9 --mode JA_SSB --force");
    ASSERT_EQ(radio.status, 0) << radio.out;
    testing::RigctldPeek peek(rig.address());
    ASSERT_TRUE(peek.open());
    EXPECT_EQ(peek.frequency(RIG_VFO_A), 145900000);  // downlink on the receive VFO
    EXPECT_EQ(peek.frequency(RIG_VFO_B), 435100000);
    const CliRun rotor = Cli("rotor --type hamlib:2 --port " + rotator.address() + " 123 45");
    EXPECT_EQ(rotor.status, 0) << rotor.out;
    EXPECT_NE(rotor.out.find("sent azimuth 123 elevation 45"), std::string::npos) << rotor.out;
    EXPECT_EQ(Cli("rotor --type hamlib:x --port " + rotator.address() + " 1 1").status, 2);
}

}  // namespace
}  // namespace veloran

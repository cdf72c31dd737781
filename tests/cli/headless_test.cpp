// veloran --headless as a station computer runs it: status lines every
// second, the radio driven on its port, a clean quit on SIGTERM that saves
// the settings but not the one-off options.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <string>
#include <vector>

#include "data/files.h"

namespace veloran {
namespace {

// A child process with its standard output (and error) on a pipe.
struct Child {
    pid_t pid = -1;
    int out = -1;
    std::string text;

    explicit Child(const std::vector<std::string>& argv) {
        int pipeFds[2];
        if (pipe(pipeFds) != 0) return;
        pid = fork();
        if (pid == 0) {
            dup2(pipeFds[1], 1);
            dup2(pipeFds[1], 2);
            close(pipeFds[0]);
            std::vector<char*> args;
            for (const std::string& a : argv) args.push_back(const_cast<char*>(a.c_str()));
            args.push_back(nullptr);
            execv(args[0], args.data());
            _exit(127);
        }
        close(pipeFds[1]);
        out = pipeFds[0];
    }
    ~Child() {
        if (pid > 0) {
            kill(pid, SIGKILL);
            waitpid(pid, nullptr, 0);
        }
        if (out >= 0) close(out);
    }

    // Reads until `count` occurrences of `what` have arrived; false after
    // about `seconds` (a bound, not a measurement).
    bool waitFor(const std::string& what, int count, int seconds) {
        const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(seconds);
        while (std::chrono::steady_clock::now() < end) {
            int seen = 0;
            for (size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + 1))
                ++seen;
            if (seen >= count) return true;
            pollfd p{out, POLLIN, 0};
            if (poll(&p, 1, 200) > 0) {
                char buf[4096];
                const ssize_t n = read(out, buf, sizeof buf);
                if (n <= 0) return false;
                text.append(buf, static_cast<size_t>(n));
            }
        }
        return false;
    }

    int quit(int sig) {
        kill(pid, sig);
        int status = 0;
        waitpid(pid, &status, 0);
        pid = -1;
        char buf[4096];
        ssize_t n;
        while ((n = read(out, buf, sizeof buf)) > 0) text.append(buf, static_cast<size_t>(n));
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }
};

TEST(Headless, PrintsAStatusLineEverySecondAndQuitsCleanly) {
    const std::string root = ::testing::TempDir() + "headless_station";
    Child sim({VELORAN_SIM, "radio", "ft847"});
    ASSERT_TRUE(sim.waitFor("/dev/", 1, 10)) << sim.text;
    const std::string port = sim.text.substr(0, sim.text.find('\n'));

    Child station({VELORAN, "--headless", "--data-dir", root + "/data", "--config-dir",
                   root + "/config", "--sat", "FO-29", "--radio", "1", "--radio-port", port});
    ASSERT_TRUE(station.waitFor(" UTC  FO-29 ", 3, 30)) << station.text;
    EXPECT_NE(station.text.find("Down 435."), std::string::npos) << station.text;
    EXPECT_NE(station.text.find("Site 43.7064 N 79.2442 W 200 m; elements of FO-29 "),
              std::string::npos)
        << station.text;
    EXPECT_NE(station.text.find("; radio FT-847 on " + port + ";"), std::string::npos)
        << station.text;
    EXPECT_EQ(station.quit(SIGTERM), 0) << station.text;

    std::string settings;
    ASSERT_TRUE(ReadWholeFile(root + "/config/Veloran.conf", &settings)) << "saved at quit";
    EXPECT_NE(settings.find("main_sat_num=2"), std::string::npos) << settings;
    EXPECT_EQ(settings.find("vfo_enabled=true"), std::string::npos)
        << "the one-off --radio-port is not kept";
    EXPECT_EQ(settings.find("radioport="), std::string::npos) << settings;
    EXPECT_TRUE(FileExists(root + "/data/kepler.dat")) << "seeded at the first start";
}

// Each mistake exits 2 at once with a message naming what was wrong and the
// choices there are.
TEST(Headless, MistakesAreRefusedNamingTheChoices) {
    const std::string data = ::testing::TempDir() + "headless_bad/data";
    const std::string config = ::testing::TempDir() + "headless_bad/config";
    const std::vector<std::pair<std::vector<std::string>, std::string>> cases = {
        {{"--radio", "seven"}, "--radio wants a number"},
        {{"--frobnicate"}, "veloran: unknown option --frobnicate"},
        {{"--radio", "17"}, "from 0 to 16 (--list-radios"},
        {{"--rotor", "-1"}, "from 0 to 11 (--list-rotors"},
        {{"--radio", "hamlib:IC9700"}, "--radio wants hamlib: and a Hamlib model number"},
        {{"--baud", "1234"}, "one of 300, 600,"},
        {{"--icom-address", "0x100"}, "0x00 to 0xFF"},
        {{"--site", "95,0"}, "latitude must lie within"},
        {{"--time", "yesterday"}, "--time wants ISO 8601"},
        {{"--sat", "NOSUCHSAT", "--data-dir", data, "--config-dir", config},
         "no satellite named NOSUCHSAT in " + data + "/kepler.dat; it holds AO-7, FO-29"},
        {{"--track", "AO-7,NOSUCHSAT", "--data-dir", data, "--config-dir", config},
         "no satellite named NOSUCHSAT"},
    };
    for (const auto& [words, message] : cases) {
        std::vector<std::string> argv = {VELORAN, "--headless"};
        argv.insert(argv.end(), words.begin(), words.end());
        Child station(argv);
        station.waitFor(message, 1, 30);
        EXPECT_EQ(station.quit(0), 2) << words[0] << ": " << station.text;
        EXPECT_NE(station.text.find(message), std::string::npos) << station.text;
    }
}

TEST(Headless, ListsTheModelIndices) {
    Child station({VELORAN, "--headless", "--list-radios", "--list-rotors"});
    station.waitFor("GS-232B azimuth", 1, 30);
    EXPECT_EQ(station.quit(0), 0);
    // Hamlib's models follow the built-in ones, by number, maker and model.
    EXPECT_NE(station.text.find("hamlib:3081  Icom IC-9700\n"), std::string::npos);
    EXPECT_NE(station.text.find("hamlib:603  Yaesu GS-232B\n"), std::string::npos);
    EXPECT_NE(station.text.find(" 7  IC-910\n"), std::string::npos) << station.text;
    EXPECT_NE(station.text.find(" 0  Yaesu GS-232\n"), std::string::npos) << station.text;
}

TEST(Headless, ASecondStationOnTheSameSettingsExitsNamingTheFirst) {
    const std::string root = ::testing::TempDir() + "headless_twice";
    const std::vector<std::string> argv = {VELORAN,        "--headless",   "--data-dir",
                                           root + "/data", "--config-dir", root + "/config"};
    Child first(argv);
    ASSERT_TRUE(first.waitFor(" UTC  ", 1, 30)) << first.text;
    Child second(argv);
    second.waitFor("\n", 1, 30);
    EXPECT_EQ(second.quit(0), 1) << second.text;
    EXPECT_NE(second.text.find("(process " + std::to_string(first.pid) + ")"), std::string::npos)
        << second.text;
    EXPECT_EQ(first.quit(SIGTERM), 0);
}

}  // namespace
}  // namespace veloran

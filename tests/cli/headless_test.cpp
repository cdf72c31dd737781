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
    EXPECT_EQ(station.quit(SIGTERM), 0) << station.text;

    std::string settings;
    ASSERT_TRUE(ReadWholeFile(root + "/config/Veloran.conf", &settings)) << "saved at quit";
    EXPECT_NE(settings.find("main_sat_num=2"), std::string::npos) << settings;
    EXPECT_EQ(settings.find("vfo_enabled=true"), std::string::npos)
        << "the one-off --radio-port is not kept";
    EXPECT_EQ(settings.find("radioport="), std::string::npos) << settings;
    EXPECT_TRUE(FileExists(root + "/data/kepler.dat")) << "seeded at the first start";
}

TEST(Headless, MistakesAreRefused) {
    for (const std::vector<std::string>& argv :
         {std::vector<std::string>{VELORAN, "--headless", "--radio", "seven"},
          std::vector<std::string>{VELORAN, "--headless", "--frobnicate"},
          std::vector<std::string>{VELORAN, "--headless", "--sat", "NOSUCHSAT", "--data-dir",
                                   ::testing::TempDir() + "headless_bad/data", "--config-dir",
                                   ::testing::TempDir() + "headless_bad/config"}}) {
        Child station(argv);
        int status = 0;
        station.waitFor("\n", 1, 30);
        waitpid(station.pid, &status, 0);
        station.pid = -1;
        EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 2)
            << argv.back() << ": " << station.text;
    }
}

}  // namespace
}  // namespace veloran

// veloran-sim driven by the program: the simulator prints its device path,
// veloran-cli radio tunes it as the tracker would, and the simulator's
// final state shows the frequencies it was given.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <string>
#include <vector>

#include "tests/support/run.h"

namespace {

// A child process with its standard output and error on pipes.
struct Child {
    pid_t pid = -1;
    FILE* out = nullptr;
    int err = -1;

    explicit Child(const std::vector<const char*>& argv) {
        int o[2], e[2];
        if (pipe(o) != 0 || pipe(e) != 0) return;
        pid = fork();
        if (pid == 0) {
            dup2(o[1], 1);
            dup2(e[1], 2);
            close(o[0]);
            close(e[0]);
            std::vector<char*> args;
            for (const char* a : argv) args.push_back(const_cast<char*>(a));
            args.push_back(nullptr);
            execv(args[0], args.data());
            _exit(127);
        }
        close(o[1]);
        close(e[1]);
        out = fdopen(o[0], "r");
        err = e[0];
    }
    // Stops the child and returns what it wrote on standard error.
    std::string stop() {
        if (pid > 0) kill(pid, SIGTERM);
        std::string text;
        char buf[512];
        ssize_t n;
        while ((n = read(err, buf, sizeof buf)) > 0) text.append(buf, static_cast<size_t>(n));
        int status = 0;
        if (pid > 0) waitpid(pid, &status, 0);
        pid = -1;
        return text;
    }
    ~Child() {
        if (pid > 0) stop();
        if (out) fclose(out);
        if (err != -1) close(err);
    }
};

std::string DevicePath(Child* sim) {
    char line[256] = {0};
    if (!sim->out || !std::fgets(line, sizeof line, sim->out)) return "";
    std::string path = line;
    while (!path.empty() && (path.back() == '\n' || path.back() == '\r')) path.pop_back();
    return path;
}

TEST(SimulatorWithTheProgram, Ft847IsTunedByVeloranCliRadio) {
    Child sim({VELORAN_SIM_EXE, "radio", "ft847"});
    const std::string path = DevicePath(&sim);
    ASSERT_EQ(path.rfind("/dev/", 0), 0u) << path;
    const auto run =
        veloran::testing::Run(std::string(VELORAN_CLI_EXE) + " radio --type 1 --port " + path +
                              " --delay 0 --up 145.9 --down 435.8 --mode JA_SSB --force");
    EXPECT_EQ(run.status, 0) << run.out;
    EXPECT_NE(run.out.find("sent; the radio answers"), std::string::npos) << run.out;
    const std::string log = sim.stop();
    EXPECT_NE(log.find("sat rx 435800000 Hz mode 01, sat tx 145900000 Hz mode 00"),
              std::string::npos)
        << log;
}

TEST(SimulatorWithTheProgram, SilentRadioIsReported) {
    Child sim({VELORAN_SIM_EXE, "radio", "ft847", "--silent"});
    const std::string path = DevicePath(&sim);
    ASSERT_FALSE(path.empty());
    const auto run =
        veloran::testing::Run(std::string(VELORAN_CLI_EXE) + " radio --type 1 --port " + path +
                              " --delay 0 --up 145.9 --down 435.8 --mode JA_SSB");
    EXPECT_EQ(run.status, 1);
    EXPECT_NE(run.out.find("does not answer"), std::string::npos) << run.out;
}

// Every kind of simulator, as a table: the command that starts it.
const std::vector<std::vector<const char*>> kEveryModel = {
    {VELORAN_SIM_EXE, "radio", "ft847"},  {VELORAN_SIM_EXE, "radio", "ic910"},
    {VELORAN_SIM_EXE, "radio", "ts2000"}, {VELORAN_SIM_EXE, "rotor", "gs232"},
    {VELORAN_SIM_EXE, "gateway"},
};

std::vector<const char*> With(std::vector<const char*> argv, std::vector<const char*> more) {
    argv.insert(argv.end(), more.begin(), more.end());
    return argv;
}

TEST(SimulatorWithTheProgram, VerboseTracesTheTrafficOfEveryModel) {
    for (const auto& model : kEveryModel) {
        Child sim(With(model, {"--verbose"}));
        const std::string path = DevicePath(&sim);
        ASSERT_EQ(path.rfind("/dev/", 0), 0u) << model[2];
        const int fd = open(path.c_str(), O_RDWR | O_NOCTTY);
        ASSERT_GE(fd, 0);
        const unsigned char bytes[5] = {0x00, 0x01, 0x02, 0x03, 0x04};
        ASSERT_EQ(write(fd, bytes, sizeof bytes), 5);
        usleep(300000);  // the simulators trace what they have read every 50 ms
        close(fd);
        std::string traced;
        const std::string log = sim.stop();
        for (size_t at = log.find("<-"); at != std::string::npos; at = log.find("<-", at + 1))
            traced += log.substr(at + 2, log.find('\n', at) - at - 2);
        EXPECT_NE(traced.find(" 00 01 02 03 04"), std::string::npos) << model[1] << ": " << log;
    }
}

TEST(SimulatorWithTheProgram, EveryModelCanVanish) {
    for (const auto& model : kEveryModel) {
        Child sim(With(model, {"--silent-after", "0", "--vanish-after", "0.2"}));
        ASSERT_EQ(DevicePath(&sim).rfind("/dev/", 0), 0u);
        int status = -1;
        waitpid(sim.pid, &status, 0);  // it exits by itself
        sim.pid = -1;
        EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << model[1];
        const std::string log = sim.stop();
        EXPECT_NE(log.find("gone silent"), std::string::npos) << log;
        EXPECT_NE(log.find("hung up"), std::string::npos) << log;
    }
}

TEST(SimulatorWithTheProgram, HelpWorksOnEverySubcommand) {
    for (const std::string words : {"--help", "radio --help", "radio ic910 --help", "rotor --help",
                                    "gateway -h", "radio ft847 --help"}) {
        const auto run = veloran::testing::Run(std::string(VELORAN_SIM_EXE) + " " + words);
        EXPECT_EQ(run.status, 0) << words << ": " << run.out;
        EXPECT_NE(run.out.find("--vanish-after N"), std::string::npos) << words << ": " << run.out;
    }
}

TEST(SimulatorWithTheProgram, UnknownModelAndMissingPortAreClearErrors) {
    auto run = veloran::testing::Run(std::string(VELORAN_SIM_EXE) + " radio ic9700");
    EXPECT_EQ(run.status, 2);
    EXPECT_NE(run.out.find("unknown radio 'ic9700'"), std::string::npos) << run.out;
    run = veloran::testing::Run(
        std::string(VELORAN_CLI_EXE) +
        " radio --type 1 --port /dev/veloran-none --up 145.9 --down 435.8 --mode J_FM");
    EXPECT_EQ(run.status, 1);
    EXPECT_NE(run.out.find("cannot open /dev/veloran-none as a serial port"), std::string::npos)
        << run.out;
}

}  // namespace

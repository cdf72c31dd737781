// Runs one of our programs as an operator would from a shell, with private,
// empty data and config folders so that nothing of the machine's user leaks
// in or is written.
#pragma once

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdio>
#include <string>

namespace veloran::testing {

struct CommandRun {
    int status;       // the exit status; -1 when the program could not run or was killed
    std::string out;  // standard output and standard error together
};

inline CommandRun Run(const std::string& command) {
    const std::string folders = "VELORAN_DATA_DIR=" + ::testing::TempDir() +
                                "run_data VELORAN_CONFIG_DIR=" + ::testing::TempDir() +
                                "run_config ";
    CommandRun run{-1, ""};
    FILE* pipe = popen((folders + command + " 2>&1").c_str(), "r");
    if (pipe == nullptr) return run;
    char buf[4096];
    size_t n = 0;
    while ((n = std::fread(buf, 1, sizeof buf, pipe)) > 0) run.out.append(buf, n);
    const int status = pclose(pipe);
    run.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return run;
}

}  // namespace veloran::testing

// Hamlib's rigctld and rotctld run as real processes on the loopback
// interface for the tests, each on a port the system hands out, and a
// test-side Hamlib connection to look at what the dummy radio was told.
#pragma once

#include <hamlib/rig.h>
#include <netinet/in.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <fstream>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

namespace veloran::testing {

// A TCP port on 127.0.0.1 that nothing listens on right now.
inline int FreeLoopbackPort() {
    const int s = socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in a{};
    a.sin_family = AF_INET;
    a.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t len = sizeof a;
    int port = 0;
    if (bind(s, reinterpret_cast<sockaddr*>(&a), sizeof a) == 0 &&
        getsockname(s, reinterpret_cast<sockaddr*>(&a), &len) == 0)
        port = ntohs(a.sin_port);
    close(s);
    return port;
}

// "rigctld -m 1" or "rotctld -m 1" (plus `extra` arguments) on 127.0.0.1.
class HamlibDaemon {
  public:
    HamlibDaemon(const char* program, std::vector<std::string> extra)
        : program_(program), extra_(std::move(extra)), port_(FreeLoopbackPort()) {}
    ~HamlibDaemon() { stop(); }

    // Starts it and waits until it takes connections; false when it never does.
    bool start() {
        std::vector<std::string> words = {
            program_, "-m", "1", "-T", "127.0.0.1", "-t", std::to_string(port_)};
        words.insert(words.end(), extra_.begin(), extra_.end());
        pid_ = fork();
        if (pid_ == 0) {
            std::vector<char*> argv;
            for (std::string& w : words) argv.push_back(w.data());
            argv.push_back(nullptr);
            freopen("/dev/null", "w", stderr);
            freopen("/dev/null", "w", stdout);
            execvp(argv[0], argv.data());
            _exit(127);
        }
        // Watched without connecting: a test connection closed just before
        // the program's own would race the daemon's double close of it.
        for (int i = 0; i < 1000; ++i) {
            if (listening()) return true;
            if (waitpid(pid_, nullptr, WNOHANG) == pid_) {
                pid_ = -1;
                return false;
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
        return false;
    }
    void stop() {
        if (pid_ <= 0) return;
        kill(pid_, SIGKILL);
        waitpid(pid_, nullptr, 0);
        pid_ = -1;
    }
    std::string address() const { return "127.0.0.1:" + std::to_string(port_); }

  private:
    // Whether a socket listens on 127.0.0.1 at our port (the kernel's table).
    bool listening() const {
        char local[32];
        std::snprintf(local, sizeof local, "0100007F:%04X", port_);
        std::ifstream table("/proc/net/tcp");
        std::string line;
        std::getline(table, line);  // the heading
        while (std::getline(table, line)) {
            std::istringstream fields(line);
            std::string slot, address, remote, state;
            fields >> slot >> address >> remote >> state;
            if (address == local && state == "0A") return true;
        }
        return false;
    }

    std::string program_;
    std::vector<std::string> extra_;
    int port_;
    pid_t pid_ = -1;
};

// The test's own look at a rigctld: the frequency and mode of one VFO.
class RigctldPeek {
  public:
    explicit RigctldPeek(const std::string& address) {
        rig_set_debug(RIG_DEBUG_NONE);
        rig_ = rig_init(2);
        rig_->state.rigport.timeout = 10000;  // rigctld may be slow on a busy machine
        std::snprintf(rig_->state.rigport.pathname, sizeof rig_->state.rigport.pathname, "%s",
                      address.c_str());
        open_ = rig_open(rig_) == RIG_OK;
    }
    ~RigctldPeek() {
        if (open_) rig_close(rig_);
        rig_cleanup(rig_);
    }
    bool open() const { return open_; }
    // Hertz on `vfo` (selected first, for a rigctld without --vfo).
    freq_t frequency(vfo_t vfo) {
        freq_t f = 0;
        if (rig_set_vfo(rig_, vfo) == RIG_OK) rig_get_freq(rig_, RIG_VFO_CURR, &f);
        return f;
    }
    rmode_t mode(vfo_t vfo) {
        rmode_t m = RIG_MODE_NONE;
        pbwidth_t w = 0;
        if (rig_set_vfo(rig_, vfo) == RIG_OK) rig_get_mode(rig_, RIG_VFO_CURR, &m, &w);
        return m;
    }
    tone_t tone(vfo_t vfo) {
        tone_t t = 0;
        if (rig_set_vfo(rig_, vfo) == RIG_OK) rig_get_ctcss_tone(rig_, RIG_VFO_CURR, &t);
        return t;
    }

  private:
    RIG* rig_ = nullptr;
    bool open_ = false;
};

}  // namespace veloran::testing

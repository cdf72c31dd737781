// Pseudo-terminal plumbing for the simulated radios.

#include "sim/sim_pty.h"

#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

#include <cerrno>

#include "sim/sim_line.h"

namespace veloran::sim {

PtyServer::~PtyServer() {
    stop();
    if (slave_ != -1) ::close(slave_);
    if (master_ != -1) ::close(master_);
}

bool PtyServer::open() {
    char name[256] = "";
    if (::openpty(&master_, &slave_, name, nullptr, nullptr) != 0) return false;
    struct termios raw;
    if (::tcgetattr(slave_, &raw) == 0) {
        ::cfmakeraw(&raw);
        ::tcsetattr(slave_, TCSANOW, &raw);
    }
    path_ = name;
    return true;
}

void PtyServer::start(SimDevice* device) {
    stopping_ = false;
    thread_ = std::thread([this, device] { serve(device); });
}

void PtyServer::stop() {
    stopping_ = true;
    if (thread_.joinable()) thread_.join();
}

void PtyServer::hangUp() {
    stop();
    if (slave_ != -1) ::close(slave_);
    if (master_ != -1) ::close(master_);
    slave_ = master_ = -1;
}

void PtyServer::serveForever(SimDevice* device) {
    for (;;) pump(device, 100);
}

void PtyServer::serve(SimDevice* device) {
    while (!stopping_) pump(device, 5);
}

void PtyServer::waitIdle() const {
    // The kernel hands bytes written on the slave side to the master side a
    // moment later, so the line must stay quiet for a while to count as idle.
    int quiet = 0;
    for (int i = 0; i < 1000 && quiet < 15; ++i) {
        int waiting = 0;
        if (::ioctl(master_, FIONREAD, &waiting) != 0) return;
        quiet = waiting == 0 && !busy_ ? quiet + 1 : 0;
        ::usleep(1000);
    }
}

bool PtyServer::pump(SimDevice* device, int waitMilliseconds) {
    struct pollfd p = {master_, POLLIN, 0};
    if (::poll(&p, 1, waitMilliseconds) <= 0) return false;
    uint8_t in[256];
    busy_ = true;
    const ssize_t n = ::read(master_, in, sizeof in);
    if (n <= 0) {
        busy_ = false;
        // No program has the slave open, or a signal: wait a little.
        if (n < 0 && errno != EINTR && errno != EAGAIN) ::usleep(10000);
        return false;
    }
    if (trace_) TraceBytes("<-", in, static_cast<size_t>(n));
    std::vector<uint8_t> out;
    for (ssize_t i = 0; i < n; ++i) {
        out.clear();
        device->receive(in[i], &out);
        if (mute_) out.clear();
        if (trace_) TraceBytes("->", out.data(), out.size());
        size_t done = 0;
        while (done < out.size()) {
            const ssize_t w = ::write(master_, out.data() + done, out.size() - done);
            if (w < 0 && errno == EINTR) continue;
            if (w <= 0) break;
            done += static_cast<size_t>(w);
        }
    }
    busy_ = false;
    return true;
}

}  // namespace veloran::sim

// Pseudo-terminal plumbing for the simulated radios.

#include "sim/sim_pty.h"

#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <sys/eventfd.h>
#include <termios.h>
#include <unistd.h>

#include <cerrno>

#include "sim/sim_line.h"

namespace veloran::sim {

PtyServer::~PtyServer() {
    stop();
    if (slave_ != -1) ::close(slave_);
    if (master_ != -1) ::close(master_);
    if (wake_ != -1) ::close(wake_);
}

bool PtyServer::open() {
    char name[256] = "";
    if (::openpty(&master_, &slave_, name, nullptr, nullptr) != 0) return false;
    struct termios raw;
    if (::tcgetattr(slave_, &raw) == 0) {
        ::cfmakeraw(&raw);
        ::tcsetattr(slave_, TCSANOW, &raw);
    }
    // Reads that find nothing return at once: a read that finds the line
    // empty is what proves every byte written before it has been handled
    // (the kernel hands over bytes still in transit before it answers).
    ::fcntl(master_, F_SETFL, ::fcntl(master_, F_GETFL) | O_NONBLOCK);
    wake_ = ::eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC);
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
    if (!thread_.joinable() || stopping_) return;
    const uint64_t ticket = idle_.ask();
    const uint64_t one = 1;
    if (wake_ != -1) (void)!::write(wake_, &one, sizeof one);
    idle_.wait(ticket, std::chrono::seconds(30));
}

bool PtyServer::pump(SimDevice* device, int waitMilliseconds) {
    // The waitIdle calls made before this read are answered by it finding
    // the line empty.
    const uint64_t asked = idle_.asked();
    struct pollfd p[2] = {{master_, POLLIN, 0}, {wake_, POLLIN, 0}};
    ::poll(p, wake_ != -1 ? 2 : 1, idle_.owed() ? 0 : waitMilliseconds);
    if (wake_ != -1 && (p[1].revents & POLLIN) != 0) {
        uint64_t count = 0;
        (void)!::read(wake_, &count, sizeof count);
    }
    uint8_t in[256];
    const ssize_t n = ::read(master_, in, sizeof in);
    if (n <= 0) {
        if (n < 0 && errno == EINTR) return false;
        idle_.seen(asked);
        // No program has the slave open: wait a little.
        if (n < 0 && errno != EAGAIN) ::usleep(10000);
        return false;
    }
    if (trace_) TraceBytes("<-", in, static_cast<size_t>(n));
    std::vector<uint8_t> out;
    for (ssize_t i = 0; i < n; ++i) {
        out.clear();
        device->receive(in[i], &out);
        if (mute_) out.clear();
        if (trace_) TraceBytes("->", out.data(), out.size());
        answer(out);
    }
    return true;
}

void PtyServer::answer(const std::vector<uint8_t>& bytes) {
    size_t done = 0;
    int stalls = 0;
    while (done < bytes.size()) {
        const ssize_t w = ::write(master_, bytes.data() + done, bytes.size() - done);
        if (w > 0) {
            done += static_cast<size_t>(w);
            continue;
        }
        if (w < 0 && errno == EINTR) continue;
        // A full line (the program is not reading) is given a while, as a
        // real device's buffer would; after that the answer is lost.
        if (w < 0 && errno == EAGAIN && ++stalls < 100) {
            struct pollfd p = {master_, POLLOUT, 0};
            ::poll(&p, 1, 10);
            continue;
        }
        break;
    }
}

}  // namespace veloran::sim

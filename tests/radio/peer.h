// A radio of the ASCII kind on the far end of a pseudo-terminal: records
// what arrives and answers each complete request through a callback. For the
// Kenwood and PCR1000 tests; the CAT radios have their own simulator.
#pragma once

#include <poll.h>
#include <pty.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <mutex>
#include <string>
#include <thread>

namespace veloran::testing {

class ScriptedPeer {
  public:
    // `answer` sees the text received and not yet consumed; it removes the
    // requests it understands and returns what the radio sends back.
    explicit ScriptedPeer(std::function<std::string(std::string*)> answer)
        : answer_(std::move(answer)) {
        if (openpty(&master_, &slave_, name_, nullptr, nullptr) != 0) return;
        thread_ = std::thread([this] { run(); });
    }
    ~ScriptedPeer() {
        running_ = false;
        if (thread_.joinable()) thread_.join();
        if (master_ != -1) close(master_);
        if (slave_ != -1) close(slave_);
    }
    const char* path() const { return name_; }

    // Everything received since the last call, once `count` characters are
    // in and nothing more follows.
    std::string take(size_t count) {
        for (int i = 0; i < 1000 && size() < count; ++i)
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
        size_t before;
        do {
            before = size();
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        } while (size() != before);
        std::lock_guard<std::mutex> lock(mutex_);
        std::string out;
        out.swap(received_);
        return out;
    }

    std::atomic<bool> silent{false};

  private:
    size_t size() {
        std::lock_guard<std::mutex> lock(mutex_);
        return received_.size();
    }
    void run() {
        std::string pending;
        while (running_) {
            struct pollfd p = {master_, POLLIN, 0};
            if (poll(&p, 1, 5) <= 0 || !(p.revents & POLLIN)) continue;
            char buf[128];
            const ssize_t n = read(master_, buf, sizeof buf);
            if (n <= 0) continue;
            {
                std::lock_guard<std::mutex> lock(mutex_);
                received_.append(buf, static_cast<size_t>(n));
            }
            pending.append(buf, static_cast<size_t>(n));
            const std::string reply = answer_(&pending);
            if (!silent && !reply.empty() && write(master_, reply.data(), reply.size()) < 0) break;
        }
    }

    std::function<std::string(std::string*)> answer_;
    int master_ = -1, slave_ = -1;
    char name_[256] = {0};
    std::atomic<bool> running_{true};
    std::thread thread_;
    std::mutex mutex_;
    std::string received_;
};

}  // namespace veloran::testing

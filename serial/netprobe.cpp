// A bounded TCP connection attempt to a network device.

#include "serial/netprobe.h"

#include <fcntl.h>
#include <netdb.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace veloran {

int SplitHostPort(const std::string& address, std::string* host, std::string* port) {
    std::string h, p;
    if (!address.empty() && address[0] == '[') {
        const size_t close = address.find(']');
        if (close == std::string::npos || close + 1 >= address.size() || address[close + 1] != ':')
            return 0;
        h = address.substr(1, close - 1);
        p = address.substr(close + 2);
    } else {
        const size_t colon = address.rfind(':');
        if (colon == std::string::npos) return 0;
        h = address.substr(0, colon);
        p = address.substr(colon + 1);
    }
    if (h.empty() || p.empty() || p.find_first_not_of("0123456789") != std::string::npos ||
        p.size() > 5)
        return 0;
    if (host) *host = h;
    if (port) *port = p;
    return 1;
}

namespace {

// Waits up to timeoutMs for `events` on s; 1 when they came.
int waitFor(int s, short events, int timeoutMs) {
    pollfd p{s, events, 0};
    int n;
    do {
        n = poll(&p, 1, timeoutMs);
    } while (n == -1 && errno == EINTR);
    return n == 1 ? 1 : 0;
}

// 1 when the device sends anything back after `query`.
int answers(int s, const char* query, int timeoutMs) {
    const size_t length = std::strlen(query);
    if (send(s, query, length, MSG_NOSIGNAL) != static_cast<ssize_t>(length)) return 0;
    if (!waitFor(s, POLLIN, timeoutMs)) return 0;
    char byte;
    return recv(s, &byte, 1, 0) == 1 ? 1 : 0;
}

}  // namespace

int ConnectNetworkDevice(const std::string& address, int timeoutMs, std::string* error,
                         const char* query) {
    std::string host, port;
    if (!SplitHostPort(address, &host, &port)) {
        if (error) *error = "not HOST:PORT";
        return -1;
    }
    addrinfo hints{};
    hints.ai_family = AF_UNSPEC;
    hints.ai_socktype = SOCK_STREAM;
    addrinfo* found = nullptr;
    const int status = getaddrinfo(host.c_str(), port.c_str(), &hints, &found);
    if (status != 0) {
        if (error) *error = gai_strerror(status);
        return -1;
    }
    std::string why = "no answer";
    int ok = 0;
    int connected = -1;
    for (addrinfo* a = found; a != nullptr && !ok; a = a->ai_next) {
        const int s = socket(a->ai_family, a->ai_socktype | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
        if (s == -1) {
            why = std::strerror(errno);
            continue;
        }
        if (connect(s, a->ai_addr, a->ai_addrlen) == 0) {
            ok = 1;
        } else if (errno != EINPROGRESS) {
            why = std::strerror(errno);
        } else {
            if (waitFor(s, POLLOUT, timeoutMs)) {
                int soError = 0;
                socklen_t len = sizeof soError;
                getsockopt(s, SOL_SOCKET, SO_ERROR, &soError, &len);
                if (soError == 0)
                    ok = 1;
                else
                    why = std::strerror(soError);
            }
        }
        if (ok && query && !answers(s, query, timeoutMs)) {
            ok = 0;
            why = "no answer";
        }
        if (ok)
            connected = s;
        else
            close(s);
    }
    freeaddrinfo(found);
    if (!ok && error) *error = why;
    return connected;
}

int ProbeNetworkDevice(const std::string& address, int timeoutMs, std::string* error,
                       const char* query) {
    const int s = ConnectNetworkDevice(address, timeoutMs, error, query);
    if (s == -1) return 0;
    close(s);
    return 1;
}

}  // namespace veloran

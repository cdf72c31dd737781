// Whether a network device (a rigctld or rotctld at HOST:PORT) takes a
// connection, decided within a bounded time: a host that drops our packets
// would otherwise hold a blocking connect for minutes.
#pragma once

#include <string>

namespace veloran {

// 1 when `address` ("HOST:PORT", "[v6]:PORT") is well formed; host and port
// are split out.
int SplitHostPort(const std::string& address, std::string* host, std::string* port);

// 1 when a TCP connection to `address` is accepted within `timeoutMs` and,
// given a `query`, the device answers it within `timeoutMs` more; 0 with the
// reason in *error otherwise ("no answer", or the system's error text such
// as "Connection refused"). A daemon whose machine is alive but which itself
// hangs accepts connections all the same, hence the query. The connection is
// closed again at once.
int ProbeNetworkDevice(const std::string& address, int timeoutMs, std::string* error,
                       const char* query = nullptr);

// The same check, but the connection stays open: its socket, or -1 with the
// reason as above. rigctld and rotctld (Hamlib 4.5) close a finished
// client's socket number more than once, so a connection they accept while
// one is being torn down may be closed under its new owner; a caller that
// connects again right after the check closes this socket only once the next
// connection is up.
int ConnectNetworkDevice(const std::string& address, int timeoutMs, std::string* error,
                         const char* query = nullptr);

}  // namespace veloran

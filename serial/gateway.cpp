// Push-to-talk and the wait for a clear channel on the gateway board.

#include "serial/gateway.h"

#include <cstdio>

#include "serial/serial.h"

namespace veloran {

namespace {

// The gateway board's port-A set-up: line 0 an output, lines 1-7 inputs.
constexpr char kGatewayConfigurePortA[] = "CPA11111110\r";
constexpr int kGatewayConfigureLength = 12;
// A busy channel stays busy for seconds; asking again at once would only keep
// the board and a core busy. 50 ms is far below a human over.
constexpr double kBusyChannelPauseMicroseconds = 50000.0;
}  // namespace

void pushToTalk(int fd, int line, int on, bool debug) {
    if (fd == -1) return;
    beginDeviceCall(fd);
    sendRadioCommand(fd, kGatewayConfigurePortA, kGatewayConfigureLength, debug);
    flushRadioInput(fd, debug);
    // Active-low: transmitting resets the line, receiving sets it.
    char command[32];
    const int length =
        std::snprintf(command, sizeof command, "%s%d\r", on == 1 ? "RESPA" : "SETPA", line);
    sendRadioCommand(fd, command, length, debug);
    flushRadioInput(fd, debug);
}

int waitForRadio(int fd, int line, unsigned long timeoutTicks, unsigned long* elapsedTicks,
                 bool debug, const std::atomic<bool>* cancel) {
    if (fd == -1) return 1;
    beginDeviceCall(fd);
    const unsigned long start = SerialTicks();
    if (elapsedTicks) *elapsedTicks = 0;
    sendRadioCommand(fd, kGatewayConfigurePortA, kGatewayConfigureLength, debug);
    flushRadioInput(fd, debug);
    char query[32];
    const int queryLength = std::snprintf(query, sizeof query, "RPA%d\r", line);
    unsigned char reply[4];
    for (;;) {
        if (SerialTicks() > start + timeoutTicks) return 0;
        if (cancel != nullptr && cancel->load()) return 0;  // the program is quitting
        sendRadioCommand(fd, query, queryLength, debug);
        if (readRadioResponse(fd, reply, 2, 60, debug) < 2) return 0;
        if (reply[0] != '0') {
            MicrosecondDelay(kBusyChannelPauseMicroseconds, 0);
            continue;
        }
        // Quiet once; it must still be quiet a second later.
        MicrosecondDelay(1000000.0, 0);
        sendRadioCommand(fd, query, queryLength, debug);
        if (readRadioResponse(fd, reply, 2, 60, debug) == 2 && reply[0] == '0') {
            if (elapsedTicks) *elapsedTicks = SerialTicks() - start;
            return 1;
        }
    }
}

}  // namespace veloran

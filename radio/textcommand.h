// One conversation with a radio that speaks text commands (the Kenwood
// "FA...;" family, the PCR1000's "K0..."). `ok` turns false as soon as a
// command could not be written whole, so the driver reports the radio gone
// instead of pretending it was tuned; from then on nothing is sent or read.
#pragma once

namespace veloran {

struct TextCommandLine {
    int fd;
    bool debug;
    bool ok = true;

    // Reads and discards whatever the radio has sent (no wait).
    void flush();
    // Writes the NUL-terminated command.
    void send(const char* text);
};

}  // namespace veloran

// The text-command conversation shared by the TS-50 and PCR1000 drivers.

#include "radio/textcommand.h"

#include <cstring>

#include "serial/serial.h"

namespace veloran {

void TextCommandLine::flush() {
    if (ok) flushRadioInput(fd, debug);
}

void TextCommandLine::send(const char* text) {
    if (!ok) return;
    const int length = static_cast<int>(std::strlen(text));
    if (sendRadioCommand(fd, text, length, debug) != length) ok = false;
}

}  // namespace veloran

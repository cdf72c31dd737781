// The text-command conversation shared by the TS-50 and PCR1000 drivers.

#include "radio/textline.h"

#include <cstring>

#include "radio/serial.h"

namespace veloran {

void TextLine::flush() {
    if (ok) flushRadioInput(fd, debug);
}

void TextLine::send(const char* text) {
    if (!ok) return;
    const int length = static_cast<int>(std::strlen(text));
    if (sendRadioCommand(fd, text, length, debug) != length) ok = false;
}

}  // namespace veloran

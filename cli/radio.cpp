// veloran-cli radio: one tuning update through the radio table, exactly as
// the one-second tick sends it (start the driver, set, stop), so that an
// operator can check a radio's cable and settings before a pass.

#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "cli/commands.h"
#include "cli/options.h"
#include "data/modes.h"
#include "radio/drivers.h"
#include "radio/hamlibradio.h"
#include "radio/tuning.h"
#include "serial/serial.h"

namespace veloran::cli {

namespace {

bool ParseMode(const std::string& text, int* commMode) {
    if (text == "-1" || text == "NONE" || text == "none") {
        *commMode = CommMode::RECEIVE_ONLY;
        return true;
    }
    char name[kModeNameSize];
    for (int i = CommMode::UNKNOWN; i <= kLastCommMode; ++i) {
        ModeToStr(i, name);
        if (text == name) {
            *commMode = i;
            return true;
        }
    }
    char* end = nullptr;
    const long n = std::strtol(text.c_str(), &end, 10);
    if (end != text.c_str() && *end == 0 && n >= CommMode::RECEIVE_ONLY && n <= kLastCommMode) {
        *commMode = static_cast<int>(n);
        return true;
    }
    return false;
}

bool ParseInteger(const Arguments& args, const std::string& name, int base, int fallback,
                  int* out) {
    *out = fallback;
    if (!args.has(name)) return true;
    const std::string text = args.value(name);
    char* end = nullptr;
    errno = 0;
    const long n = std::strtol(text.c_str(), &end, base);
    if (text.empty() || errno != 0 || *end != 0 || n < -1000000 || n > 1000000) {
        Fail(name + " wants " + (base == 16 ? "a hex number" : "a whole number") + ", not '" +
             text + "'");
        return false;
    }
    *out = static_cast<int>(n);
    return true;
}

// The CI-V address each Icom leaves the factory with, by radio index, so that
// an untouched radio answers without --icom-address; 0 for the others.
int FactoryCivAddress(int radio) {
    switch (radio) {
        case 5:
            return 0x42;  // IC-820
        case 6:
            return 0x4C;  // IC-821
        case 7:
            return 0x60;  // IC-910
        case 8:
            return 0x2E;  // IC-970
        case 9:
            return 0x48;  // IC-706
        case 10:
            return 0x4E;  // IC-706MKII
        case 12:
            return 0x58;  // IC-706MKIIG
        default:
            return 0;
    }
}

}  // namespace

int RunRadio(int argc, char** argv) {
    Arguments args;
    if (!ParseArguments(argc, argv, {"--force", "--debug"}, &args)) return kUsageError;
    if (!args.positional.empty()) return Fail("radio takes options only (try --help)");
    for (const char* required : {"--type", "--port", "--up", "--down", "--mode"}) {
        if (!args.has(required))
            return Fail(std::string("radio needs ") + required + " (try --help)");
    }
    int radio = 0, baud = 0, address = 0, tone = 0, ctone = 0, commMode = 0, model = 0;
    double delay = 0, up = 0, down = 0;
    const int hamlib = ParseHamlibChoice(args, "--type", kHamlibRadio, &radio, &model);
    if (hamlib < 0 || (hamlib == 0 && !ParseInteger(args, "--type", 10, 0, &radio)) ||
        !ParseInteger(args, "--baud", 10, 5, &baud) ||
        !ParseInteger(args, "--icom-address", 16, 0, &address) ||
        !ParseInteger(args, "--tone", 10, 0, &tone) ||
        !ParseInteger(args, "--ctone", 10, 0, &ctone) ||
        !ParseNumber(args, "--delay", 3.0, &delay) || !ParseNumber(args, "--up", 0, &up) ||
        !ParseNumber(args, "--down", 0, &down)) {
        return kUsageError;
    }
    if (!args.has("--icom-address")) address = FactoryCivAddress(radio);
    if (!ParseMode(args.value("--mode"), &commMode)) {
        return Fail("--mode wants a mode name such as JA_SSB, J_FM, SIMP_FM or NONE, not '" +
                    args.value("--mode") + "'");
    }
    const RadioDriver* driver = RadioDriverFor(radio);
    if (!driver || (radio == kHamlibRadio && hamlib == 0))
        return Fail("--type wants a radio index from 0 to 16, or hamlib:MODEL");
    if (baud < 0 || baud >= kBaudTableSize) return Fail("--baud wants a baud index from 0 to 12");
    if (delay < 0 || delay > 1000) return Fail("--delay wants milliseconds from 0 to 1000");
    if (up < 0 || down < 0)
        return Fail("--up and --down want frequencies in MHz, not negative numbers");
    const bool force = args.has("--force");
    const bool debug = args.has("--debug");
    const std::string port = args.value("--port");

    SiteRec site;
    std::memset(&site, 0, sizeof site);
    site.radio = radio;
    site.radioBaud = baud;
    site.icomAddress = address;
    site.commandDelay = static_cast<float>(delay);
    site.debug = debug ? 1 : 0;
    site.rotorPortFileDescriptor = site.gatewayPortFileDescriptor = -1;
    std::string why;
    if (hamlib == 1) {
        // Hamlib's own speed for the model unless --baud says otherwise.
        const int bps = args.has("--baud") ? kBaudTable[baud].bitsPerSecond : 0;
        site.hamlibRadioModel = model;
        site.radioPortFileDescriptor = OpenHamlibRadio(model, port.c_str(), bps, debug, &why);
        if (site.radioPortFileDescriptor == -1) {
            std::fprintf(stderr, "veloran-cli: cannot open Hamlib model %d on %s: %s\n", model,
                         port.c_str(), why.c_str());
            return 1;
        }
    } else {
        site.radioPortFileDescriptor = openSerialPort(port.c_str(), baud, radio, debug);
    }
    if (site.radioPortFileDescriptor == -1) {
        const int error = errno;
        std::fprintf(stderr, "veloran-cli: cannot open %s as a serial port: %s\n", port.c_str(),
                     std::strerror(error));
        return 1;
    }
    site.vfo_enabled = 1;

    char upText[32], downText[32], modeName[kModeNameSize];
    ModeToStr(commMode, modeName);
    formatFreq(up, upText, sizeof upText);
    formatFreq(down, downText, sizeof downText);
    const std::string name =
        hamlib == 1 ? "Hamlib model " + std::to_string(model) : std::string(driver->model);
    const std::string speed = hamlib == 1 && !args.has("--baud")
                                  ? std::string("the model's speed")
                                  : std::to_string(kBaudTable[baud].bitsPerSecond) + " bit/s";
    std::printf("%s on %s at %s, delay %.1f ms: uplink %s MHz, downlink %s MHz, %s%s\n",
                name.c_str(), port.c_str(), speed.c_str(), delay, upText, downText,
                commMode >= 0 ? modeName : "receive only", force ? ", forced" : "");

    startRadioDriver(&site);
    const int sent = SetVFO(radio, site.radioPortFileDescriptor, address, up, down, commMode, tone,
                            ctone, force, debug);
    const int answered =
        (sent && driver->answers) ? driver->answers(site.radioPortFileDescriptor, debug) : -1;
    stopRadioDriver(&site);
    if (hamlib == 1)
        CloseHamlibRadio(site.radioPortFileDescriptor);
    else
        closeSerialPort(site.radioPortFileDescriptor, debug);

    if (!sent) {
        if (radio == 13) {
            std::fprintf(stderr,
                         "veloran-cli: the %s is not connected: every tuning fails and switches "
                         "the radio off\n",
                         driver->model);
        } else if (!driver->setFrequencies) {
            std::fprintf(stderr, "veloran-cli: there is no driver for the %s yet\n", driver->model);
        } else {
            std::fprintf(stderr,
                         "veloran-cli: the %s did not take the update: the line failed or the "
                         "radio did not answer "
                         "(check the cable, the baud rate and the radio's CAT setting)\n",
                         driver->model);
        }
        return 1;
    }
    if (answered == 0) {
        std::fprintf(stderr,
                     "veloran-cli: sent, but the %s does not answer: check the cable, the baud "
                     "rate and the radio's "
                     "CAT setting\n",
                     driver->model);
        return 1;
    }
    std::printf(answered == 1 ? "sent; the radio answers\n"
                              : "sent; this radio sends no replies, check its display\n");
    return 0;
}

}  // namespace veloran::cli

// `veloran-cli rotor`: points a rotator by hand through the program's own send
// path, so that an operator can check the wiring, the controller type and the
// offsets before a pass.

#include "rotor/rotor.h"

#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "cli/commands.h"
#include "cli/options.h"
#include "rotor/hamlibrotor.h"
#include "serial/serial.h"

namespace veloran::cli {

namespace {

bool PositionalNumber(const std::string& text, const char* what, double* out) {
    char* end = nullptr;
    errno = 0;
    const double v = std::strtod(text.c_str(), &end);
    if (text.empty() || errno != 0 || *end != '\0' || !std::isfinite(v)) {
        Fail(std::string(what) + " wants a number in degrees, not '" + text + "'");
        return false;
    }
    *out = v;
    return true;
}

bool WholeNumber(const Arguments& args, const std::string& name, double fallback, int lowest,
                 int highest, int* out) {
    double v = 0.0;
    if (!ParseNumber(args, name, fallback, &v)) return false;
    if (v != std::floor(v) || v < lowest || v > highest) {
        Fail(name + " wants a whole number from " + std::to_string(lowest) + " to " +
             std::to_string(highest));
        return false;
    }
    *out = static_cast<int>(v);
    return true;
}

}  // namespace

int RunRotor(int argc, char** argv) {
    Arguments args;
    if (!ParseArguments(argc, argv, {"--debug", "--read"}, &args)) return kUsageError;
    if (!args.has("--type"))
        return Fail("rotor needs --type INDEX (0 to " + std::to_string(kRotorCount - 1) +
                    ") or --type hamlib:MODEL");
    if (!args.has("--port")) return Fail("rotor needs --port PATH");
    if (args.positional.size() != 2)
        return Fail("rotor needs an azimuth and an elevation, in degrees");
    int type = 0, model = 0;
    int baud = 5;  // 9600 bit/s
    const int hamlib = ParseHamlibChoice(args, "--type", kHamlibRotor, &type, &model);
    if (hamlib < 0 || (hamlib == 0 && !WholeNumber(args, "--type", 0, 0, kRotorCount - 1, &type)))
        return kUsageError;
    if (!WholeNumber(args, "--baud", 5, 0, kBaudTableSize - 1, &baud)) return kUsageError;
    double azimuth = 0.0;
    double elevation = 0.0;
    if (!PositionalNumber(args.positional[0], "AZ", &azimuth)) return kUsageError;
    if (!PositionalNumber(args.positional[1], "EL", &elevation)) return kUsageError;
    const bool debug = args.has("--debug");
    const std::string port = args.value("--port");

    std::string why;
    // Hamlib's own speed for the model unless --baud says otherwise.
    const int fd =
        hamlib == 1
            ? OpenHamlibRotor(model, port.c_str(),
                              args.has("--baud") ? kBaudTable[baud].bitsPerSecond : 0, debug, &why)
            : openSerialPort(port.c_str(), baud, 0, debug);
    if (fd == -1) {
        std::fprintf(stderr, "veloran-cli: cannot open rotor port %s%s%s\n", port.c_str(),
                     why.empty() ? "" : ": ", why.c_str());
        return 1;
    }
    if (hamlib == 1)
        std::printf("Hamlib model %d on %s\n", model, port.c_str());
    else
        std::printf("%s on %s at %d bit/s\n", rotorName(type), port.c_str(),
                    kBaudTable[baud].bitsPerSecond);
    startRotorDriver(type, fd, debug);
    SendAzEl(type, fd, azimuth, elevation, debug);
    std::printf("sent azimuth %ld elevation %ld%s\n", std::lround(azimuth), std::lround(elevation),
                rotorIsAzEl(type) ? "" : " (azimuth-only controller)");
    int status = 0;
    if (args.has("--read")) {
        double az = 0.0;
        double el = 0.0;
        if (GetAzEl(type, fd, &az, &el, debug)) {
            std::printf("read back azimuth %.0f elevation %.0f\n", az, el);
        } else {
            std::printf(
                "no position read back%s\n",
                (type == kRotorGS232 || type == kRotorGS232Translated || type == kRotorAlphaSpid)
                    ? ": the controller did not answer"
                    : ": this controller cannot report its position");
            status = 1;
        }
    }
    stopRotorDriver(type, fd, debug);
    if (hamlib == 1)
        CloseHamlibRotor(fd);
    else
        closeSerialPort(fd, debug);
    return status;
}

}  // namespace veloran::cli

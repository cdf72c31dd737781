// Command-line parsing shared by veloran-cli and both station front ends
// (the window and --headless): words into options, sites, instants, names.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "engine/satrec.h"
#include "engine/siterec.h"

namespace veloran {

// Exit status for a command-line mistake (bad option, missing file, bad number).
constexpr int kUsageError = 2;

// The arguments of one command, with the options a command shares.
struct Arguments {
    std::vector<std::string> positional;
    std::vector<std::pair<std::string, std::string>> options;  // "--name" -> value ("" for flags)

    bool has(const std::string& name) const;
    // The option's value, or `fallback` when it is absent.
    std::string value(const std::string& name, const std::string& fallback = "") const;
};

// Splits argv into positionals and options. `flags` names the options that
// take no value. On a malformed command line prints a one-line message and
// returns false.
bool ParseArguments(int argc, char** argv, const std::vector<std::string>& flags, Arguments* out);

// The name messages start with ("veloran-cli" unless a program sets another).
void SetProgramName(const char* name);
const char* ProgramName();

// Prints "<program>: <message>" on standard error and returns kUsageError.
int Fail(const std::string& message);

// "LAT,LON[,ALT_M]" with longitude east positive, into a site record ready for
// the engine (longitude west positive, derived fields computed). Without the
// option the station is the program's default site.
bool ParseSite(const Arguments& args, SiteRec* site);

// ISO 8601 UTC ("2026-11-21T18:30:00Z", seconds, "T" and "Z" optional, or a
// date alone) into seconds since 1904. Without the option, now.
bool ParseTime(const Arguments& args, uint32_t* secs);

// Refuses options outside `known` with a message.
bool CheckOptions(const Arguments& args, const std::vector<std::string>& known);

// "AO-7,FO-29" -> {"AO-7", "FO-29"}; empty pieces are dropped.
std::vector<std::string> SplitNames(const std::string& text);

// A number option; false with a message when it is not a number.
bool ParseNumber(const Arguments& args, const std::string& name, double fallback, double* out);

// "hamlib:MODEL" picks Hamlib's model MODEL: *index becomes `hamlibIndex`.
// 1 when the option holds such a choice, 0 when it holds an index, -1 after
// a mistake (said).
int ParseHamlibChoice(const Arguments& args, const char* name, int hamlibIndex, int* index,
                      int* model);

// "2026-11-21T18:30:00Z".
std::string FormatIso(uint32_t secs);
// "h:mm:ss" for a duration of any length.
std::string FormatDuration(uint32_t secs);

// Keeps only the satellite named by --sat (case-insensitive), if given.
bool SelectSatellite(const Arguments& args, const std::string& file, std::vector<SatRec>* sats);

}  // namespace veloran

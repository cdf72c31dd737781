// The names Logbook of The World gives satellites, against ours. LoTW only
// credits a satellite contact whose SAT_NAME is one of its own names ("ARISS"
// for the ISS), while element sets and the modes file use other spellings.
#pragma once

#include <string>
#include <utility>
#include <vector>

namespace veloran {

// The table's file name, in the data folder (the user's copy) or the
// resources (the bundled one).
constexpr const char* kSatNamesFileName = "lotw-sats.dat";

struct SatNameTable {
    std::vector<std::pair<std::string, std::string>> names;  // ours -> LoTW's, in file order
};

// Reads "OURS = LOTW" lines; blank lines and lines starting with '#' are
// skipped. A line without '=' or with an empty side is skipped and counted in
// *badLines. 0 when the file cannot be read (errno set).
int LoadSatNames(const std::string& path, SatNameTable* table, int* badLines);

// The user's table in dataDir when there is one, else the bundled one.
std::string SatNamesPath(const std::string& dataDir, const std::string& resourceDir);

// LoTW's name for our satellite, compared without regard to case; our name
// itself when the table does not list it.
std::string LotwSatName(const SatNameTable* table, const std::string& ours);
// The first of our names that maps to LoTW's `lotw`, or `lotw` itself.
std::string OurSatName(const SatNameTable* table, const std::string& lotw);

}  // namespace veloran

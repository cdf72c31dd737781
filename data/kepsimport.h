// Replacing the element-set file from any source the converter reads: short
// names chosen, whole catalogue numbers and long names kept in a side table,
// replace or merge, the table's limit applied with the user's satellites
// first, and both files written through a temporary file and a rename.
#pragma once

#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "data/elementsets.h"
#include "data/files.h"
#include "data/userdefaults.h"

namespace veloran {

// Catalogue number -> short name, from "NUMBER NAME" lines ('#' starts a
// comment). The user's table is read first, so it wins over the bundled one.
struct NamesTable {
    std::map<int32_t, std::string> byCatalog;
};
// Adds the file's entries that are not there yet; false (errno set) when it
// cannot be read. Lines that are not "NUMBER NAME" are skipped.
bool LoadNamesTable(const std::string& path, NamesTable* table);

// The short-name rules of the loader: 2 to 9 visible characters and no blank.
bool IsShortName(const std::string& name);

// Gives every set a unique short name: the names table's, else the bracketed
// part of the long name ("SAUDISAT 1C (SO-50)" -> "SO-50"), else the long
// name with its blanks as hyphens ("NOAA 19" -> "NOAA-19"), else its first
// word, each when it is a short name; a candidate that the modes file knows
// wins over the earlier ones. Failing all, "SAT" and the catalogue number. A
// name taken already gets "-2", "-3", ... (cut to fit).
void AssignShortNames(std::vector<OrbitElements>* sets, const NamesTable& table,
                      const std::set<std::string>& modesNames);

// The satellites named in a modes file's text ("Satellite:" lines).
std::set<std::string> ModesFileNames(const std::string& modesText);

// The side table beside an element-set file: one line per set, short name,
// whole catalogue number and long name separated by tabs.
std::string SideTablePath(const std::string& keplerFile);
struct SideEntry {
    int32_t catalog = 0;
    std::string longName;
};
// Short name -> entry; empty when the file is missing.
std::map<std::string, SideEntry> ReadSideTable(const std::string& keplerFile);

// The element-set file as it stands, with the side table's catalogue numbers
// and long names put back. Empty when it cannot be read.
std::vector<OrbitElements> ReadInstalledSets(const std::string& keplerFile);

// What an import or download replaces, and with what.
struct KepsInstall {
    std::string source;       // the file to read
    std::string sourceLabel;  // for the file's header line and the messages
    std::string keplerFile;   // the element-set file to replace
    bool merge = false;       // keep the current sets, newer epoch wins per catalogue number
    std::vector<std::string> namesTables;  // user's first, then the bundled one
    std::string modesText;                 // the modes file in use, for names and the limit
    std::vector<std::string> trackList;    // kept first when the limit bites
    int limit = 1021;                      // the loader's table size
};

struct KepsInstallResult {
    int written = 0;      // sets in the new file
    int fromFile = 0;     // sets read from the source
    int leftOut = 0;      // sets dropped for the limit
    int skipped = 0;      // entries of the source that could not be read
    std::string message;  // for the user: what happened, or why nothing changed
};

// The request the program and veloran-cli make alike: the user's names
// table before the bundled one, the modes file in use (the user's, else the
// bundled one) and the settings' track list.
KepsInstall PrepareKepsInstall(const DataPaths& paths, const UserDefaults* defaults,
                               const std::string& source, const std::string& label, bool merge);

// Reads the source in any format, merges if asked, applies the limit and
// replaces the element-set file and its side table. False, with the reason
// in result->message, when the source cannot be read or holds no element
// set, or the files cannot be written; nothing is changed then.
bool InstallElementSets(const KepsInstall& request, KepsInstallResult* result);

// The element-set file's text for sets that already carry short names;
// header is its first line (holding "FROM", so the window shows it).
std::string FormatElementFile(const std::vector<OrbitElements>& sets, const std::string& header);

}  // namespace veloran

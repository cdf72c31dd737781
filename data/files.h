// Where the program's files live, first-start seeding from the bundled
// defaults, and whole-file rewrites through a temporary file and a rename.
#pragma once

#include <cstdio>
#include <functional>
#include <string>

namespace veloran {

// The three folders the program uses and the files in them. The file names
// are filled by InFolders; a tool may point one of them elsewhere.
struct DataPaths {
    std::string resourceDir;  // read-only defaults: kepler.dat, mode.dat, cities.dat
    std::string dataDir;  // the element-set file and the places file the program reads and rewrites
    std::string configDir;  // the user modes file and the settings

    std::string keplerFile;  // the element-set file read at every load
    std::string
        downloadFile;        // a download lands here and replaces keplerFile once it has been read
    std::string placesFile;  // the places list
    std::string userModesFile;     // the user's modes, rewritten on every change
    std::string defaultModesFile;  // read when the user has no modes file
    std::string settingsFile;      // the user-defaults store
    std::string userNamesFile;     // the user's short names by catalogue number (wins)
    std::string defaultNamesFile;  // the bundled short names

    static DataPaths InFolders(const std::string& resourceDir, const std::string& dataDir,
                               const std::string& configDir);
};

// Folders named on the command line; empty means "not given".
struct PathOverrides {
    std::string dataDir;    // --data-dir
    std::string configDir;  // --config-dir
};

// The folders to use. The data folder is --data-dir, else $VELORAN_DATA_DIR,
// else $XDG_DATA_HOME/veloran, else ~/.local/share/veloran; the config folder
// likewise with --config-dir, $VELORAN_CONFIG_DIR, $XDG_CONFIG_HOME and
// ~/.config. The resources are those installed beside the executable
// (<prefix>/share/veloran), else those of the source tree.
DataPaths ResolveDataPaths(const PathOverrides& overrides);

// The bundled defaults' folder for the running executable.
std::string FindResourceDir();

// Creates the data and config folders if needed and copies kepler.dat and
// cities.dat from the resources into the data folder where they are missing.
// Files already there are never touched. False, with the reason in *error,
// when a folder cannot be created or a copy fails.
bool SeedDataFiles(const DataPaths& paths, std::string* error);

// Creates the folder and its parents (mode 0755). True when it exists after.
bool MakeDirectories(const std::string& path);

bool FileExists(const std::string& path);

// Reads the whole file. False (errno set) when it cannot be opened or read.
bool ReadWholeFile(const std::string& path, std::string* text);

// Rewrites path whole: `write` fills a temporary file in the same folder,
// which is flushed to disk and renamed over path only when `write` returned
// true and every write succeeded. Otherwise the temporary file is removed and
// the old file stays as it was. Numbers are formatted in the C locale.
bool AtomicWriteFile(const std::string& path, const std::function<bool(FILE*)>& write);

// Copies a file over `to` through AtomicWriteFile.
bool CopyFileAtomically(const std::string& from, const std::string& to);

}  // namespace veloran

// Folders, first-start seeding and whole-file rewrites.

#include "data/files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "data/cnumeric.h"

namespace veloran {

namespace {

std::string Env(const char* name) {
    const char* value = std::getenv(name);
    return value != nullptr ? value : "";
}

std::string Home() {
    const std::string home = Env("HOME");
    return home.empty() ? "." : home;
}

std::string ChooseFolder(const std::string& given, const char* veloranVariable,
                         const char* xdgVariable, const char* fallbackUnderHome) {
    if (!given.empty()) return given;
    const std::string own = Env(veloranVariable);
    if (!own.empty()) return own;
    const std::string xdg = Env(xdgVariable);
    // The XDG rules ignore relative paths.
    if (!xdg.empty() && xdg[0] == '/') return xdg + "/veloran";
    return Home() + fallbackUnderHome;
}

std::string ExecutableDir() {
    std::vector<char> buf(4096);
    const ssize_t n = readlink("/proc/self/exe", buf.data(), buf.size() - 1);
    if (n <= 0) return "";
    std::string path(buf.data(), static_cast<size_t>(n));
    const size_t slash = path.rfind('/');
    return slash == std::string::npos ? "" : path.substr(0, slash);
}

bool IsDirectory(const std::string& path) {
    struct stat st {};
    return stat(path.c_str(), &st) == 0 && S_ISDIR(st.st_mode);
}

// Makes a rename durable: the folder's entry is flushed too.
void SyncFolderOf(const std::string& path) {
    const size_t slash = path.rfind('/');
    const std::string dir =
        slash == std::string::npos ? "." : (slash == 0 ? "/" : path.substr(0, slash));
    const int fd = open(dir.c_str(), O_RDONLY | O_DIRECTORY);
    if (fd < 0) return;
    fsync(fd);
    close(fd);
}

}  // namespace

std::string FindResourceDir() {
    const std::string exeDir = ExecutableDir();
    if (!exeDir.empty()) {
        const std::string installed = exeDir + "/../share/veloran";
        if (FileExists(installed + "/kepler.dat")) return installed;
    }
    return VELORAN_SOURCE_RESOURCE_DIR;
}

DataPaths DataPaths::InFolders(const std::string& resourceDir, const std::string& dataDir,
                               const std::string& configDir) {
    DataPaths p;
    p.resourceDir = resourceDir;
    p.dataDir = dataDir;
    p.configDir = configDir;
    p.keplerFile = dataDir + "/kepler.dat";
    p.downloadFile = dataDir + "/kepler.dat.download";
    p.placesFile = dataDir + "/cities.dat";
    p.userModesFile = configDir + "/org.veloran.Veloran.mode.txt";
    p.defaultModesFile = resourceDir + "/mode.dat";
    p.settingsFile = configDir + "/Veloran.conf";
    p.userNamesFile = configDir + "/satnames.txt";
    p.defaultNamesFile = resourceDir + "/satnames.dat";
    return p;
}

DataPaths ResolveDataPaths(const PathOverrides& overrides) {
    return DataPaths::InFolders(FindResourceDir(),
                                ChooseFolder(overrides.dataDir, "VELORAN_DATA_DIR", "XDG_DATA_HOME",
                                             "/.local/share/veloran"),
                                ChooseFolder(overrides.configDir, "VELORAN_CONFIG_DIR",
                                             "XDG_CONFIG_HOME", "/.config/veloran"));
}

bool MakeDirectories(const std::string& path) {
    if (path.empty()) return false;
    if (IsDirectory(path)) return true;
    const size_t slash = path.find_last_of('/');
    if (slash != std::string::npos && slash > 0) MakeDirectories(path.substr(0, slash));
    return mkdir(path.c_str(), 0755) == 0 || IsDirectory(path);
}

bool FileExists(const std::string& path) {
    struct stat st {};
    return stat(path.c_str(), &st) == 0 && S_ISREG(st.st_mode);
}

bool SeedDataFiles(const DataPaths& paths, std::string* error) {
    for (const std::string* dir : {&paths.dataDir, &paths.configDir}) {
        if (!MakeDirectories(*dir)) {
            *error = "cannot create the folder " + *dir + ": " + std::strerror(errno);
            return false;
        }
    }
    const std::pair<const char*, const std::string*> seeds[] = {{"kepler.dat", &paths.keplerFile},
                                                                {"cities.dat", &paths.placesFile}};
    for (const auto& [name, target] : seeds) {
        if (FileExists(*target)) continue;
        const std::string source = paths.resourceDir + "/" + name;
        if (!CopyFileAtomically(source, *target)) {
            *error = "cannot copy " + source + " to " + *target + ": " + std::strerror(errno);
            return false;
        }
    }
    return true;
}

bool ReadWholeFile(const std::string& path, std::string* text) {
    FILE* f = std::fopen(path.c_str(), "rb");
    if (f == nullptr) return false;
    text->clear();
    char buf[65536];
    size_t n = 0;
    while ((n = std::fread(buf, 1, sizeof buf, f)) > 0) text->append(buf, n);
    const bool ok = !std::ferror(f);
    const int savedErrno = errno;
    std::fclose(f);
    errno = savedErrno;
    return ok;
}

bool AtomicWriteFile(const std::string& path, const std::function<bool(FILE*)>& write) {
    std::string temp = path + ".XXXXXX";
    const int fd = mkstemp(temp.data());
    if (fd < 0) return false;
    // The new file keeps the old one's permissions (mkstemp makes 0600).
    struct stat old {};
    fchmod(fd, stat(path.c_str(), &old) == 0 ? (old.st_mode & 07777) : 0644);
    FILE* f = fdopen(fd, "w");
    if (f == nullptr) {
        close(fd);
        unlink(temp.c_str());
        return false;
    }
    bool ok = false;
    {
        CNumericLocale cLocale;
        ok = write(f);
    }
    ok = std::fflush(f) == 0 && ok && !std::ferror(f);
    ok = fsync(fileno(f)) == 0 && ok;
    const int savedErrno = errno;
    ok = std::fclose(f) == 0 && ok;
    if (ok && std::rename(temp.c_str(), path.c_str()) == 0) {
        SyncFolderOf(path);
        return true;
    }
    unlink(temp.c_str());
    errno = savedErrno != 0 ? savedErrno : EIO;
    return false;
}

bool CopyFileAtomically(const std::string& from, const std::string& to) {
    std::string text;
    if (!ReadWholeFile(from, &text)) return false;
    return AtomicWriteFile(to, [&text](FILE* f) {
        return std::fwrite(text.data(), 1, text.size(), f) == text.size();
    });
}

}  // namespace veloran

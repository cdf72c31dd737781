// The LoTW satellite-name table.

#include "logbook/satnames.h"

#include <strings.h>

#include "data/files.h"

namespace veloran {

namespace {

std::string Trim(const std::string& text) {
    const size_t first = text.find_first_not_of(" \t\r\n");
    if (first == std::string::npos) return "";
    const size_t last = text.find_last_not_of(" \t\r\n");
    return text.substr(first, last - first + 1);
}

}  // namespace

int LoadSatNames(const std::string& path, SatNameTable* table, int* badLines) {
    std::string text;
    if (!ReadWholeFile(path, &text)) return 0;
    table->names.clear();
    if (badLines) *badLines = 0;
    size_t start = 0;
    while (start < text.size()) {
        size_t end = text.find('\n', start);
        if (end == std::string::npos) end = text.size();
        const std::string line = Trim(text.substr(start, end - start));
        start = end + 1;
        if (line.empty() || line[0] == '#') continue;
        const size_t equals = line.find('=');
        const std::string ours = equals == std::string::npos ? "" : Trim(line.substr(0, equals));
        const std::string lotw = equals == std::string::npos ? "" : Trim(line.substr(equals + 1));
        if (ours.empty() || lotw.empty()) {
            if (badLines) ++*badLines;
            continue;
        }
        table->names.emplace_back(ours, lotw);
    }
    return 1;
}

std::string SatNamesPath(const std::string& dataDir, const std::string& resourceDir) {
    const std::string user = dataDir + "/" + kSatNamesFileName;
    return FileExists(user) ? user : resourceDir + "/" + kSatNamesFileName;
}

std::string LotwSatName(const SatNameTable* table, const std::string& ours) {
    if (table)
        for (const auto& [mine, theirs] : table->names)
            if (strcasecmp(mine.c_str(), ours.c_str()) == 0) return theirs;
    return ours;
}

std::string OurSatName(const SatNameTable* table, const std::string& lotw) {
    if (table)
        for (const auto& [mine, theirs] : table->names)
            if (strcasecmp(theirs.c_str(), lotw.c_str()) == 0) return mine;
    return lotw;
}

}  // namespace veloran

// Element-set file scanning.

#include "data/elementfile.h"

#include <cctype>
#include <cstring>
#include <memory>

#include "data/files.h"

namespace veloran {

bool ElementFileScanner::readLine(char* line) {
    return my_fgets(line, kLineBufferSize, file_) != nullptr;
}

bool ElementFileScanner::nextName(char* name, size_t nameSize) {
    char line[kLineBufferSize];
    // A read error (the path was a folder after all, a disk gone) ends the
    // scan as the end of the file does; looping on it would never end.
    while (!std::feof(file_) && !std::ferror(file_)) {
        if (!readLine(line)) continue;
        if (std::strstr(line, "FROM") != nullptr) header_ = line;
        const size_t length = std::strlen(line);
        if (length < 3 || length > 10) continue;
        // The first word, as scanf's "%s" reads it.
        const char* p = line;
        while (*p != '\0' && std::isspace(static_cast<unsigned char>(*p))) ++p;
        size_t n = 0;
        while (p[n] != '\0' && !std::isspace(static_cast<unsigned char>(p[n]))) ++n;
        if (nameSize == 0) return true;
        if (n >= nameSize) n = nameSize - 1;
        std::memcpy(name, p, n);
        name[n] = '\0';
        return true;
    }
    return false;
}

bool ReadElementLines(ElementFileScanner* scanner, SatRec* rec, bool* decoded) {
    char line[kLineBufferSize];
    if (decoded != nullptr) *decoded = false;
    if (!scanner->readLine(line)) return false;
    const int one = DecodeLineOne(line, rec);
    if (!scanner->readLine(line)) return false;
    const int two = DecodeLineTwo(line, rec);
    if (decoded != nullptr) *decoded = one == 1 && two == 1;
    return true;
}

void ElementAnglesToRadians(KepRec* kep) {
    kep->inclination *= kDegreesToRadians;
    kep->epochRAAN *= kDegreesToRadians;
    kep->epochArgPerigee *= kDegreesToRadians;
    kep->epochMeanAnomaly *= kDegreesToRadians;
}

int CountElementSets(const std::string& path, int limit) {
    FILE* f = OpenRegularFile(path);
    if (f == nullptr) return -1;
    auto scratch = std::make_unique<SatRec>();
    ElementFileScanner scanner(f);
    char name[16];
    int count = 0;
    while (count < limit && scanner.nextName(name, sizeof name)) {
        bool decoded = false;
        if (ReadElementLines(&scanner, scratch.get(), &decoded) && decoded) ++count;
    }
    std::fclose(f);
    return count;
}

}  // namespace veloran

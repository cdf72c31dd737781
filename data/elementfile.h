// The element-set file: a name line of 2 to 9 visible characters, then lines
// 1 and 2 of a two-line set; header lines holding "FROM" give the bulletin's
// date. Everything else is skipped.
#pragma once

#include <cstdio>
#include <string>

#include "data/textline.h"
#include "engine/satrec.h"

namespace veloran {

// Entries 0 .. 1020 of the satellite table come from the file; the Moon and
// the Sun follow.
constexpr int kMaxElementSets = 1021;

// Walks an open element-set file line by line with my_fgets.
class ElementFileScanner {
  public:
    explicit ElementFileScanner(FILE* file) : file_(file) {}

    // Reads lines until the next name line (3 to 10 characters, terminator
    // included) and copies its first whitespace-delimited word into name
    // (nameSize bytes, cut to fit; empty when the line is all blanks). A line
    // holding "FROM" met on the way becomes header() (and may itself be the
    // name line). False at the end of the file.
    bool nextName(char* name, size_t nameSize);

    // Reads the next line into line (kLineBufferSize bytes); false when the
    // read fails (end of file, or a line too long).
    bool readLine(char* line);

    // The last "FROM" line seen, terminator included; empty when none.
    const std::string& header() const { return header_; }

  private:
    FILE* file_;
    std::string header_;
};

// Reads the two lines after a name line into rec: line 1 with DecodeLineOne,
// line 2 with DecodeLineTwo, whatever they hold. Returns false when either
// read fails (the set is abandoned). *decoded, when given, tells whether both
// lines were element lines.
bool ReadElementLines(ElementFileScanner* scanner, SatRec* rec, bool* decoded = nullptr);

// Angles as decoded are degrees; the engine wants radians.
void ElementAnglesToRadians(KepRec* kep);

// The number of complete element sets (a name line and two lines that both
// decode) in the file, counting at most `limit`; -1 when it cannot be opened
// (errno set; a folder or a device cannot). Used to check a file before it replaces the element-set
// file.
int CountElementSets(const std::string& path, int limit);

}  // namespace veloran

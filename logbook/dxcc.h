// The DXCC entity of a call sign, from a table of entities and their prefixes
// (resources/dxcc.dat, replaceable by a copy in the data folder). DXCC
// entities are what operators log and award programmes count: KH6 is Hawaii,
// not the USA its ITU block belongs to.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace veloran {

constexpr const char* kDxccFileName = "dxcc.dat";

struct DxccEntity {
    int32_t code = 0;       // DXCC entity number
    std::string name;       // "Federal Republic of Germany"
    std::string continent;  // "EU", "NA", ...
};

struct DxccTable {
    std::vector<DxccEntity> entities;
    std::map<std::string, int> prefixes;                // prefix -> index in entities
    std::map<std::string, int> calls;                   // exact call -> index
    std::vector<std::pair<std::string, int>> patterns;  // whole-call shapes, '@' letter '#' digit
    size_t longestPrefix = 0;
};

// Reads "CODE | NAME | CONTINENT | PREFIX ..." lines ('#' starts a comment
// line). Prefixes may hold [A-K] or [AKNW] classes, '@' (any letter) and
// '#' (any digit); "=CALL" is one exact call, "~PATTERN" a whole-call shape.
// Malformed lines are skipped and counted in *badLines. 0 when the file cannot
// be read.
int LoadDxccTable(const std::string& path, DxccTable* table, int* badLines);

// The user's table in dataDir when there is one, else the bundled one.
std::string DxccPath(const std::string& dataDir, const std::string& resourceDir);

// The entity of a call as logged, or null when it has none (maritime or
// aeronautical mobile) or the table does not know its prefix. Portable and
// mobile suffixes (/P, /M, /QRP, /A, a call-area digit, ...) are ignored; a
// prefix given with a slash, before or after the call (DL/G4ABC, W1AW/VE3),
// decides instead of the home call's.
const DxccEntity* LookupDxcc(const DxccTable* table, const std::string& call);

}  // namespace veloran

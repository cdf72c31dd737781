// The transponder modes file: one block per satellite ("Satellite:" line,
// then per-mode lines and per-satellite lines in a fixed order), read into
// and written from the satellite records.
#pragma once

#include <cstdint>
#include <cstdio>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "engine/commmode.h"
#include "engine/satrec.h"

namespace veloran {

// Names of the pseudo-satellites whose modes apply between passes and at exit.
constexpr const char* kBetweenPassesName = "BetweenPasses";
constexpr const char* kOnExitName = "OnExit";

// The channel name of a mode added by hand, before the user names it.
constexpr const char* kNewModeName = "New mode";

// Buffer size for ModeToStr.
constexpr size_t kModeNameSize = 9;

// Writes the mode's name ("REPEATER", "J_FM", ...) into buf (at least
// kModeNameSize bytes); any value outside 1..17 gives "UNKNOWN".
void ModeToStr(int value, char* buf);

// The first mode, testing 1, 2 ... 17 in that order, whose name occurs
// anywhere in the text (case-sensitive), so "JA_SSB" wins over "A_SSB";
// 0 when none does or the text is null.
int16_t StrToMode(const char* text);

// Resets a record's modes and per-satellite settings to the reader's
// defaults: no modes, commMode -1, every number 0, 24 hours tracked, no
// spoken name, no mean-anomaly range, disabled, priority 5.
void ResetModes(SatRec* rec);

// Reads the modes of `name` from an open modes file into rec and returns the
// number of modes found. The file is searched from its beginning; the first
// block whose "Satellite:" word equals the name exactly wins. Without a block
// the record keeps the defaults of ResetModes (disabled) and 0 is returned.
int GetModes(SatRec* rec, FILE* modesFile, const char* name);

// A modes file held in memory, with its blocks indexed by name, so that a
// load reads the file from disk once and looks every satellite up without
// scanning. GetModes through it gives exactly the results of GetModes on the
// file.
class ModesFile {
  public:
    ModesFile() = default;
    ~ModesFile();
    ModesFile(const ModesFile&) = delete;
    ModesFile& operator=(const ModesFile&) = delete;

    // Reads the file; false (errno set) when it cannot be opened.
    bool load(const std::string& path);
    // Takes the text of a modes file.
    void setText(std::string text);
    bool isOpen() const { return open_; }
    const std::string& path() const { return path_; }

    // As GetModes above.
    int getModes(SatRec* rec, const char* name);

    // The text of the first block of every name not in `names`, in file
    // order, from its "Satellite:" line to the next one: what a rewrite
    // from the satellite table would otherwise drop.
    std::string blocksNotIn(const std::unordered_set<std::string>& names) const;

    // The name of every block, the first of each name only, in file order.
    std::vector<std::string> names() const;

    // For a rewrite that changes blocks outside the satellite table: the
    // blocks of every name not in `table`, in file order, where a block
    // named in `dropped` is left out and the block of a record in
    // `replaced` is written from that record (a record without modes
    // writes none); the records of `replaced` that had no block follow at
    // the end, in their order.
    std::string blocksOutside(const std::unordered_set<std::string>& table,
                              const std::vector<SatRec>& replaced,
                              const std::unordered_set<std::string>& dropped) const;

  private:
    // Where one "Satellite:" line begins and its block ends.
    struct Span {
        std::string name;
        long start;
        long end;
    };

    void index();

    std::string path_;
    std::string text_;
    FILE* stream_ = nullptr;  // reads text_
    bool open_ = false;
    std::unordered_map<std::string, long>
        blocks_;               // name -> offset just after its "Satellite:" line
    std::vector<Span> spans_;  // every block, in file order
};

// Writes one satellite's block; a record without modes writes nothing.
void WriteMode(FILE* file, const SatRec& rec);

// The text WriteMode writes for rec.
std::string ModeBlockText(const SatRec& rec);

// Whether a name can key a block of its own: not empty, one word (the
// reader takes the first word of the "Satellite:" line), printable, and
// short enough for the record's name field.
bool IsModesBlockName(const std::string& name);

// Gives a satellite without a block one: the reader's defaults, enabled,
// and a single mode named kNewModeName with every number 0 and the mode
// "UNKNOWN". The name is cut to fit.
void NewModesBlock(SatRec* rec, const char* name);

// Rewrites the modes file at path whole (through a temporary file): the
// table's records in order, then the between-passes and the on-exit records,
// then `kept` (blocks of satellites not in the table, as blocksNotIn gives
// them). False when it could not be written; the old file then stays as it
// was.
bool WriteModeFile(const std::string& path, const SatRec* table, int count,
                   const SatRec& betweenPasses, const SatRec& onExit, const std::string& kept = "");

}  // namespace veloran

// The transponder modes file: reader, writer and the communication-mode names.

#include "data/modes.h"

#include <cctype>
#include <cerrno>
#include <climits>
#include <cmath>
#include <cstdlib>
#include <cstring>

#include "data/cnumeric.h"
#include "data/files.h"
#include "data/textline.h"

namespace veloran {

namespace {

// Line buffers of the reader: a whole line, and the rest of the "TrackHours:"
// and "SpeakName:" lines.
constexpr int kModesLineSize = 4096;
constexpr int kShortRestSize = 512;

const char* const kModeNames[kLastCommMode + 1] = {
    "UNKNOWN", "REPEATER", "J_FM",   "JA_SSB",  "B_SSB", "A_SSB", "SIMP_FM", "JA_CW",    "B_CW",
    "A_CW",    "B_FM",     "JD_MIX", "WIDE_FM", "T_SSB", "T_CW",  "SIMP_AM", "SIMP_SSB", "J_EXP",
};

enum class Field {
    Channel,
    Uplink,
    Downlink,
    CMode,
    Beacon,
    Tone,
    CTone,
    TxVrtrUp,
    TxVrtrDn,
    BeamUp,
    BeamDwn,
    TrackHours,
    SpeakName,
    BLat,
    BLon,
    StartMA,
    EndMA,
    Enabled,
    Priority,
};

struct Keyword {
    const char* word;
    Field field;
};

// The order in which a block's lines are looked for; a line met out of this
// order is skipped.
const Keyword kKeywords[] = {
    {"Channel:", Field::Channel},     {"Uplink:", Field::Uplink},
    {"Downlink:", Field::Downlink},   {"CMode:", Field::CMode},
    {"Beacon:", Field::Beacon},       {"Tone:", Field::Tone},
    {"CTone:", Field::CTone},         {"TxVrtrUp:", Field::TxVrtrUp},
    {"TxVrtrDn:", Field::TxVrtrDn},   {"BeamUp:", Field::BeamUp},
    {"BeamDwn:", Field::BeamDwn},     {"TrackHours:", Field::TrackHours},
    {"SpeakName:", Field::SpeakName}, {"BLat:", Field::BLat},
    {"BLon:", Field::BLon},           {"StartMA:", Field::StartMA},
    {"EndMA:", Field::EndMA},         {"Enabled:", Field::Enabled},
    {"Priority:", Field::Priority},
};

void CopyText(char* to, size_t size, const char* from) {
    size_t n = std::strlen(from);
    if (n >= size) n = size - 1;
    std::memcpy(to, from, n);
    to[n] = '\0';
}

// Tones are written as integers and read as decimal numbers truncated toward
// zero; a value beyond the integer range reads as 0.
int32_t ToneValue(const char* text) {
    const double v = std::strtod(text, nullptr);
    if (!(v > static_cast<double>(INT32_MIN) - 1.0 && v < static_cast<double>(INT32_MAX) + 1.0))
        return 0;
    return static_cast<int32_t>(v);
}

// scanf's "%d", clamped to the 32-bit range. False when no number is there.
bool ScanInt(const char* text, int32_t* out) {
    char* end = nullptr;
    errno = 0;
    long v = std::strtol(text, &end, 10);
    if (end == text) return false;
    if (v > INT32_MAX) v = INT32_MAX;
    if (v < INT32_MIN) v = INT32_MIN;
    *out = static_cast<int32_t>(v);
    return true;
}

void StoreModeValue(ModeRec* mode, Field field, char* piece) {
    switch (field) {
        case Field::Channel:
            CleanUpLocationStr(piece);
            CopyText(mode->channel, sizeof mode->channel, piece);
            break;
        case Field::CMode:
            CleanUpLocationStr(piece);
            mode->commMode = StrToMode(piece);
            break;
        case Field::Uplink:
            mode->upFreq = std::strtod(piece, nullptr);
            break;
        case Field::Downlink:
            mode->downFreq = std::strtod(piece, nullptr);
            break;
        case Field::Beacon:
            mode->beaconFreq = std::strtod(piece, nullptr);
            break;
        case Field::Tone:
            mode->gTone = ToneValue(piece);
            break;
        case Field::CTone:
            mode->gCTone = ToneValue(piece);
            break;
        case Field::TxVrtrUp:
            mode->txVrtrUp = std::strtod(piece, nullptr);
            break;
        case Field::TxVrtrDn:
            mode->txVrtrDn = std::strtod(piece, nullptr);
            break;
        case Field::BeamUp:
            mode->beamUpWidthDegs = std::strtod(piece, nullptr);
            break;
        case Field::BeamDwn:
            mode->beamDwnWidthDegs = std::strtod(piece, nullptr);
            break;
        default:
            break;
    }
}

// A per-mode line: the rest is split at tabs; at most kMaxModes pieces are
// looked at (the blank piece before the first tab counts) and the n-th
// non-blank piece belongs to mode n.
void StorePerModeLine(SatRec* rec, Field field, char* rest) {
    char* piece = rest;
    int slot = 0;
    for (int pieces = 0; pieces < kMaxModes; ++pieces) {
        char* tab = std::strchr(piece, '\t');
        if (tab != nullptr) *tab = '\0';
        if (nonBlank(piece)) {
            StoreModeValue(&rec->modes[slot], field, piece);
            if (field == Field::Channel) ++rec->numberOfActiveChannels;
            ++slot;
        }
        if (tab == nullptr) break;
        piece = tab + 1;
    }
}

void StoreLine(SatRec* rec, Field field, char* rest) {
    int32_t value = 0;
    double real = 0;
    switch (field) {
        case Field::TrackHours:
            std::sscanf(rest, "%31s", rec->trackHours);
            break;
        case Field::SpeakName:
            CleanUpLocationStr(rest);
            CopyText(rec->speakName, sizeof rec->speakName, rest);
            break;
        case Field::BLat:
        case Field::BLon:
            if (std::sscanf(rest, "%lf", &real) == 1)
                (field == Field::BLat ? rec->bLatDegs : rec->bLonDegs) = real;
            rec->hasBVals = 1;
            break;
        case Field::StartMA:
            if (ScanInt(rest, &value)) rec->startMA = value;
            break;
        case Field::EndMA:
            if (ScanInt(rest, &value)) rec->endMA = value;
            break;
        case Field::Enabled:
            if (ScanInt(rest, &value)) rec->enabled = value;
            break;
        case Field::Priority:
            if (ScanInt(rest, &value)) rec->priority = static_cast<int16_t>(value);
            break;
        default:
            StorePerModeLine(rec, field, rest);
            break;
    }
}

// The lines of a block, from just after its "Satellite:" line.
int ReadBlock(SatRec* rec, FILE* file) {
    char rest[kModesLineSize];
    long mark = std::ftell(file);
    for (const Keyword& k : kKeywords) {
        if (k.field == Field::BLat) rec->hasBVals = 0;
        if (!MatchFileStr(file, k.word)) {
            std::fseek(file, mark, SEEK_SET);
            continue;
        }
        const bool shortRest = k.field == Field::TrackHours || k.field == Field::SpeakName;
        if (std::fgets(rest, shortRest ? kShortRestSize : kModesLineSize, file) == nullptr)
            rest[0] = '\0';
        mark = std::ftell(file);
        StoreLine(rec, k.field, rest);
    }
    return rec->numberOfActiveChannels;
}

// Reads the next line of the modes file (cut at its first line end) and, when
// it is a "Satellite:" line (scanf "Satellite: %s"), points word at its name.
// False at the end of the file.
bool NextLine(FILE* file, char* line, const char** word, size_t* wordLength) {
    if (std::fgets(line, kModesLineSize, file) == nullptr) return false;
    line[std::strcspn(line, "\r\n")] = '\0';
    *wordLength = 0;
    static const char kSatellite[] = "Satellite:";
    if (std::strncmp(line, kSatellite, sizeof kSatellite - 1) != 0) return true;
    const char* p = line + sizeof kSatellite - 1;
    while (*p != '\0' && std::isspace(static_cast<unsigned char>(*p))) ++p;
    size_t n = 0;
    while (p[n] != '\0' && !std::isspace(static_cast<unsigned char>(p[n]))) ++n;
    *word = p;
    *wordLength = n;
    return true;
}

void Found(SatRec* rec, const char* name) {
    rec->enabled = 1;
    CopyText(rec->name, sizeof rec->name, name);
}

}  // namespace

void ModeToStr(int value, char* buf) {
    if (buf == nullptr) return;
    std::strcpy(buf, kModeNames[value >= 1 && value <= kLastCommMode ? value : 0]);
}

int16_t StrToMode(const char* text) {
    if (text == nullptr) return 0;
    for (int16_t v = 1; v <= kLastCommMode; ++v)
        if (std::strstr(text, kModeNames[v]) != nullptr) return v;
    return 0;
}

void ResetModes(SatRec* rec) {
    rec->selectedModeIndex = 0;
    rec->numberOfActiveChannels = 0;
    for (ModeRec& m : rec->modes) {
        std::memset(&m, 0, sizeof m);
        m.commMode = CommMode::RECEIVE_ONLY;
    }
    std::memset(rec->trackHours, 0, sizeof rec->trackHours);
    std::memset(rec->trackHours, '1', 24);
    rec->speakName[0] = '\0';
    rec->startMA = 0;
    rec->endMA = 0;
    rec->enabled = 0;
    rec->priority = 5;
}

int GetModes(SatRec* rec, FILE* modesFile, const char* name) {
    if (rec == nullptr || name == nullptr) return 0;
    ResetModes(rec);
    if (modesFile == nullptr) return 0;
    CNumericLocale cLocale;
    std::rewind(modesFile);
    char line[kModesLineSize];
    const char* word = nullptr;
    size_t wordLength = 0;
    const size_t nameLength = std::strlen(name);
    while (NextLine(modesFile, line, &word, &wordLength)) {
        if (wordLength == 0 || wordLength != nameLength || std::memcmp(word, name, nameLength) != 0)
            continue;
        Found(rec, name);
        return ReadBlock(rec, modesFile);
    }
    return 0;
}

ModesFile::~ModesFile() {
    if (stream_ != nullptr) std::fclose(stream_);
}

bool ModesFile::load(const std::string& path) {
    std::string text;
    if (!ReadWholeFile(path, &text)) return false;
    setText(std::move(text));
    path_ = path;
    return true;
}

void ModesFile::setText(std::string text) {
    if (stream_ != nullptr) std::fclose(stream_);
    stream_ = nullptr;
    path_.clear();
    text_ = std::move(text);
    open_ = true;
    blocks_.clear();
    spans_.clear();
    if (!text_.empty()) stream_ = fmemopen(text_.data(), text_.size(), "r");
    index();
}

void ModesFile::index() {
    if (stream_ == nullptr) return;
    char line[kModesLineSize];
    const char* word = nullptr;
    size_t wordLength = 0;
    long start = 0;
    while (NextLine(stream_, line, &word, &wordLength)) {
        const long next = std::ftell(stream_);
        if (wordLength != 0) {
            if (!spans_.empty()) spans_.back().end = start;
            spans_.push_back(
                {std::string(word, wordLength), start, static_cast<long>(text_.size())});
            blocks_.emplace(spans_.back().name, next);  // the first block wins
        }
        start = next;
    }
}

std::string ModesFile::blocksNotIn(const std::unordered_set<std::string>& names) const {
    std::string kept;
    std::unordered_set<std::string> seen;
    for (const Span& span : spans_) {
        if (names.count(span.name) != 0 || !seen.insert(span.name).second) continue;
        kept.append(text_, static_cast<size_t>(span.start),
                    static_cast<size_t>(span.end - span.start));
        if (kept.back() != '\n') kept += '\n';
        if (kept.size() < 2 || kept[kept.size() - 2] != '\n') kept += '\n';
    }
    return kept;
}

std::vector<std::string> ModesFile::names() const {
    std::vector<std::string> names;
    std::unordered_set<std::string> seen;
    for (const Span& span : spans_)
        if (seen.insert(span.name).second) names.push_back(span.name);
    return names;
}

std::string ModesFile::blocksOutside(const std::unordered_set<std::string>& table,
                                     const std::vector<SatRec>& replaced,
                                     const std::unordered_set<std::string>& dropped) const {
    std::unordered_map<std::string, const SatRec*> byName;
    for (const SatRec& rec : replaced) byName[rec.name] = &rec;
    std::string text;
    std::unordered_set<std::string> seen;
    for (const Span& span : spans_) {
        if (table.count(span.name) != 0 || !seen.insert(span.name).second) continue;
        if (dropped.count(span.name) != 0) continue;
        if (const auto r = byName.find(span.name); r != byName.end()) {
            text += ModeBlockText(*r->second);
            continue;
        }
        text.append(text_, static_cast<size_t>(span.start),
                    static_cast<size_t>(span.end - span.start));
        if (text.back() != '\n') text += '\n';
        if (text.size() < 2 || text[text.size() - 2] != '\n') text += '\n';
    }
    for (const SatRec& rec : replaced)
        if (seen.count(rec.name) == 0 && table.count(rec.name) == 0 && dropped.count(rec.name) == 0)
            text += ModeBlockText(rec);
    return text;
}

int ModesFile::getModes(SatRec* rec, const char* name) {
    if (rec == nullptr || name == nullptr) return 0;
    ResetModes(rec);
    const auto block = blocks_.find(name);
    if (stream_ == nullptr || block == blocks_.end()) return 0;
    CNumericLocale cLocale;
    Found(rec, name);
    std::fseek(stream_, block->second, SEEK_SET);
    return ReadBlock(rec, stream_);
}

void WriteMode(FILE* file, const SatRec& rec) {
    const int n = rec.numberOfActiveChannels;
    if (file == nullptr || n <= 0) return;
    CNumericLocale cLocale;
    const int count = n < kMaxModes ? n : kMaxModes;
    char modeName[kModeNameSize];
    std::fprintf(file, "Satellite:\t%s\n", rec.name);
    std::fprintf(file, "Channel: ");
    for (int i = 0; i < count; ++i) std::fprintf(file, "\t%-10s", rec.modes[i].channel);
    auto numbers = [&](const char* label, const char* format, double ModeRec::*field) {
        std::fprintf(file, "\n%s", label);
        for (int i = 0; i < count; ++i) std::fprintf(file, format, rec.modes[i].*field);
    };
    numbers("Uplink:  ", "\t%f", &ModeRec::upFreq);
    numbers("Downlink:", "\t%f", &ModeRec::downFreq);
    std::fprintf(file, "\nCMode:   ");
    for (int i = 0; i < count; ++i) {
        ModeToStr(rec.modes[i].commMode, modeName);
        std::fprintf(file, "\t%-10s", modeName);
    }
    numbers("Beacon:  ", "\t%f", &ModeRec::beaconFreq);
    std::fprintf(file, "\nTone:    ");
    for (int i = 0; i < count; ++i) std::fprintf(file, "\t%-10d", rec.modes[i].gTone);
    std::fprintf(file, "\nCTone:   ");
    for (int i = 0; i < count; ++i) std::fprintf(file, "\t%-10d", rec.modes[i].gCTone);
    numbers("TxVrtrUp: ", "\t%f", &ModeRec::txVrtrUp);
    numbers("TxVrtrDn: ", "\t%f", &ModeRec::txVrtrDn);
    numbers("BeamUp:   ", "\t%-10.2f", &ModeRec::beamUpWidthDegs);
    numbers("BeamDwn:  ", "\t%-10.2f", &ModeRec::beamDwnWidthDegs);
    std::fprintf(file, "\nTrackHours:\t%s\n", rec.trackHours);
    if (rec.speakName[0] != '\0') std::fprintf(file, "SpeakName:\t%s\n", rec.speakName);
    if (rec.hasBVals) {
        std::fprintf(file, "BLat:    \t%f\n", rec.bLatDegs);
        std::fprintf(file, "BLon:    \t%f\n", rec.bLonDegs);
    }
    if (rec.startMA != 0 && rec.endMA != 0) {
        std::fprintf(file, "StartMA: \t%d\n", rec.startMA);
        std::fprintf(file, "EndMA:   \t%d\n", rec.endMA);
    }
    std::fprintf(file, "Enabled:\t%d\n", rec.enabled);
    std::fprintf(file, "Priority:\t%d\n", rec.priority);
    std::fprintf(file, "\n");
}

std::string ModeBlockText(const SatRec& rec) {
    char* buffer = nullptr;
    size_t size = 0;
    FILE* memory = open_memstream(&buffer, &size);
    if (memory == nullptr) return {};
    WriteMode(memory, rec);
    std::fclose(memory);
    std::string text(buffer, size);
    std::free(buffer);
    return text;
}

bool IsModesBlockName(const std::string& name) {
    if (name.empty() || name.size() >= sizeof(SatRec::name)) return false;
    for (const unsigned char c : name)
        if (c <= ' ' || c == 0x7f) return false;  // blanks, tabs, line ends, controls
    return true;
}

void NewModesBlock(SatRec* rec, const char* name) {
    ResetModes(rec);
    std::snprintf(rec->name, sizeof rec->name, "%s", name);
    rec->enabled = 1;
    rec->numberOfActiveChannels = 1;
    std::snprintf(rec->modes[0].channel, sizeof rec->modes[0].channel, "%s", kNewModeName);
    rec->modes[0].commMode = 0;
}

bool WriteModeFile(const std::string& path, const SatRec* table, int count,
                   const SatRec& betweenPasses, const SatRec& onExit, const std::string& kept) {
    return AtomicWriteFile(path, [&](FILE* f) {
        for (int i = 0; i < count; ++i) WriteMode(f, table[i]);
        WriteMode(f, betweenPasses);
        WriteMode(f, onExit);
        return std::fwrite(kept.data(), 1, kept.size(), f) == kept.size();
    });
}

}  // namespace veloran

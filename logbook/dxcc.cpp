// Call sign to DXCC entity: exact calls first, then whole-call shapes, then
// the longest prefix, after the slashes have been sorted out.

#include "logbook/dxcc.h"

#include <cctype>
#include <sstream>

#include "data/files.h"

namespace veloran {

namespace {

std::string Trim(const std::string& text) {
    const size_t first = text.find_first_not_of(" \t\r\n");
    if (first == std::string::npos) return "";
    const size_t last = text.find_last_not_of(" \t\r\n");
    return text.substr(first, last - first + 1);
}

std::string Upper(std::string text) {
    for (char& c : text) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    return text;
}

bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}
bool IsLetter(char c) {
    return c >= 'A' && c <= 'Z';
}

// Every prefix that "K[HL]@6"-style text stands for, appended to *out. False
// for an unclosed class or a character that cannot be in a call.
bool Expand(const std::string& text, std::vector<std::string>* out) {
    std::vector<std::string> done = {""};
    for (size_t i = 0; i < text.size(); ++i) {
        std::string choices;
        const char c = text[i];
        if (c == '[') {
            const size_t close = text.find(']', i);
            if (close == std::string::npos) return false;
            const std::string inside = text.substr(i + 1, close - i - 1);
            for (size_t k = 0; k < inside.size(); ++k) {
                if (k + 2 < inside.size() && inside[k + 1] == '-') {
                    for (char x = inside[k]; x <= inside[k + 2]; ++x) choices += x;
                    k += 2;
                } else {
                    choices += inside[k];
                }
            }
            i = close;
        } else if (c == '@') {
            for (char x = 'A'; x <= 'Z'; ++x) choices += x;
        } else if (c == '#') {
            for (char x = '0'; x <= '9'; ++x) choices += x;
        } else {
            choices = std::string(1, c);
        }
        for (char x : choices)
            if (!IsDigit(x) && !IsLetter(x)) return false;
        std::vector<std::string> next;
        for (const std::string& head : done)
            for (char x : choices) next.push_back(head + x);
        done.swap(next);
    }
    out->insert(out->end(), done.begin(), done.end());
    return !text.empty();
}

bool MatchesShape(const std::string& shape, const std::string& call) {
    if (shape.size() != call.size()) return false;
    for (size_t i = 0; i < shape.size(); ++i) {
        if (shape[i] == '@'   ? !IsLetter(call[i])
            : shape[i] == '#' ? !IsDigit(call[i])
                              : shape[i] != call[i])
            return false;
    }
    return true;
}

// Suffixes that say how the station operates, not where.
bool IsOperatingSuffix(const std::string& piece) {
    static const char* const kSuffixes[] = {"P", "M", "QRP", "QRPP", "A", "B", "LH", "R", "J"};
    for (const char* s : kSuffixes)
        if (piece == s) return true;
    return piece.size() == 1 && IsDigit(piece[0]);  // a call-area digit in the same country
}

// A piece that is only a prefix ("DL", "VE3", "KH6") rather than a call:
// no digit, or ending in one.
bool IsBarePrefix(const std::string& piece) {
    bool digit = false;
    for (char c : piece) digit = digit || IsDigit(c);
    return !digit || IsDigit(piece.back());
}

}  // namespace

int LoadDxccTable(const std::string& path, DxccTable* table, int* badLines) {
    std::string text;
    if (!ReadWholeFile(path, &text)) return 0;
    *table = DxccTable();
    if (badLines) *badLines = 0;
    std::istringstream lines(text);
    std::string line;
    while (std::getline(lines, line)) {
        line = Trim(line);
        if (line.empty() || line[0] == '#') continue;
        std::vector<std::string> parts;
        std::istringstream cells(line);
        std::string cell;
        while (std::getline(cells, cell, '|')) parts.push_back(Trim(cell));
        int code = 0;
        bool ok = parts.size() == 4 && !parts[0].empty() && !parts[1].empty();
        for (char c : ok ? parts[0] : std::string()) ok = ok && IsDigit(c);
        if (ok) code = std::stoi(parts[0].substr(0, 6));
        const int index = static_cast<int>(table->entities.size());
        std::vector<std::string> prefixes;
        std::istringstream words(ok ? Upper(parts[3]) : std::string());
        std::string word;
        while (ok && words >> word) {
            if (word[0] == '=') {
                ok = word.size() > 1;
                if (ok) table->calls[word.substr(1)] = index;
            } else if (word[0] == '~') {
                ok = word.size() > 1;
                if (ok) table->patterns.emplace_back(word.substr(1), index);
            } else {
                ok = Expand(word, &prefixes);
            }
        }
        if (!ok) {
            if (badLines) ++*badLines;
            continue;
        }
        for (const std::string& p : prefixes) {
            table->prefixes[p] = index;
            if (p.size() > table->longestPrefix) table->longestPrefix = p.size();
        }
        table->entities.push_back({code, parts[1], parts[2]});
    }
    return 1;
}

std::string DxccPath(const std::string& dataDir, const std::string& resourceDir) {
    const std::string user = dataDir + "/" + kDxccFileName;
    return FileExists(user) ? user : resourceDir + "/" + kDxccFileName;
}

const DxccEntity* LookupDxcc(const DxccTable* table, const std::string& call) {
    const std::string whole = Upper(Trim(call));
    if (whole.empty()) return nullptr;
    if (auto exact = table->calls.find(whole); exact != table->calls.end())
        return &table->entities[exact->second];

    std::vector<std::string> pieces;
    std::istringstream split(whole);
    std::string piece;
    for (size_t n = 0; std::getline(split, piece, '/'); ++n) {
        if (piece.empty()) continue;
        // Maritime and aeronautical mobile stations are in no entity.
        if (n > 0 && (piece == "MM" || piece == "AM")) return nullptr;
        if (n > 0 && IsOperatingSuffix(piece)) continue;
        pieces.push_back(piece);
    }
    if (pieces.empty()) return nullptr;

    // With two parts, the one that is only a prefix decides; when both look
    // like calls, the shorter, and on a tie the first ("VP2E/W1AW").
    std::string key = pieces[0];
    if (pieces.size() >= 2) {
        const std::string& a = pieces[0];
        const std::string& b = pieces[1];
        const bool aPrefix = IsBarePrefix(a), bPrefix = IsBarePrefix(b);
        if (aPrefix != bPrefix)
            key = aPrefix ? a : b;
        else
            key = b.size() < a.size() ? b : a;
    } else {
        for (const auto& [shape, index] : table->patterns)
            if (MatchesShape(shape, key)) return &table->entities[index];
    }
    if (auto exact = table->calls.find(key); exact != table->calls.end())
        return &table->entities[exact->second];
    for (size_t n = std::min(key.size(), table->longestPrefix); n > 0; --n) {
        auto hit = table->prefixes.find(key.substr(0, n));
        if (hit != table->prefixes.end()) return &table->entities[hit->second];
    }
    return nullptr;
}

}  // namespace veloran

// Two-line sets read and written column by column, and the format guess.

#include "data/elementsets.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstring>

#include "data/cnumeric.h"

namespace veloran {

namespace {

// Alpha-5's first character for 10 .. 33: the alphabet without I and O, which
// read too much like 1 and 0.
constexpr char kAlpha5Letters[] = "ABCDEFGHJKLMNPQRSTUVWXYZ";
constexpr int kLineLength = 69;

std::string Trim(const std::string& s) {
    size_t b = 0, e = s.size();
    while (b < e && (s[b] == ' ' || s[b] == '\t')) ++b;
    while (e > b && (s[e - 1] == ' ' || s[e - 1] == '\t')) --e;
    return s.substr(b, e - b);
}

// A decimal number filling the whole (trimmed) text; '.' is the decimal
// point whatever the locale. A leading '+' is allowed.
bool ToDouble(const std::string& text, double* out) {
    std::string t = Trim(text);
    if (!t.empty() && t[0] == '+') t.erase(0, 1);
    if (t.empty()) return false;
    const char* end = t.data() + t.size();
    const auto r = std::from_chars(t.data(), end, *out);
    return r.ec == std::errc() && r.ptr == end && std::isfinite(*out);
}

bool ToInt(const std::string& text, int32_t* out) {
    std::string t = Trim(text);
    if (!t.empty() && t[0] == '+') t.erase(0, 1);
    if (t.empty()) return false;
    const char* end = t.data() + t.size();
    const auto r = std::from_chars(t.data(), end, *out);
    return r.ec == std::errc() && r.ptr == end;
}

// " 12345-3" = 0.12345e-3: the drag and second-derivative fields, with their
// decimal point and the exponent's 'e' implied.
bool ParseImpliedExponent(const std::string& field, double* out) {
    const std::string t = Trim(field);
    if (t.empty()) {
        *out = 0.0;
        return true;
    }
    size_t i = 0;
    double sign = 1.0;
    if (t[i] == '-' || t[i] == '+') sign = t[i++] == '-' ? -1.0 : 1.0;
    const size_t expAt = t.find_last_of("+-");
    if (expAt == std::string::npos || expAt < i || expAt + 1 >= t.size()) {
        // No exponent: some writers leave "00000" alone.
        int32_t m = 0;
        if (!ToInt(t.substr(i), &m)) return false;
        *out = sign * m * 1e-5;
        return true;
    }
    int32_t mantissa = 0, exponent = 0;
    if (!ToInt(t.substr(i, expAt - i), &mantissa) || !ToInt(t.substr(expAt), &exponent))
        return false;
    const double digits = static_cast<double>(expAt - i);
    *out = sign * mantissa * std::pow(10.0, exponent - digits);
    return true;
}

// Writes v as the eight characters " 12345-3".
void FormatImpliedExponent(double v, char* buf) {
    const char sign = v < 0 ? '-' : ' ';
    double a = std::fabs(v);
    int exponent = 0;
    long mantissa = 0;
    if (a >= 1e-10) {
        exponent = static_cast<int>(std::floor(std::log10(a))) + 1;
        mantissa = std::lround(a / std::pow(10.0, exponent) * 1e5);
        if (mantissa >= 100000) {
            mantissa /= 10;
            ++exponent;
        }
    }
    if (exponent > 9 || exponent < -9) mantissa = 0, exponent = 0;
    char text[32];
    std::snprintf(text, sizeof text, "%c%05ld%c%d", sign, mantissa % 100000,
                  exponent < 0 ? '-' : '+', std::abs(exponent) % 10);
    std::memcpy(buf, text, 9);
}

std::string Columns(const std::string& line, int first, int width) {
    return line.substr(static_cast<size_t>(first - 1), static_cast<size_t>(width));
}

bool IsElementLine(const std::string& line, char number) {
    return line.size() >= kLineLength && line[0] == number && line[1] == ' ';
}

// Decodes lines 1 and 2 (each at least 69 characters) into e; false with
// the reason when a field or check digit is wrong.
bool DecodeLines(const std::string& one, const std::string& two, OrbitElements* e,
                 std::string* why) {
    for (const std::string* line : {&one, &two}) {
        if (TleChecksum(line->c_str()) != (*line)[68] - '0') {
            *why = "wrong check digit on line " + std::string(1, (*line)[0]);
            return false;
        }
    }
    const int32_t cat1 = ParseCatalogNumber(one.c_str() + 2);
    const int32_t cat2 = ParseCatalogNumber(two.c_str() + 2);
    if (cat1 < 0 || cat1 != cat2) {
        *why = "catalogue numbers of lines 1 and 2 differ or are unreadable";
        return false;
    }
    e->catalog = cat1;
    e->classification = one[7] == ' ' ? 'U' : one[7];
    e->designator = Trim(Columns(one, 10, 8));
    int32_t yy = 0, elset = 0, eph = 0;
    const std::string ndot = Columns(one, 34, 10);
    bool ok = ToInt(Columns(one, 19, 2), &yy) && ToDouble(Columns(one, 21, 12), &e->epochDay) &&
              ToDouble(ndot, &e->meanMotionDot) &&
              ParseImpliedExponent(Columns(one, 45, 8), &e->meanMotionDdot) &&
              ParseImpliedExponent(Columns(one, 54, 8), &e->bstar);
    // Columns 63 and 65-68 are often blank in hand-made sets.
    ToInt(Columns(one, 63, 1), &eph);
    ToInt(Columns(one, 65, 4), &elset);
    e->ephemerisType = eph;
    e->elementSetNumber = elset;
    // Two-digit years: 57-99 are the 1900s (Sputnik's year), the rest 2000s.
    e->epochYear = yy < 57 ? 2000 + yy : 1900 + yy;
    double ecc = 0.0;
    int32_t rev = 0;
    // The eccentricity's decimal point is implied; hand-made sets pad it with
    // blanks instead of zeros.
    std::string eccDigits = Columns(two, 27, 7);
    std::replace(eccDigits.begin(), eccDigits.end(), ' ', '0');
    ok = ok && ToDouble(Columns(two, 9, 8), &e->inclination) &&
         ToDouble(Columns(two, 18, 8), &e->raan) && ToDouble("." + eccDigits, &ecc) &&
         ToDouble(Columns(two, 35, 8), &e->argPerigee) &&
         ToDouble(Columns(two, 44, 8), &e->meanAnomaly) &&
         ToDouble(Columns(two, 53, 11), &e->meanMotion);
    if (!ToInt(Columns(two, 64, 5), &rev)) rev = 0;
    e->eccentricity = ecc;
    e->revolution = rev;
    if (!ok) *why = "a field of lines 1 or 2 is not a number";
    return ok;
}

// "SAUDISAT 1C (SO-50)" as read: blanks trimmed, Space-Track's "0 " prefix of
// three-line sets removed.
std::string CleanNameLine(const std::string& line) {
    std::string name = Trim(line);
    if (name.size() > 2 && name[0] == '0' && name[1] == ' ') name = Trim(name.substr(2));
    return name;
}

void SplitLines(const std::string& text, std::vector<std::string>* lines) {
    size_t start = 0;
    while (start < text.size()) {
        size_t end = text.find_first_of("\r\n", start);
        if (end == std::string::npos) end = text.size();
        lines->push_back(text.substr(start, end - start));
        start = end + 1;
        if (end < text.size() && text[end] == '\r' && start < text.size() && text[start] == '\n')
            ++start;
    }
}

}  // namespace

void FormatCatalogNumber(int32_t catalog, char* buf) {
    if (catalog >= 0 && catalog < 100000) {
        std::snprintf(buf, 6, "%05d", catalog);
    } else if (catalog >= 100000 && catalog < kAlpha5Limit) {
        std::snprintf(buf, 6, "%c%04d", kAlpha5Letters[catalog / 10000 - 10], catalog % 10000);
    } else {
        std::memcpy(buf, "00000", 6);
    }
}

int32_t ParseCatalogNumber(const char* five) {
    int32_t value = 0;
    int i = 0;
    const char* letter = five[0] != '\0' ? std::strchr(kAlpha5Letters, five[0]) : nullptr;
    if (letter != nullptr) {
        value = 10 + static_cast<int32_t>(letter - kAlpha5Letters);
        i = 1;
    } else {
        while (i < 4 && five[i] == ' ') ++i;  // leading blanks of hand-made sets
    }
    for (; i < 5; ++i) {
        if (five[i] < '0' || five[i] > '9') return -1;
        value = value * 10 + (five[i] - '0');
    }
    return value;
}

int TleChecksum(const char* line) {
    int sum = 0;
    for (int i = 0; i < 68 && line[i] != '\0'; ++i) {
        if (line[i] >= '0' && line[i] <= '9') sum += line[i] - '0';
        if (line[i] == '-') sum += 1;
    }
    return sum % 10;
}

std::string FormatLineOne(const OrbitElements& e) {
    const CNumericLocale cLocale;  // a '.' in every number, whatever the user's locale
    char cat[6], ddot[9], bstar[9], line[96];
    FormatCatalogNumber(e.catalog, cat);
    FormatImpliedExponent(e.meanMotionDdot, ddot);
    FormatImpliedExponent(e.bstar, bstar);
    long ndot = std::lround(std::fabs(e.meanMotionDot) * 1e8);
    if (ndot > 99999999) ndot = 99999999;
    std::snprintf(line, sizeof line, "1 %s%c %-8.8s %02d%012.8f %c.%08ld %s %s %d %4d", cat,
                  e.classification, e.designator.c_str(), e.epochYear % 100, e.epochDay,
                  e.meanMotionDot < 0 ? '-' : ' ', ndot, ddot, bstar, e.ephemerisType % 10,
                  e.elementSetNumber % 10000);
    std::string text(line);
    text.resize(68, ' ');
    return text + static_cast<char>('0' + TleChecksum(text.c_str()));
}

std::string FormatLineTwo(const OrbitElements& e) {
    const CNumericLocale cLocale;
    char cat[6], line[96];
    FormatCatalogNumber(e.catalog, cat);
    long ecc = std::lround(e.eccentricity * 1e7);
    if (ecc > 9999999) ecc = 9999999;
    std::snprintf(line, sizeof line, "2 %s %8.4f %8.4f %07ld %8.4f %8.4f %11.8f%5d", cat,
                  e.inclination, e.raan, ecc, e.argPerigee, e.meanAnomaly, e.meanMotion,
                  e.revolution % 100000);
    std::string text(line);
    text.resize(68, ' ');
    return text + static_cast<char>('0' + TleChecksum(text.c_str()));
}

ElementFormat DetectElementFormat(const std::string& text) {
    size_t i = 0;
    if (text.compare(0, 3, "\xEF\xBB\xBF") == 0) i = 3;  // a byte-order mark
    while (i < text.size() && std::strchr(" \t\r\n", text[i]) != nullptr) ++i;
    if (i < text.size() && (text[i] == '{' || text[i] == '[')) return ElementFormat::OmmJson;
    if (i < text.size() && text[i] == '<') return ElementFormat::OmmXml;
    const std::string first = text.substr(i, text.find_first_of("\r\n", i) - i);
    if (first.find("NORAD_CAT_ID") != std::string::npos ||
        first.find("OBJECT_NAME") != std::string::npos)
        return ElementFormat::OmmCsv;
    return ElementFormat::TwoLine;
}

const char* ElementFormatName(ElementFormat format) {
    switch (format) {
        case ElementFormat::OmmCsv:
            return "OMM CSV";
        case ElementFormat::OmmJson:
            return "OMM JSON";
        case ElementFormat::OmmXml:
            return "OMM XML";
        case ElementFormat::TwoLine:
            break;
    }
    return "two-line";
}

bool ReadTwoLineText(const std::string& text, std::vector<OrbitElements>* out,
                     ConversionReport* report) {
    std::vector<std::string> lines;
    SplitLines(text, &lines);
    std::string previous;  // the line before, when it may be a name line
    for (size_t i = 0; i < lines.size(); ++i) {
        const std::string& line = lines[i];
        if (IsElementLine(line, '1') && i + 1 < lines.size() && IsElementLine(lines[i + 1], '2')) {
            OrbitElements e;
            std::string why;
            if (DecodeLines(line, lines[i + 1], &e, &why) && ElementsPlausible(e, &why)) {
                e.longName = CleanNameLine(previous);
                out->push_back(e);
            } else {
                if (report->skipped++ == 0) report->firstProblem = why;
            }
            ++i;
            previous.clear();
            continue;
        }
        if (IsElementLine(line, '1') || IsElementLine(line, '2')) {
            if (report->skipped++ == 0) report->firstProblem = "a line 1 or 2 without its partner";
            previous.clear();
            continue;
        }
        previous = line;
    }
    return true;
}

bool ReadElementText(const std::string& text, std::vector<OrbitElements>* out,
                     ConversionReport* report, std::string* error) {
    switch (DetectElementFormat(text)) {
        case ElementFormat::OmmCsv:
            return ReadOmmCsv(text, out, report, error);
        case ElementFormat::OmmJson:
            return ReadOmmJson(text, out, report, error);
        case ElementFormat::OmmXml:
            return ReadOmmXml(text, out, report, error);
        case ElementFormat::TwoLine:
            break;
    }
    return ReadTwoLineText(text, out, report);
}

bool ParseOmmEpoch(const std::string& text, int32_t* year, double* day) {
    int y = 0, mo = 0, d = 0, h = 0, mi = 0;
    double s = 0.0;
    std::string t = Trim(text);
    if (!t.empty() && (t.back() == 'Z' || t.back() == 'z')) t.pop_back();
    // The seconds may carry any number of decimals; from_chars reads them
    // without the locale.
    char sep = 0;
    int consumed = 0;
    if (std::sscanf(t.c_str(), "%4d-%2d-%2d%c%2d:%2d:%n", &y, &mo, &d, &sep, &h, &mi, &consumed) <
            6 ||
        consumed == 0 || (sep != 'T' && sep != ' '))
        return false;
    if (!ToDouble(t.substr(static_cast<size_t>(consumed)), &s)) return false;
    if (y < 1957 || mo < 1 || mo > 12 || d < 1 || d > 31 || h > 23 || mi > 59 || s < 0 || s >= 61)
        return false;
    static const int kDaysBefore[] = {0, 31, 59, 90, 120, 151, 181, 212, 243, 273, 304, 334};
    const bool leap = (y % 4 == 0 && y % 100 != 0) || y % 400 == 0;
    const int doy = kDaysBefore[mo - 1] + d + (leap && mo > 2 ? 1 : 0);
    *year = y;
    *day = doy + (h * 3600.0 + mi * 60.0 + s) / 86400.0;
    return true;
}

bool ElementsPlausible(const OrbitElements& e, std::string* why) {
    const double values[] = {e.epochDay,    e.meanMotionDot, e.meanMotionDdot, e.bstar,
                             e.inclination, e.raan,          e.eccentricity,   e.argPerigee,
                             e.meanAnomaly, e.meanMotion};
    for (double v : values) {
        if (!std::isfinite(v)) {
            *why = "a value is not a number";
            return false;
        }
    }
    // 0 stands for a number beyond Alpha-5 in a file we wrote (see the side table).
    if (e.catalog < 0 || e.catalog > 999999999) {
        *why = "no catalogue number";
    } else if (e.epochYear < 1957 || e.epochYear > 2056 || e.epochDay < 1.0 ||
               e.epochDay >= 367.0) {
        *why = "the epoch is out of range";
    } else if (e.eccentricity < 0.0 || e.eccentricity >= 1.0) {
        *why = "the eccentricity is out of range";
    } else if (e.inclination < 0.0 || e.inclination > 180.0) {
        *why = "the inclination is out of range";
    } else if (e.meanMotion <= 0.0 || e.meanMotion >= 100.0) {
        *why = "the mean motion is out of range";
    } else if (e.raan < 0.0 || e.raan >= 360.0 || e.argPerigee < 0.0 || e.argPerigee >= 360.0 ||
               e.meanAnomaly < 0.0 || e.meanAnomaly >= 360.0) {
        *why = "an angle is out of range";
    } else {
        return true;
    }
    return false;
}

double EpochOrdinal(const OrbitElements& e) {
    // Whole days from 1950 to the start of the epoch year, leap days counted.
    double days = 0.0;
    for (int y = 1950; y < e.epochYear; ++y)
        days += ((y % 4 == 0 && y % 100 != 0) || y % 400 == 0) ? 366.0 : 365.0;
    return days + e.epochDay - 1.0;
}

}  // namespace veloran

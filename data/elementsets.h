// Element sets as today's sources publish them: two-line sets with or without
// a name line and with names of any length, and OMM mean elements in the
// CelesTrak/CCSDS CSV, JSON and XML forms. All of them are read into
// OrbitElements and written back as the element-set file the loader reads: a
// short name line, then lines 1 and 2 with their check digits.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace veloran {

// One element set, in the units of a two-line set.
struct OrbitElements {
    std::string longName;         // the source's name ("SAUDISAT 1C (SO-50)"); may be empty
    std::string shortName;        // 2 to 9 visible characters, as written on the name line
    int32_t catalog = 0;          // whole catalogue number, six digits allowed
    char classification = 'U';    // U, C or S
    std::string designator;       // international designator, "98067A" (at most 8 characters)
    int32_t epochYear = 0;        // four-digit year
    double epochDay = 0.0;        // day of the year with fraction, 1.0 = 1 January 00:00 UTC
    double meanMotionDot = 0.0;   // first derivative of mean motion / 2, rev/day^2
    double meanMotionDdot = 0.0;  // second derivative of mean motion / 6, rev/day^3
    double bstar = 0.0;           // drag term, 1/earth radii
    int32_t ephemerisType = 0;
    int32_t elementSetNumber = 0;
    double inclination = 0.0;  // degrees
    double raan = 0.0;         // right ascension of the ascending node, degrees
    double eccentricity = 0.0;
    double argPerigee = 0.0;   // degrees
    double meanAnomaly = 0.0;  // degrees
    double meanMotion = 0.0;   // rev/day
    int32_t revolution = 0;    // revolution number at epoch
};

// Alpha-5 covers 0 .. 339999: the first of the five characters is a letter
// (A = 10 ... Z = 33, I and O left out) for numbers from 100000.
constexpr int32_t kAlpha5Limit = 340000;

// The five catalogue-number characters of a two-line set: digits below
// 100000, Alpha-5 up to 339999, "00000" above (such a number lives only in
// the side table). buf holds at least 6 bytes.
void FormatCatalogNumber(int32_t catalog, char* buf);
// Reads five characters, digits or Alpha-5 ("A0001" = 100001); leading
// blanks count as zeros. -1 when they are neither.
int32_t ParseCatalogNumber(const char* five);

// The check digit of a line: digits summed, each '-' counted as 1, modulo 10,
// over the first 68 characters.
int TleChecksum(const char* line);

// Lines 1 and 2 of a set, 69 characters each, no line end.
std::string FormatLineOne(const OrbitElements& e);
std::string FormatLineTwo(const OrbitElements& e);

// What a conversion found.
struct ConversionReport {
    int skipped = 0;           // sets or records that could not be read
    std::string firstProblem;  // why the first of them was skipped, for the user
};

enum class ElementFormat { TwoLine, OmmCsv, OmmJson, OmmXml };

// Guesses the format from the text's first characters: '{' or '[' is JSON,
// '<' XML, a first line naming OBJECT_NAME or NORAD_CAT_ID a CSV table, and
// anything else two-line text.
ElementFormat DetectElementFormat(const std::string& text);
const char* ElementFormatName(ElementFormat format);

// Each reader appends the sets it can read to *out and counts the rest in
// *report. False, with *error set, when the text as a whole cannot be parsed
// (malformed JSON or XML, a CSV table without the needed columns).
bool ReadTwoLineText(const std::string& text, std::vector<OrbitElements>* out,
                     ConversionReport* report);
bool ReadOmmCsv(const std::string& text, std::vector<OrbitElements>* out, ConversionReport* report,
                std::string* error);
bool ReadOmmJson(const std::string& text, std::vector<OrbitElements>* out, ConversionReport* report,
                 std::string* error);
bool ReadOmmXml(const std::string& text, std::vector<OrbitElements>* out, ConversionReport* report,
                std::string* error);

// Reads text in whichever of the formats it is in.
bool ReadElementText(const std::string& text, std::vector<OrbitElements>* out,
                     ConversionReport* report, std::string* error);

// An OMM epoch, "2026-11-16T12:00:00.000000" (a trailing "Z" allowed), into
// a four-digit year and the day of the year with fraction. False when it is
// not one.
bool ParseOmmEpoch(const std::string& text, int32_t* year, double* day);

// Checks the values a set must have for the engine (finite, eccentricity in
// [0, 1), inclination in [0, 180], mean motion above 0, a known year); on
// failure says why in *why.
bool ElementsPlausible(const OrbitElements& e, std::string* why);

// Days since 1 January 1950 00:00 UTC of a set's epoch, for comparing epochs.
double EpochOrdinal(const OrbitElements& e);

}  // namespace veloran

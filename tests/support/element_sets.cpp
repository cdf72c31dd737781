// Synthetic element sets for the tests.

#include "tests/support/element_sets.h"

#include <cmath>
#include <cstdio>
#include <cstring>

#include "engine/observer.h"
#include "engine/sunmoon.h"
#include "engine/timebase.h"

namespace veloran::testing {

namespace {

// The modulo-10 check digit: digits count their value, a minus sign one.
char CheckDigit(const std::string& line) {
    int sum = 0;
    for (char c : line) {
        if (c >= '0' && c <= '9') sum += c - '0';
        if (c == '-') sum += 1;
    }
    return static_cast<char>('0' + sum % 10);
}

std::string Finish(std::string line) {
    line += CheckDigit(line);
    line += '\n';
    return line;
}

}  // namespace

std::string LineOne(const Elements& e) {
    char decay[32];
    std::snprintf(decay, sizeof decay, "%c.%08ld", e.decay < 0 ? '-' : ' ',
                  std::lround(std::fabs(e.decay) * 1e8));
    char text[512];
    std::snprintf(text, sizeof text, "1 %05dU 26001A   %02d%012.8f %s  00000-0  10000-3 0  999",
                  e.catalog, e.epochYear, e.epochDayOfYear, decay);
    return Finish(text);
}

std::string LineTwo(const Elements& e) {
    char text[512];
    std::snprintf(text, sizeof text, "2 %05d %8.4f %8.4f %07ld %8.4f %8.4f %11.8f%5d", e.catalog,
                  e.inclination, e.raan, std::lround(e.eccentricity * 1e7), e.argPerigee,
                  e.meanAnomaly, e.meanMotion, e.revolution);
    return Finish(text);
}

std::string ElementSetText(const std::string& name, const Elements& e) {
    return name + "\n" + LineOne(e) + LineTwo(e);
}

std::unique_ptr<SatRec> LoadRecord(const std::string& name, const Elements& e,
                                   const SiteRec* site) {
    return LoadRecordLines(name, LineOne(e), LineTwo(e), site);
}

std::unique_ptr<SatRec> LoadRecordLines(const std::string& name, const std::string& lineOne,
                                        const std::string& lineTwo, const SiteRec* site) {
    auto rec = std::make_unique<SatRec>();
    std::memset(rec.get(), 0, sizeof(SatRec));
    InitSatRec(rec.get());
    std::snprintf(rec->name, sizeof rec->name, "%s", name.c_str());
    std::memset(rec->trackHours, '1', 24);
    DecodeLineOne(lineOne.c_str(), rec.get());
    DecodeLineTwo(lineTwo.c_str(), rec.get());
    KepRec* k = &rec->satKep;
    k->inclination *= kDegreesToRadians;
    k->epochRAAN *= kDegreesToRadians;
    k->epochArgPerigee *= kDegreesToRadians;
    k->epochMeanAnomaly *= kDegreesToRadians;
    rec->db_index = 1;
    CalcKepVals(rec.get(), site);
    return rec;
}

std::unique_ptr<SatRec> LoadSun(const SiteRec* site) {
    auto sun = std::make_unique<SatRec>();
    std::memset(sun.get(), 0, sizeof(SatRec));
    InitSatRec(sun.get());
    std::snprintf(sun->name, sizeof sun->name, "Sun");
    std::memset(sun->trackHours, '1', 24);
    LoadSunKeps(&sun->satKep);
    CalcKepVals(sun.get(), site);
    sun->db_index = 1022;
    return sun;
}

SiteRec MakeSite(double latitudeDegs, double longitudeWestDegs, double altitudeM) {
    SiteRec site;
    std::memset(&site, 0, sizeof site);
    site.siteLatDegs = latitudeDegs;
    site.siteLongDegs = longitudeWestDegs;
    site.siteAltitudeM = altitudeM;
    SitePreCalc(&site);
    SiteCalculations(&site);
    return site;
}

uint32_t Seconds(int year, int month, int day, int hour, int minute, int second) {
    const DateTimeRec rec{static_cast<int16_t>(year),
                          static_cast<int16_t>(month),
                          static_cast<int16_t>(day),
                          static_cast<int16_t>(hour),
                          static_cast<int16_t>(minute),
                          static_cast<int16_t>(second),
                          0};
    return QFDateToSeconds(&rec);
}

}  // namespace veloran::testing

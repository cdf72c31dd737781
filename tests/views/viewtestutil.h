// Helpers shared by the view tests: satellite records made from elements,
// path inspection and a small XML well-formedness check.
#pragma once

#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "engine/satrec.h"
#include "engine/siterec.h"
#include "engine/timebase.h"
#include "views/displaylist.h"

namespace veloran::testing {

// A satellite record from elements (degrees, revolutions a day) with the
// derived constants computed for a site on the equator.
inline std::unique_ptr<SatRec> MakeSat(const char* name, double meanMotion, double inclinationDegs,
                                       double raanDegs = 0.0, double meanAnomalyDegs = 0.0,
                                       double eccentricity = 0.001) {
    auto rec = std::make_unique<SatRec>();
    std::memset(rec.get(), 0, sizeof(SatRec));
    InitSatRec(rec.get());
    std::strncpy(rec->name, name, sizeof rec->name - 1);
    KepRec* k = &rec->satKep;
    k->epochDay = GetEpochDay(26, 1, 320.5);  // 2026-11-16 12:00 UTC
    k->inclination = inclinationDegs * kDegreesToRadians;
    k->epochRAAN = raanDegs * kDegreesToRadians;
    k->eccentricity = eccentricity;
    k->epochArgPerigee = 0.0;
    k->epochMeanAnomaly = meanAnomalyDegs * kDegreesToRadians;
    k->epochMeanMotion = meanMotion;
    k->orbitalDecay = 1e-7;
    SiteRec site;
    std::memset(&site, 0, sizeof site);
    CalcKepVals(rec.get(), &site);
    return rec;
}

// Sets the live values the map reads: sub-satellite point (degrees, EAST
// positive, as on any atlas) and height in km.
inline void PlaceSat(SatRec* sat, double latDegs, double lonEastDegs, double altitudeKm) {
    sat->subSatPtLatitudeRads = latDegs * kDegreesToRadians;
    double west = -lonEastDegs;
    if (west < 0) west += 360.0;
    sat->subSatPtLongitudeRads = west * kDegreesToRadians;
    sat->satAltitude = altitudeKm;
}

inline int CountOps(const Path& path, PathOp op) {
    int n = 0;
    for (const PathPoint& p : path.points) n += p.op == op;
    return n;
}

inline std::vector<const DisplayItem*> ItemsOfClass(const DisplayList& list,
                                                    const std::string& cls) {
    std::vector<const DisplayItem*> out;
    for (const DisplayItem& item : list.items)
        if (item.cls == cls) out.push_back(&item);
    return out;
}

inline uint32_t Utc(int year, int month, int day, int hour, int minute) {
    DateTimeRec d{static_cast<int16_t>(year),
                  static_cast<int16_t>(month),
                  static_cast<int16_t>(day),
                  static_cast<int16_t>(hour),
                  static_cast<int16_t>(minute),
                  0,
                  1};
    return QFDateToSeconds(&d);
}

// Checks that `xml` is one well-formed element tree (tags balanced, attribute
// values quoted, entities known) and counts the elements by name and class.
struct XmlSummary {
    bool wellFormed = false;
    std::string error;
    std::vector<std::pair<std::string, std::string>> elements;  // name, class attribute

    int count(const std::string& name, const std::string& cls = "") const {
        int n = 0;
        for (const auto& e : elements) n += e.first == name && (cls.empty() || e.second == cls);
        return n;
    }
};

inline XmlSummary ParseXml(const std::string& xml) {
    XmlSummary s;
    std::vector<std::string> open;
    size_t i = 0;
    auto fail = [&s](const std::string& why) {
        s.error = why;
        return s;
    };
    if (xml.compare(0, 5, "<?xml") == 0) {
        i = xml.find("?>");
        if (i == std::string::npos) return fail("unterminated declaration");
        i += 2;
    }
    bool sawRoot = false;
    while (i < xml.size()) {
        if (xml[i] != '<') {
            if (open.empty() && !isspace(static_cast<unsigned char>(xml[i])))
                return fail("text outside the root");
            if (xml[i] == '&') {
                const size_t semi = xml.find(';', i);
                if (semi == std::string::npos) return fail("bad entity");
                const std::string ent = xml.substr(i, semi - i + 1);
                if (ent != "&amp;" && ent != "&lt;" && ent != "&gt;" && ent != "&quot;" &&
                    ent != "&apos;")
                    return fail("unknown entity " + ent);
            }
            ++i;
            continue;
        }
        const size_t end = xml.find('>', i);
        if (end == std::string::npos) return fail("unterminated tag");
        std::string tag = xml.substr(i + 1, end - i - 1);
        i = end + 1;
        if (!tag.empty() && tag[0] == '/') {
            if (open.empty() || open.back() != tag.substr(1))
                return fail("mismatched </" + tag.substr(1) + ">");
            open.pop_back();
            continue;
        }
        const bool selfClosing = !tag.empty() && tag.back() == '/';
        if (selfClosing) tag.pop_back();
        const size_t nameEnd = tag.find_first_of(" \n\t");
        const std::string name = tag.substr(0, nameEnd);
        if (name.empty()) return fail("empty tag name");
        if (open.empty() && sawRoot) return fail("second root element");
        sawRoot = true;
        // Attributes: name="value" pairs, values without '<' or a bare '&'.
        std::string cls;
        size_t a = nameEnd == std::string::npos ? tag.size() : nameEnd;
        while (a < tag.size()) {
            while (a < tag.size() && isspace(static_cast<unsigned char>(tag[a]))) ++a;
            if (a >= tag.size()) break;
            const size_t eq = tag.find('=', a);
            if (eq == std::string::npos || eq + 1 >= tag.size() || tag[eq + 1] != '"')
                return fail("unquoted attribute in <" + name + ">");
            const size_t close = tag.find('"', eq + 2);
            if (close == std::string::npos) return fail("unterminated attribute in <" + name + ">");
            const std::string attr = tag.substr(a, eq - a),
                              value = tag.substr(eq + 2, close - eq - 2);
            if (value.find('<') != std::string::npos) return fail("'<' in an attribute");
            if (attr == "class") cls = value;
            a = close + 1;
        }
        s.elements.emplace_back(name, cls);
        if (!selfClosing) open.push_back(name);
    }
    if (!open.empty()) return fail("unclosed <" + open.back() + ">");
    if (!sawRoot) return fail("no root element");
    s.wellFormed = true;
    return s;
}

}  // namespace veloran::testing

// The places file and the Location record.

#include "data/locations.h"

#include <strings.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "data/cnumeric.h"
#include "data/files.h"
#include "data/textline.h"
#include "engine/satrec.h"

namespace veloran {

namespace {

constexpr float kPiF = 3.14159265358979323846f;

void CopyText(char* to, size_t size, const std::string& from) {
    const size_t n = std::min(from.size(), size - 1);
    std::memcpy(to, from.data(), n);
    to[n] = '\0';
}

}  // namespace

std::string Location::displayName() const {
    return city + " " + state + " " + country;
}

double LocationRadians(double degrees) {
    return static_cast<float>(degrees) * static_cast<float>(kDegreesToRadians);
}

int compareLocation(const Location& a, const Location& b) {
    if (a.city.empty()) return 1;
    if (b.city.empty()) return -1;
    const int c = strcasecmp(a.city.c_str(), b.city.c_str());
    return c < 0 ? -1 : (c > 0 ? 1 : 0);
}

Point3F LightPoint(const Location& place) {
    const Point3F origin{0.0f, 0.0f, 0.0f};
    const Point3F surface{0.0f, 0.0f, 1.001f};
    const Matrix4x4F m = MatrixRotateAboutPoint(&origin, -static_cast<float>(place.latRads),
                                                static_cast<float>(place.lonRads) + kPiF, 0.0f);
    return TransformPoint(&surface, &m);
}

bool LoadPlaces(const std::string& path, PlacesList* out) {
    out->places.clear();
    out->names.clear();
    out->lightPoints.clear();
    std::string text;
    if (!ReadWholeFile(path, &text)) return false;
    CNumericLocale cLocale;
    // Lines end in LF, CR LF or a lone CR, the last one maybe in nothing; a
    // line of any length is read whole, so a rewrite keeps every place it read.
    size_t start = 0;
    while (start < text.size()) {
        size_t end = text.find_first_of("\r\n", start);
        if (end == std::string::npos) end = text.size();
        std::string line = text.substr(start, end - start);
        start = end + (text.compare(end, 2, "\r\n") == 0 ? 2 : 1);
        if (line.empty()) continue;
        Location place;
        size_t from = 0;
        while (place.fields < 5) {
            const size_t tab = line.find('\t', from);
            const std::string piece =
                line.substr(from, tab == std::string::npos ? std::string::npos : tab - from);
            switch (place.fields) {
                case 0:
                    place.city = piece;
                    break;
                case 1:
                    place.state = piece;
                    break;
                case 2:
                    place.country = piece;
                    break;
                case 3:
                    place.latDegs = std::strtod(piece.c_str(), nullptr);
                    place.latRads = LocationRadians(place.latDegs);
                    break;
                default:
                    place.lonDegs = std::strtod(piece.c_str(), nullptr);
                    place.lonRads = LocationRadians(place.lonDegs);
                    break;
            }
            ++place.fields;
            if (tab == std::string::npos) break;
            from = tab + 1;
        }
        if (place.fields == 5) {
            out->names.push_back(place.displayName());
            if (out->lightPoints.size() < static_cast<size_t>(kMaxLightPoints))
                out->lightPoints.push_back(LightPoint(place));
        }
        out->places.push_back(std::move(place));
    }
    return true;
}

bool RewritePlaces(const std::string& path, std::vector<Location>* places) {
    if (places->empty()) return true;
    std::stable_sort(places->begin(), places->end(), [](const Location& a, const Location& b) {
        return compareLocation(a, b) < 0;
    });
    return AtomicWriteFile(path, [places](FILE* f) {
        for (const Location& p : *places)
            std::fprintf(f, "%s\t%s\t%s\t%0.4f\t%0.4f\n", p.city.c_str(), p.state.c_str(),
                         p.country.c_str(), p.latDegs, p.lonDegs);
        return true;
    });
}

void ApplyLocationToSite(const Location& place, SiteRec* site) {
    CopyText(site->locationName, sizeof site->locationName, place.displayName());
    site->siteLatDegs = place.latDegs;
    site->siteLatRads = place.latRads;
    site->siteLongDegs = -place.lonDegs;
    site->siteLongRads = -place.lonRads;
}

}  // namespace veloran

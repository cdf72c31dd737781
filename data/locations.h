// The places file: one place per line, "city<TAB>state<TAB>country<TAB>
// latitude<TAB>longitude", degrees, longitude EAST positive; the Location
// record, its sort order, and the city-light points of the globe.
#pragma once

#include <string>
#include <vector>

#include "engine/siterec.h"
#include "engine/vector3.h"

namespace veloran {

// At most this many city-light points are made.
constexpr int kMaxLightPoints = 2048;

struct Location {
    std::string city;
    std::string state;
    std::string country;
    double latDegs = 0;  // north positive
    double lonDegs = 0;  // EAST positive (the site record counts west positive)
    double latRads = 0;  // computed at single precision, as the degrees were read
    double lonRads = 0;
    int fields = 0;  // how many of the five fields the line held (5 for a whole place)

    // "city state country", joined by single blanks: the name in the list.
    std::string displayName() const;
};

// Degrees to radians at single precision, as the places have always been converted.
double LocationRadians(double degrees);

// Sort order: a place without a city sorts after every other; otherwise the
// cities compare without regard to case. State and country play no part.
// Returns -1, 0 or 1.
int compareLocation(const Location& a, const Location& b);

// What a places file yields.
struct PlacesList {
    std::vector<Location> places;      // every line, as far as its fields go
    std::vector<std::string> names;    // the display names of the places with all five fields
    std::vector<Point3F> lightPoints;  // one per whole place, at most kMaxLightPoints
};

// Reads the places file: lines of any length ending in LF, CR LF or CR (the
// last one maybe in nothing), split at tabs; empty lines are skipped. False,
// with errno set, when it cannot be read (a folder or a device cannot); the
// list is then empty.
bool LoadPlaces(const std::string& path, PlacesList* out);

// Sorts the places with compareLocation (stable) and rewrites the file whole
// through a temporary file, "%s\t%s\t%s\t%0.4f\t%0.4f\n" per place. An empty
// list writes nothing and returns true. False when the file could not be
// written; the old file then stays as it was.
bool RewritePlaces(const std::string& path, std::vector<Location>* places);

// Applies a place to the site: locationName, latitude (degrees and radians)
// and longitude negated into the site's west-positive convention.
void ApplyLocationToSite(const Location& place, SiteRec* site);

// The light point of a place on the globe: (0, 0, 1.001) turned by minus the
// latitude about X and by the longitude plus pi about Y.
Point3F LightPoint(const Location& place);

}  // namespace veloran

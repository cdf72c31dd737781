// The flat world map: an equirectangular map image with the night side, the
// sub-solar point, a 30-degree grid, the coverage circle, cross and name of
// every tracked satellite, the main satellite's ground track and the site
// with the rotor's dead-spot mark. The tick feeds it with drawSatPath,
// drawGroundTrack and drawSiteCross; drawRect turns what was fed into a
// display list and clears it for the next tick.
//
// Coordinates are view pixels with y growing northwards: the South Pole is
// y = 0, the equator 90 * mScale, 180 degrees west/east the left and right
// edges. Longitudes in the records are positive towards the WEST.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "engine/satrec.h"
#include "engine/siterec.h"
#include "views/displaylist.h"

namespace veloran {

constexpr float kMapLabelFontSize = 14.0f;  // Helvetica 14 pt
constexpr float kCrossHalfSize = 5.0f;      // pixels
// Widths above this build nothing: a frame this wide would take gigabytes
// of path points and no screen shows it.
constexpr int32_t kMaxMapFrameWidth = 16384;

struct map_2D_view {
    Path sunPath;                  // the night spans, one line per pixel row
    Path mainSatPath;              // main satellite's coverage circle
    Path mainMarkerPath;           // main satellite's cross
    Path siteMarkerPath;           // site cross and dead-spot line
    Path secondaryMarkerPath;      // crosses of the other tracked satellites
    Path mainSatGroundTrackPath;   // main satellite's ground track
    Path sunSubSatPath;            // sub-solar cross
    Path grid;                     // 30-degree grid
    PointF sitePoint{0, 0};        // site, view pixels
    PointF satPoint{0, 0};         // main sub-satellite point, view pixels
    RectF scrollRect{0, 0, 0, 0};  // area to scroll to at the next draw
    bool needsScroll = false;
    SiteRec mSite{};          // copy of the site record, refreshed by drawGroundTrack
    std::string mapImage;     // resource name of the loaded map image; empty when none
    int32_t mFrameWidth = 0;  // map width, pixels
    double mScale = 0.0;      // pixels per degree
    bool showDeadSpot = false;
    bool flipped = false;    // the rotor works flipped over the dead spot
    bool followSat = false;  // keep the main satellite centred
    bool visible = false;    // the main satellite is above the horizon
    std::vector<MDLabel> sat_labels;
    std::vector<Path> secondary_sats;  // coverage circles of the other satellites

    const TextMeasure* measure = nullptr;  // label widths; the Helvetica estimate when null
    std::unique_ptr<SatRec> trackScratch;  // propagation copy for the ground track
    std::vector<int16_t> illum, oldIllum;  // terminator tables of the night drawing
};

// A fresh view: empty paths and labels, no map image, not following.
void initWithFrame(map_2D_view* view, const TextMeasure* measure);

// The resource name of the map image for a frame width ("map_1024.jpg" ...
// "map_8192.jpg"), or an empty string for any other width.
std::string MapImageName(int32_t width);

// Sets the zoom: width in pixels (the height is half of it), the image for
// that width (none for widths other than 1024, 2048, 4096, 8192), and with
// `scroll` set the rectangle to bring into view at the next draw.
void setMapWidth(map_2D_view* view, int32_t width, RectF rect, bool scroll);
void setFollowSat(map_2D_view* view, bool follow);

// Adds a satellite's coverage circle, cross and name: the main one red or
// blue by its AOS flag, the others grey. Null is ignored.
void drawSatPath(map_2D_view* view, const SatRec* sat, bool isMain);

// Copies the site and adds the satellite's ground track for one orbit (one
// day below one revolution a day) from `epoch` (epoch day, the tick's
// virtual time). The record itself is not changed. `show` is what the tick
// passes (always true); it does not change the track.
void drawGroundTrack(map_2D_view* view, double epoch, const SatRec* sat, const SiteRec* site,
                     bool show);

// Adds the site's cross (radians, longitude west positive) and, for
// dead-spot state 1 or 2, the line to the southern or northern edge.
void drawSiteCross(map_2D_view* view, double siteLatRads, double siteLonRads, int32_t deadSpotState,
                   bool flip);

// Turns the view's state into `out` (cleared first) and clears what the
// tick fed in. The Sun and the night follow `realNowSecs` (seconds since
// 1904, the wall clock), not the tick's virtual time. Without a map image
// the list stays empty.
void drawRect(map_2D_view* view, uint32_t realNowSecs, DisplayList* out);

// Helpers, public for the tests.

// Longitude (west positive) and latitude in radians to view pixels, each
// rounded half away from zero.
PointF LonLatRadsToPoint(double lonRads, double latRads, double scale);
void drawCross(Path* path, float x, float y, float halfSize);
void constructMarkerPath(Path* path, PointF point);
// The ground points from which the satellite is above the horizon, one per
// pixel of map height, split into arcs where they jump across the map.
void constructCoverageCirclePath(Path* path, const SatRec* sat, const map_2D_view* view);
void constructLabels(map_2D_view* view, const SatRec* sat, PointF point, int32_t color);
// Whether `previous` lies within the square of half-side `halfSide` around `current`.
bool pointsWithinRange(PointF previous, PointF current, float halfSide);
// Adds the night span of every row whose table entry is non-negative and
// differs from `oldTable` (or every such row when the centre moved), centred
// on column `centre`.
void moveTerm(Path* path, const int16_t* table, const int16_t* oldTable, int rows, int mapWidth,
              int centre, int oldCentre);
// One row's span from `start` for `width` pixels, wrapped at the map's right edge.
void xSpan(Path* path, int row, int start, int width, int mapWidth);

}  // namespace veloran

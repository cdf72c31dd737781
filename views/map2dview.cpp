// The flat world map's builders: projection, coverage circles, ground track,
// site mark, night shading and the drawing order.

#include "views/map2dview.h"

#include <cmath>
#include <cstring>

#include "engine/orbit.h"
#include "engine/sunmoon.h"
#include "engine/timebase.h"
#include "engine/units.h"

namespace veloran {

namespace {

const Color kSunCrossColor{1.0f, 1.0f, 0.0f, 1.0f};
const Color kNightColor{0.0f, 0.0f, 0.0f, 0.6f};
const Color kGridColor{0.8f, 0.8f, 0.8f, 1.0f};
const Color kOtherSatColor{0.6f, 0.6f, 0.6f, 1.0f};
const Color kMainInViewColor{1.0f, 0.3f, 0.2f, 1.0f};
const Color kMainOutOfViewColor{0.2f, 0.3f, 1.0f, 1.0f};
const Color kGroundTrackColor{0.3f, 0.3f, 0.9f, 0.8f};
const Color kSiteFlippedColor{1.0f, 0.0f, 0.0f, 1.0f};
const Color kSiteColor{0.0f, 0.0f, 1.0f, 1.0f};
constexpr float kGridLineWidth = 0.3f;

bool Usable(const map_2D_view* view) {
    return view->mFrameWidth > 0 && view->mFrameWidth <= kMaxMapFrameWidth;
}

double Reduce360(double x) {
    return x - 360.0 * std::floor(x / 360.0);
}

// Sub-solar (or, half a day on, anti-solar) longitude in degrees from the
// western map edge, from the Sun's right ascension and the sidereal time.
double SolarMapLongitude(double jd, double* declination) {
    double ra = 0, dec = 0, radius = 0, eclipticLongitude = 0;
    sunpos(jd, false, &ra, &dec, &radius, &eclipticLongitude);
    *declination = dec;
    return Reduce360(ra - 15.0 * gmst(jd) - 180.0);
}

const TextMeasure& Measure(const map_2D_view* view) {
    static const HelveticaEstimate estimate;
    return view->measure ? *view->measure : estimate;
}

}  // namespace

void initWithFrame(map_2D_view* view, const TextMeasure* measure) {
    *view = map_2D_view{};
    view->measure = measure;
    view->trackScratch = std::make_unique<SatRec>();
    std::memset(view->trackScratch.get(), 0, sizeof(SatRec));
}

std::string MapImageName(int32_t width) {
    switch (width) {
        case 1024:
            return "map_1024.jpg";
        case 2048:
            return "map_2048.jpg";
        case 4096:
            return "map_4096.jpg";
        case 8192:
            return "map_8192.jpg";
        default:
            return "";
    }
}

void setMapWidth(map_2D_view* view, int32_t width, RectF rect, bool scroll) {
    view->mFrameWidth = width;
    view->mScale = width / 360.0;
    view->mapImage = MapImageName(width);
    if (scroll) {
        view->scrollRect = rect;
        view->needsScroll = true;
    }
}

void setFollowSat(map_2D_view* view, bool follow) {
    view->followSat = follow;
}

PointF LonLatRadsToPoint(double lonRads, double latRads, double scale) {
    const double L = lonRads / kDegreesToRadians;
    const double x = L <= 180.0 ? scale * (180.0 - L) : scale * (360.0 - L + 180.0);
    const double y = scale * (latRads / kDegreesToRadians + 90.0);
    return {static_cast<float>(std::round(x)), static_cast<float>(std::round(y))};
}

void drawCross(Path* path, float x, float y, float halfSize) {
    path->moveTo(x - halfSize, y);
    path->lineTo(x + halfSize, y);
    path->moveTo(x, y - halfSize);
    path->lineTo(x, y + halfSize);
}

void constructMarkerPath(Path* path, PointF point) {
    drawCross(path, point.x, point.y, kCrossHalfSize);
}

bool pointsWithinRange(PointF previous, PointF current, float halfSide) {
    return std::fabs(previous.x - current.x) <= halfSide &&
           std::fabs(previous.y - current.y) <= halfSide;
}

void constructCoverageCirclePath(Path* path, const SatRec* sat, const map_2D_view* view) {
    const double scale = view->mScale;
    // No minimum elevation: the circle is the geometric horizon.
    const double siteAltitudeKm = view->mSite.siteAltitudeM / 1000.0;
    const double ratio = (siteAltitudeKm + kEarthRadiusKm) / (sat->satAltitude + kEarthRadiusKm);
    const double beta = std::acos(std::fmin(1.0, std::fmax(-1.0, ratio)));
    const double phi = sat->subSatPtLatitudeRads, lambda = sat->subSatPtLongitudeRads;
    const double sinPhi = std::sin(phi), cosPhi = std::cos(phi);
    const double sinLambda = std::sin(lambda), cosLambda = std::cos(lambda);
    const double sinBeta = std::sin(beta), cosBeta = std::cos(beta);
    const int n = static_cast<int>(180.0 * scale);
    const float halfSide = static_cast<float>(std::round(60.0 * scale));
    PointF previous{0, 0};
    for (int i = 0; i < n; ++i) {
        const double theta = kTwoPi * i / n;
        const double sinTheta = std::sin(theta), cosTheta = std::cos(theta);
        const double a = cosPhi * cosBeta - sinPhi * sinBeta * cosTheta;
        const double lon = std::atan2(sinLambda * a + cosLambda * sinBeta * sinTheta,
                                      cosLambda * a - sinLambda * sinBeta * sinTheta);
        const double lat = std::asin(cosPhi * sinBeta * cosTheta + sinPhi * cosBeta);
        const PointF p{static_cast<float>(std::round((180.0 - lon / kDegreesToRadians) * scale)),
                       static_cast<float>(std::round(scale * (lat / kDegreesToRadians + 90.0)))};
        if (i > 0 && pointsWithinRange(previous, p, halfSide))
            path->lineTo(p.x, p.y);
        else
            path->moveTo(p.x, p.y);
        previous = p;
    }
}

void constructLabels(map_2D_view* view, const SatRec* sat, PointF point, int32_t color) {
    MDLabel label;
    label.color = color;
    label.name = sat->name;  // the record keeps its name NUL-terminated
    const double width = Measure(view).textWidth(label.name, kMapLabelFontSize);
    const double halfHeight = 90.0 * view->mScale;
    // Below the equator the name goes above the cross, above it below, so it
    // stays on the map.
    label.point.x = static_cast<float>(point.x - width / 2.0);
    label.point.y = point.y <= halfHeight ? point.y + 12.0f : point.y - 25.0f;
    view->sat_labels.push_back(std::move(label));
}

void drawSatPath(map_2D_view* view, const SatRec* sat, bool isMain) {
    if (sat == nullptr || !Usable(view)) return;
    if (!std::isfinite(sat->subSatPtLatitudeRads) || !std::isfinite(sat->subSatPtLongitudeRads) ||
        !std::isfinite(sat->satAltitude))
        return;
    const PointF point =
        LonLatRadsToPoint(sat->subSatPtLongitudeRads, sat->subSatPtLatitudeRads, view->mScale);
    if (isMain) {
        constructCoverageCirclePath(&view->mainSatPath, sat, view);
        constructMarkerPath(&view->mainMarkerPath, point);
        view->satPoint = point;
        view->visible = sat->AOS != 0;
        constructLabels(view, sat, point, 3);
    } else {
        Path circle;
        constructCoverageCirclePath(&circle, sat, view);
        view->secondary_sats.push_back(std::move(circle));
        constructMarkerPath(&view->secondaryMarkerPath, point);
        constructLabels(view, sat, point, 0);
    }
}

void drawGroundTrack(map_2D_view* view, double epoch, const SatRec* sat, const SiteRec* site,
                     bool show) {
    (void)show;
    if (site != nullptr) view->mSite = *site;
    if (sat == nullptr || !Usable(view) || !std::isfinite(epoch)) return;
    if (!view->trackScratch) {
        view->trackScratch = std::make_unique<SatRec>();
        std::memset(view->trackScratch.get(), 0, sizeof(SatRec));
    }
    // Propagate a copy: the tick's record keeps the live values of now.
    SatRec* scratch = view->trackScratch.get();
    scratch->satKep = sat->satKep;
    scratch->satRAANPrecession = sat->satRAANPrecession;
    scratch->perigeePrecession = sat->perigeePrecession;

    const double step = (1.0 / 1440.0) / view->mScale;
    const double meanMotion = sat->satKep.epochMeanMotion;
    const double span = meanMotion >= 1.0 ? 1.0 / meanMotion : 1.0;
    const float halfSide = static_cast<float>(std::round(30.0 * view->mScale));
    Path* path = &view->mainSatGroundTrackPath;
    bool havePrevious = false;
    PointF previous{0, 0};
    for (long i = 3;; ++i) {
        const double t = epoch + i * step;
        if (!(t < epoch + span)) break;
        double meanAnomaly = 0, trueAnomaly = 0, radius = 0;
        SolveKeplerD(t, &scratch->satKep, &meanAnomaly, &trueAnomaly, &radius);
        scratch->trueAnomaly = trueAnomaly;
        double lat = 0, lon = 0;
        GetSubSatPointD(scratch, t, &lat, &lon);
        if (!std::isfinite(lat) || !std::isfinite(lon)) {
            havePrevious = false;
            continue;
        }
        const PointF p = LonLatRadsToPoint(lon, lat, view->mScale);
        if (havePrevious && pointsWithinRange(previous, p, halfSide)) {
            path->lineTo(p.x, p.y);
        } else {
            // A zero-length segment: the track jumps across the map here.
            path->moveTo(p.x, p.y);
            path->lineTo(p.x, p.y);
        }
        previous = p;
        havePrevious = true;
    }
}

void drawSiteCross(map_2D_view* view, double siteLatRads, double siteLonRads, int32_t deadSpotState,
                   bool flip) {
    view->flipped = flip;
    if (!Usable(view) || !std::isfinite(siteLatRads) || !std::isfinite(siteLonRads)) return;
    const PointF p = LonLatRadsToPoint(siteLonRads, siteLatRads, view->mScale);
    view->sitePoint = p;
    constructMarkerPath(&view->siteMarkerPath, p);
    switch (deadSpotState) {
        case 0:
            view->showDeadSpot = false;
            break;
        case 1:  // the dead spot is south: mark the line from the site to the southern edge
            view->showDeadSpot = true;
            view->siteMarkerPath.moveTo(p.x, p.y - 10.0f);
            view->siteMarkerPath.lineTo(p.x, 0.0f);
            break;
        case 2:
            view->showDeadSpot = true;
            view->siteMarkerPath.moveTo(p.x, p.y + 10.0f);
            view->siteMarkerPath.lineTo(p.x, static_cast<float>(180.0 * view->mScale));
            break;
        default:
            break;
    }
}

void xSpan(Path* path, int row, int start, int width, int mapWidth) {
    if (mapWidth <= 0 || width <= 0) return;
    start %= mapWidth;
    if (start < 0) start += mapWidth;
    const float y = static_cast<float>(row);
    if (start + width > mapWidth) {
        path->moveTo(static_cast<float>(start), y);
        path->lineTo(static_cast<float>(mapWidth - 1), y);
        path->moveTo(0.0f, y);
        path->lineTo(static_cast<float>(start + width - mapWidth - 1), y);
    } else {
        path->moveTo(static_cast<float>(start), y);
        path->lineTo(static_cast<float>(start + width - 1), y);
    }
}

void moveTerm(Path* path, const int16_t* table, const int16_t* oldTable, int rows, int mapWidth,
              int centre, int oldCentre) {
    // The table is filled for the anti-solar declination, so its rows run
    // from the northern edge: entry i is the half-width of the night on map
    // row rows - 1 - i. Read from the southern edge instead, the summer pole
    // would be shaded and the winter pole lit.
    for (int i = 0; i < rows; ++i) {
        const int w = table[i];
        if (w < 0) continue;
        if (centre == oldCentre && w == oldTable[i]) continue;
        xSpan(path, rows - 1 - i, centre - w, 2 * w, mapWidth);
    }
}

namespace {

void ClearConsumed(map_2D_view* view) {
    view->mainSatPath.clear();
    view->mainMarkerPath.clear();
    view->mainSatGroundTrackPath.clear();
    view->secondaryMarkerPath.clear();
    view->siteMarkerPath.clear();
    view->secondary_sats.clear();
    view->sat_labels.clear();
}

void DrawNight(map_2D_view* view, double jd, DisplayList* out) {
    // The Sun half a day on stands above the anti-solar point of now.
    double declination = 0;
    const double antiLongitude = SolarMapLongitude(jd + 0.5, &declination);
    declination = -declination;
    const int centre = static_cast<int>(std::round(antiLongitude * view->mScale));
    const int width = static_cast<int>(std::lround(360.0 * view->mScale));
    const int height = static_cast<int>(std::lround(180.0 * view->mScale));
    view->illum.assign(height, 0);
    view->oldIllum.assign(height, 0);
    projillum(view->illum.data(), width, height, declination);
    // Against an empty previous table and centre every row is drawn afresh.
    moveTerm(&view->sunPath, view->illum.data(), view->oldIllum.data(), height, width, centre, -1);
    out->addSpans(&view->sunPath, kNightColor, "night");
}

}  // namespace

void drawRect(map_2D_view* view, uint32_t realNowSecs, DisplayList* out) {
    out->clear();
    out->width = static_cast<float>(view->mFrameWidth);
    out->height = static_cast<float>(view->mFrameWidth / 2);
    if (view->mapImage.empty() || !Usable(view)) {
        ClearConsumed(view);
        return;
    }
    const RectF bounds{0.0f, 0.0f, out->width, out->height};
    out->addImage(view->mapImage, bounds, "map");

    // Sun and night follow the wall clock even when the time slider is moved.
    const double jd = FractionalJulianDate(realNowSecs);
    double declination = 0;
    const double sunLongitude = SolarMapLongitude(jd, &declination);
    view->sunSubSatPath.clear();
    drawCross(&view->sunSubSatPath, static_cast<float>(std::round(sunLongitude * view->mScale)),
              static_cast<float>(std::round(view->mScale * (declination + 90.0))), kCrossHalfSize);
    out->addStroke(&view->sunSubSatPath, kSunCrossColor, 1.0f, "sun");

    DrawNight(view, jd, out);

    view->grid.clear();
    for (int j = 0; j <= 6; ++j) {
        const float y = static_cast<float>(30.0 * j * view->mScale);
        view->grid.moveTo(bounds.x, y);
        view->grid.lineTo(bounds.x + bounds.width, y);
    }
    for (int j = 0; j <= 12; ++j) {
        const float x = static_cast<float>(30.0 * j * view->mScale);
        view->grid.moveTo(x, bounds.y);
        view->grid.lineTo(x, bounds.y + bounds.height);
    }
    out->addStroke(&view->grid, kGridColor, kGridLineWidth, "grid");

    if (!view->secondary_sats.empty()) {
        for (Path& circle : view->secondary_sats)
            out->addStroke(&circle, kOtherSatColor, 1.0f, "footprint");
        view->secondary_sats.clear();
        out->addStroke(&view->secondaryMarkerPath, kOtherSatColor, 1.0f, "marker");
    }

    const Color mainColor = view->visible ? kMainInViewColor : kMainOutOfViewColor;
    out->addStroke(&view->mainSatPath, mainColor, 1.0f, "footprint main");
    out->addStroke(&view->mainMarkerPath, mainColor, 1.0f, "marker main");
    out->addStroke(&view->mainSatGroundTrackPath, kGroundTrackColor, 1.0f, "track");

    out->addStroke(&view->siteMarkerPath,
                   view->showDeadSpot && view->flipped ? kSiteFlippedColor : kSiteColor, 1.0f,
                   "site");

    for (const MDLabel& label : view->sat_labels) out->addLabel(label, kMapLabelFontSize, "label");
    view->sat_labels.clear();

    if (view->needsScroll) {
        out->scrollToRect = true;
        out->scrollRect = view->scrollRect;
        view->needsScroll = false;
    }
    if (view->followSat) {
        out->centreOnPoint = true;
        out->centre = view->satPoint;
    }
    ClearConsumed(view);
}

}  // namespace veloran

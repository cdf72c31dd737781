// The polar sky plot's builder: rings of equal elevation, azimuth spokes, the
// pass track and its marks, the antenna and the satellite.

#include "views/skyplot.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <string>

#include "engine/passfinder.h"

namespace veloran {

namespace {

constexpr double kDegreesToRadiansD = 0.017453292519943295;
constexpr int kRingSegments = 96;
constexpr float kFontSize = 11.0f;
constexpr int32_t kGrey = 0, kBlack = 1, kBlue = 2, kRed = 3;  // label colour codes

const Color kWhite{1.0f, 1.0f, 1.0f, 1.0f};
const Color kGrid{0.6f, 0.6f, 0.6f, 1.0f};
const Color kHorizon{0.0f, 0.0f, 0.0f, 1.0f};
const Color kTrack{0.0f, 0.0f, 1.0f, 1.0f};
const Color kAosColor{0.0f, 0.6f, 0.0f, 1.0f};
const Color kMaxColor{0.0f, 0.0f, 1.0f, 1.0f};
const Color kLosColor{0.8f, 0.0f, 0.0f, 1.0f};
const Color kSatellite{1.0f, 0.5f, 0.0f, 1.0f};
const Color kTarget{0.5f, 0.0f, 0.5f, 1.0f};
const Color kRotor{0.0f, 0.5f, 0.5f, 1.0f};

// Room around the disc for the compass letters and the title, pixels.
float Margin(float size) {
    return std::max(18.0f, size * 0.06f);
}

void Circle(Path* path, PointF centre, float radius) {
    for (int i = 0; i <= kRingSegments; ++i) {
        const double a = i * 2.0 * 3.141592653589793 / kRingSegments;
        const float x = centre.x + radius * static_cast<float>(std::sin(a));
        const float y = centre.y + radius * static_cast<float>(std::cos(a));
        if (i == 0)
            path->moveTo(x, y);
        else
            path->lineTo(x, y);
    }
    path->close();
}

void Label(DisplayList* out, const std::string& text, float x, float y, int32_t color,
           const char* cls) {
    if (text.empty()) return;
    MDLabel label;
    label.color = color;
    label.point = {x, y};
    label.name = text;
    out->addLabel(label, kFontSize, cls);
}

// A mark at a point of the track: a filled dot with its text beside it, on
// the side toward the middle so that marks on the rim keep their text inside
// the frame; `above` lifts the text clear of a mark that may lie close by.
void Mark(DisplayList* out, float size, PointF at, float radius, Color color,
          const std::string& text, int32_t textColor, const char* cls, bool above = false) {
    Path dot;
    Circle(&dot, at, radius);
    out->addFill(&dot, color, cls);
    static const HelveticaEstimate measure;
    const float width = static_cast<float>(measure.textWidth(text, kFontSize));
    const float x = at.x > size / 2.0f ? at.x - radius - 3.0f - width : at.x + radius + 3.0f;
    const float y = above ? at.y + radius + 2.0f : at.y - kFontSize / 3.0f;
    Label(out, text, x, y, textColor, cls);
}

constexpr int kTrackSamples = 180;

// "hh:mm:ss" UTC of a time value: 1904-01-01 began at midnight UTC.
std::string Clock(uint32_t secs) {
    const uint32_t s = secs % 86400;
    char text[16];
    std::snprintf(text, sizeof text, "%02u:%02u:%02u", s / 3600, s / 60 % 60, s % 60);
    return text;
}

}  // namespace

int SkyPlotForPass(const SatRec* sat, const SiteRec* site, double nowDay, uint32_t nowSecs,
                   SkyPlotScene* scene) {
    scene->track.clear();
    scene->aosText = scene->maxText = scene->losText = "";
    if (sat == nullptr || site == nullptr) return 0;
    scene->satelliteName = sat->name;
    double az = 0, el = -90;
    scene->hasSatellite = LookAnglesOver(sat, site, nowDay, nowDay, 1, &az, &el) == 1;
    scene->satellite = SkyDirection{az, el};
    scene->title = std::string(sat->name) + ", no pass in the next two days";

    // Searched from half a day back, so that a pass in progress keeps its AOS.
    PassRec passes[64];
    const int count = FindPasses(sat, site, nullptr, nowDay - 0.5, nowDay + 2.0, 0.0, passes, 64);
    for (int i = 0; i < count && i < 64; ++i) {
        const PassRec& p = passes[i];
        if (p.losDay < nowDay) continue;
        std::vector<double> azimuths(kTrackSamples), elevations(kTrackSamples);
        const int n = LookAnglesOver(sat, site, p.aosDay, p.losDay, kTrackSamples, azimuths.data(),
                                     elevations.data());
        for (int j = 0; j < n; ++j) scene->track.push_back({azimuths[j], elevations[j]});
        const auto secs = [&](double day) {
            return static_cast<uint32_t>(static_cast<int64_t>(nowSecs) +
                                         std::llround((day - nowDay) * 86400.0));
        };
        char max[48];
        std::snprintf(max, sizeof max, "MAX %.1f\xC2\xB0 %s", p.maxElevationDegs,
                      Clock(secs(p.maxDay)).c_str());
        scene->aosText = "AOS " + Clock(secs(p.aosDay));
        scene->maxText = max;
        scene->losText = "LOS " + Clock(secs(p.losDay));
        scene->title = std::string(sat->name) + ", pass rising " + Clock(secs(p.aosDay)) + " UTC";
        return 1;
    }
    return 0;
}

PointF SkyPlotPoint(float size, SkyDirection d) {
    const float radius = size / 2.0f - Margin(size);
    const double elevation = std::clamp(d.elevationDegs, 0.0, 90.0);
    const double r = radius * (90.0 - elevation) / 90.0;
    const double a = d.azimuthDegs * kDegreesToRadiansD;
    return PointF{size / 2.0f + static_cast<float>(r * std::sin(a)),
                  size / 2.0f + static_cast<float>(r * std::cos(a))};
}

SkyDirection AntennaDirection(SkyDirection rotor) {
    if (rotor.elevationDegs <= 90.0) return rotor;
    double azimuth = rotor.azimuthDegs + 180.0;
    if (azimuth >= 360.0) azimuth -= 360.0;
    return SkyDirection{azimuth, 180.0 - rotor.elevationDegs};
}

void BuildSkyPlot(const SkyPlotScene* scene, DisplayList* out) {
    out->clear();
    if (scene == nullptr) return;
    const float size = scene->size;
    out->width = size;
    out->height = size;
    out->addFillRect(RectF{0, 0, size, size}, kWhite, "background");

    const PointF centre{size / 2.0f, size / 2.0f};
    const float radius = size / 2.0f - Margin(size);
    Path grid;
    for (int elevation : {30, 60}) Circle(&grid, centre, radius * (90 - elevation) / 90.0f);
    for (int azimuth = 0; azimuth < 360; azimuth += 30) {
        const PointF rim = SkyPlotPoint(size, {static_cast<double>(azimuth), 0.0});
        grid.moveTo(centre.x, centre.y);
        grid.lineTo(rim.x, rim.y);
    }
    out->addStroke(&grid, kGrid, 0.5f, "grid");
    Path horizon;
    Circle(&horizon, centre, radius);
    out->addStroke(&horizon, kHorizon, 1.0f, "horizon");

    const char* compass[] = {"N", "E", "S", "W"};
    for (int i = 0; i < 4; ++i) {
        const PointF p = SkyPlotPoint(size, {i * 90.0, -1.0});
        const double a = i * 90.0 * kDegreesToRadiansD;
        // Outside the rim, centred on the spoke.
        const float x = p.x + static_cast<float>(std::sin(a)) * 10.0f - kFontSize * 0.35f;
        const float y = p.y + static_cast<float>(std::cos(a)) * 10.0f - kFontSize * 0.35f;
        Label(out, compass[i], x, y, kBlack, "compass");
    }
    for (int elevation : {30, 60}) {
        const PointF p = SkyPlotPoint(size, {0.0, static_cast<double>(elevation)});
        Label(out, std::to_string(elevation), p.x + 2.0f, p.y + 2.0f, kGrey, "grid");
    }
    Label(out, scene->title, 4.0f, size - kFontSize - 2.0f, kBlack, "title");

    if (!scene->track.empty()) {
        Path track;
        for (size_t i = 0; i < scene->track.size(); ++i) {
            const PointF p = SkyPlotPoint(size, scene->track[i]);
            if (i == 0)
                track.moveTo(p.x, p.y);
            else
                track.lineTo(p.x, p.y);
        }
        out->addStroke(&track, kTrack, 2.0f, "track");
        const auto highest = std::max_element(scene->track.begin(), scene->track.end(),
                                              [](const SkyDirection& a, const SkyDirection& b) {
                                                  return a.elevationDegs < b.elevationDegs;
                                              });
        Mark(out, size, SkyPlotPoint(size, scene->track.front()), 4.0f, kAosColor, scene->aosText,
             kBlack, "aos");
        Mark(out, size, SkyPlotPoint(size, *highest), 4.0f, kMaxColor, scene->maxText, kBlue,
             "max");
        Mark(out, size, SkyPlotPoint(size, scene->track.back()), 4.0f, kLosColor, scene->losText,
             kRed, "los");
    }

    if (scene->hasTarget) {
        // A cross where the antenna was sent.
        const PointF p = SkyPlotPoint(size, AntennaDirection(scene->target));
        Path cross;
        cross.moveTo(p.x - 6.0f, p.y - 6.0f);
        cross.lineTo(p.x + 6.0f, p.y + 6.0f);
        cross.moveTo(p.x - 6.0f, p.y + 6.0f);
        cross.lineTo(p.x + 6.0f, p.y - 6.0f);
        out->addStroke(&cross, kTarget, 2.0f, "target");
    }
    if (scene->hasRotor) {
        // A ring where the rotor says it points.
        Path ring;
        Circle(&ring, SkyPlotPoint(size, AntennaDirection(scene->rotor)), 7.0f);
        out->addStroke(&ring, kRotor, 2.0f, "rotor");
    }
    if (scene->hasSatellite && scene->satellite.elevationDegs >= 0.0)
        Mark(out, size, SkyPlotPoint(size, scene->satellite), 5.0f, kSatellite,
             scene->satelliteName, kBlack, "satellite", true);
}

}  // namespace veloran

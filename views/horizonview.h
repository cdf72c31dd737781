// The horizon timeline: the next eight hours at 5 pixels a minute (12
// seconds a pixel), elevation 0 to 90 degrees bottom to top. Each tracked
// satellite's next pass is a filled shape from its elevation profile,
// coloured by how high it goes, with its name at the peak; a green line marks
// the site's minimum elevation. The tick calls drawSat per tracked satellite;
// drawRect turns that into a display list and starts afresh.
#pragma once

#include <cstdint>
#include <vector>

#include "engine/satrec.h"
#include "views/displaylist.h"

namespace veloran {

constexpr float kHorizonLabelFontSize = 11.0f;  // Helvetica 11 pt
constexpr int kHorizonMinutes = 480;            // the marked scale, minutes
constexpr int kHorizonPixelsPerMinute = 5;
constexpr int kHorizonSecondsPerPixel = 12;
// The frame the application and the command line use: 480 minutes and a
// little room on the right, two pixels per degree.
constexpr float kHorizonDefaultWidth = 2410.0f;
constexpr float kHorizonDefaultHeight = 182.0f;

struct horizon_view {
    Path graySat;       // passes with maximum elevation below 30 degrees
    Path lightgraySat;  // no usable pass, or disabled
    Path blueSat;       // maximum elevation 30 to below 60 degrees
    Path orangeSat;     // 60 degrees or more (drawn red)
    std::vector<MDLabel> sat_labels;
    double mMinElevDegs = 0.0;  // minimum elevation line, degrees
    RectF bounds{0, 0, kHorizonDefaultWidth, kHorizonDefaultHeight};
    const TextMeasure* measure = nullptr;  // label widths; the Helvetica estimate when null
};

// A fresh view with the given bounds (pixels, origin lower left).
void initWithFrame(horizon_view* view, RectF frame, const TextMeasure* measure);

// Stores the minimum elevation and adds the satellite's pass shape and name.
// Null is ignored; a sample count outside 0..1200 is taken as 0 or 1200.
void drawSat(horizon_view* view, const SatRec* sat, double minElevDegs);

// Appends the background: white, minute labels, minimum-elevation line,
// thin and thick grid.
void drawGrid(const horizon_view* view, DisplayList* out);

// Clears `out`, draws the grid, the shapes and the names into it, and
// empties the view for the next tick.
void drawRect(horizon_view* view, DisplayList* out);

}  // namespace veloran

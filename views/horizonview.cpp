// The horizon timeline's builders: grid, pass shapes and names.

#include "views/horizonview.h"

#include <cmath>
#include <cstdio>

namespace veloran {

namespace {

const Color kWhite{1.0f, 1.0f, 1.0f, 1.0f};
const Color kThinGridColor{0.5f, 0.5f, 0.5f, 1.0f};
const Color kThickGridColor{0.0f, 0.0f, 0.0f, 1.0f};
const Color kMinElevationColor{0.0f, 1.0f, 0.0f, 1.0f};
constexpr float kThinWidth = 0.3f, kThickWidth = 0.5f, kMinElevationWidth = 0.3f;
constexpr float kNoPassWidth = 1.0f, kPassWidth = 1.5f;
// The name never comes closer to the top than this, pixels.
constexpr float kLabelTopMargin = 26.0f;

struct ShapeStyle {
    Color fill, stroke;
    float width;
};
const ShapeStyle kLightGrayStyle{{0.8f, 0.8f, 0.8f, 0.3f}, {0.7f, 0.7f, 0.7f, 0.8f}, kNoPassWidth};
const ShapeStyle kGrayStyle{{0.5f, 0.5f, 0.5f, 0.5f}, {0.5f, 0.5f, 0.5f, 1.0f}, kPassWidth};
const ShapeStyle kBlueStyle{{0.0f, 0.0f, 1.0f, 0.5f}, {0.0f, 0.0f, 1.0f, 1.0f}, kPassWidth};
const ShapeStyle kOrangeStyle{{0.7f, 0.2f, 0.2f, 0.5f}, {0.7f, 0.2f, 0.2f, 1.0f}, kPassWidth};

const TextMeasure& Measure(const horizon_view* view) {
    static const HelveticaEstimate estimate;
    return view->measure ? *view->measure : estimate;
}

void AddShape(DisplayList* out, Path* path, const ShapeStyle& style, const char* cls) {
    if (path->empty()) return;
    Path copy = *path;  // one copy is filled, the other stroked
    out->addFill(&copy, style.fill, cls);
    out->addStroke(path, style.stroke, style.width, cls);
}

}  // namespace

void initWithFrame(horizon_view* view, RectF frame, const TextMeasure* measure) {
    *view = horizon_view{};
    view->bounds = frame;
    view->measure = measure;
}

void drawSat(horizon_view* view, const SatRec* sat, double minElevDegs) {
    view->mMinElevDegs = minElevDegs;
    if (sat == nullptr) return;
    // One pixel in from every side, so that the outlines stay inside the frame.
    const double x0 = view->bounds.x + 1.0, y0 = view->bounds.y + 1.0;
    const double h = view->bounds.height - 2.0;
    const double k = h / 90.0;

    Path* path;
    int32_t color;
    if (!sat->satActivePass || !sat->enabled) {
        path = &view->lightgraySat;
        color = 0;
    } else if (sat->maxElevation < 30.0) {
        path = &view->graySat;
        color = 1;
    } else if (sat->maxElevation < 60.0) {
        path = &view->blueSat;
        color = 2;
    } else {
        path = &view->orangeSat;
        color = 3;
    }

    // Whole pixels: the profile has one sample per 12 seconds.
    const double xs = x0 + sat->secondsToAOS / kHorizonSecondsPerPixel;
    int count = sat->passElevCounter;
    if (count < 0) count = 0;
    if (count > kMaxPassSamples) count = kMaxPassSamples;
    path->moveTo(static_cast<float>(xs), static_cast<float>(y0));
    double lastX = xs, lastY = y0;
    for (int i = 0; i < count; ++i) {
        lastX = xs + i;
        lastY = k * sat->passElev[i] + y0;
        path->lineTo(static_cast<float>(lastX), static_cast<float>(lastY));
    }
    if (lastY > y0) path->lineTo(static_cast<float>(lastX), static_cast<float>(y0));
    path->close();

    MDLabel label;
    label.color = color;
    label.name = sat->name;
    const double width = Measure(view).textWidth(label.name, kHorizonLabelFontSize);
    label.point.x =
        static_cast<float>(x0 + sat->secondsToMAXE / kHorizonSecondsPerPixel - width / 2.0);
    label.point.y =
        static_cast<float>(std::fmin(k * sat->maxElevation + y0, y0 + h - kLabelTopMargin));
    view->sat_labels.push_back(std::move(label));
}

void drawGrid(const horizon_view* view, DisplayList* out) {
    const RectF& b = view->bounds;
    const double k = b.height / 90.0;
    Path thin, thick, minElevation;
    std::vector<MDLabel> labels;
    for (int e = 0; e <= 90; e += 10) {
        // The elevation lines are offset from the bottom by 0.3, not by the
        // bounds' origin, as the view has always drawn them.
        const float y = static_cast<float>(k * e + 0.3);
        thin.moveTo(b.x, y);
        thin.lineTo(b.x + b.width, y);
        if (e % 30 == 0) {
            thick.moveTo(b.x, y);
            thick.lineTo(b.x + b.width, y);
        }
    }
    const float minY = static_cast<float>(k * view->mMinElevDegs + b.y);
    minElevation.moveTo(b.x, minY);
    minElevation.lineTo(b.x + b.width, minY);
    for (int m = 0; m < kHorizonMinutes; ++m) {
        const float x = b.x + static_cast<float>(kHorizonPixelsPerMinute * m);
        if (m % 30 == 0) {
            thick.moveTo(x, b.y);
            thick.lineTo(x, b.y + b.height);
            MDLabel label;
            label.color = 1;
            char text[16];
            std::snprintf(text, sizeof text, "%03d", m);
            label.name = text;
            label.point = {x + 2.0f, b.y + b.height - 16.0f};
            labels.push_back(std::move(label));
        } else if (m % 10 == 0) {
            thin.moveTo(x, b.y);
            thin.lineTo(x, b.y + b.height);
        } else if (m % 5 == 0) {
            thick.moveTo(x, b.y + 1.0f);
            thick.lineTo(x, b.y + 2.0f);
        }
    }
    out->addFillRect(b, kWhite, "background");
    for (const MDLabel& label : labels) out->addLabel(label, kHorizonLabelFontSize, "minute");
    out->addStroke(&minElevation, kMinElevationColor, kMinElevationWidth, "minelevation");
    out->addStroke(&thin, kThinGridColor, kThinWidth, "grid");
    out->addStroke(&thick, kThickGridColor, kThickWidth, "grid");
}

void drawRect(horizon_view* view, DisplayList* out) {
    out->clear();
    out->width = view->bounds.x + view->bounds.width;
    out->height = view->bounds.y + view->bounds.height;
    drawGrid(view, out);
    AddShape(out, &view->lightgraySat, kLightGrayStyle, "pass nopass");
    AddShape(out, &view->graySat, kGrayStyle, "pass low");
    AddShape(out, &view->blueSat, kBlueStyle, "pass mid");
    AddShape(out, &view->orangeSat, kOrangeStyle, "pass high");
    for (const MDLabel& label : view->sat_labels)
        out->addLabel(label, kHorizonLabelFontSize, "label");
    view->lightgraySat.clear();
    view->graySat.clear();
    view->blueSat.clear();
    view->orangeSat.clear();
    view->sat_labels.clear();
}

}  // namespace veloran

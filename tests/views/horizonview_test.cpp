// Horizon timeline: colour classes, where a pass starts, the peak labels,
// the grid and the minimum-elevation line.

#include "views/horizonview.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>

#include "tests/views/viewtestutil.h"

namespace veloran {
namespace {

using testing::ItemsOfClass;
using testing::MakeSat;

class FixedMeasure : public TextMeasure {
  public:
    double textWidth(const std::string&, double) const override { return 30.0; }
};

// A pass of `samples` 12-second samples rising to `peak` degrees halfway.
void SetPass(SatRec* sat, uint32_t secondsToAOS, int samples, double peak) {
    sat->satActivePass = 1;
    sat->enabled = 1;
    sat->secondsToAOS = secondsToAOS;
    sat->secondsToMAXE = secondsToAOS + samples / 2 * 12;
    sat->maxElevation = peak;
    sat->passElevCounter = static_cast<int16_t>(samples);
    for (int i = 0; i < samples; ++i) {
        const double f = 1.0 - std::abs(i - samples / 2) / (samples / 2.0);
        sat->passElev[i] = static_cast<uint8_t>(peak * f);
    }
}

class HorizonTest : public ::testing::Test {
  protected:
    void SetUp() override { initWithFrame(&view, RectF{0, 0, 2410, 182}, &measure); }
    FixedMeasure measure;
    horizon_view view;
};

TEST_F(HorizonTest, ColourClassesByMaximumElevation) {
    struct Case {
        double peak;
        bool enabled;
        const char* cls;
        int32_t labelColour;
    };
    // The boundaries belong to the higher class: exactly 30 is blue, exactly 60 red.
    const Case cases[] = {
        {29.9, true, "pass low", 1},  {30.0, true, "pass mid", 2},     {59.9, true, "pass mid", 2},
        {60.0, true, "pass high", 3}, {85.0, false, "pass nopass", 0},
    };
    for (const Case& c : cases) {
        auto sat = MakeSat("SAT", 15.0, 51.6);
        SetPass(sat.get(), 600, 60, c.peak);
        if (!c.enabled) sat->enabled = 0;
        drawSat(&view, sat.get(), 0.0);
        DisplayList list;
        drawRect(&view, &list);
        const auto shapes = ItemsOfClass(list, c.cls);
        ASSERT_EQ(shapes.size(), 2u) << c.peak;  // filled, then stroked
        EXPECT_EQ(shapes[0]->kind, ItemKind::Fill);
        EXPECT_EQ(shapes[1]->kind, ItemKind::Stroke);
        const auto labels = ItemsOfClass(list, "label");
        ASSERT_EQ(labels.size(), 1u);
        EXPECT_EQ(labels[0]->colorCode, c.labelColour) << c.peak;
    }
}

TEST_F(HorizonTest, NoPredictedPassIsLightGreyToo) {
    auto sat = MakeSat("SAT", 15.0, 51.6);
    SetPass(sat.get(), 600, 60, 70.0);
    sat->satActivePass = 0;
    drawSat(&view, sat.get(), 0.0);
    EXPECT_FALSE(view.lightgraySat.empty());
    EXPECT_TRUE(view.orangeSat.empty());
}

TEST_F(HorizonTest, ShapeFollowsTheProfileOnePixelPerSample) {
    auto sat = MakeSat("SAT", 15.0, 51.6);
    SetPass(sat.get(), 1200, 75, 40.0);  // AOS in 20 minutes: 100 pixels in
    sat->passElev[74] = 5;               // still 5 degrees up at the last sample
    drawSat(&view, sat.get(), 0.0);
    const auto& pts = view.blueSat.points;
    ASSERT_EQ(pts.size(), 1u + 75u + 1u + 1u);  // start, samples, down to the bottom, close
    // Inside the 1-pixel inset: x0 = y0 = 1, k = 180 / 90 = 2 pixels a degree.
    EXPECT_FLOAT_EQ(pts[0].x, 101.0f);
    EXPECT_FLOAT_EQ(pts[0].y, 1.0f);
    EXPECT_FLOAT_EQ(pts[1 + 37].x, 101.0f + 37.0f);
    EXPECT_FLOAT_EQ(pts[1 + 37].y, 2.0f * sat->passElev[37] + 1.0f);
    EXPECT_FLOAT_EQ(pts[1 + 74].x, 101.0f + 74.0f);  // a 15-minute pass is 75 pixels wide
    // Closed down to the bottom edge below the last sample.
    EXPECT_FLOAT_EQ(pts[76].x, 175.0f);
    EXPECT_FLOAT_EQ(pts[76].y, 1.0f);
    EXPECT_EQ(pts.back().op, PathOp::Close);

    // A profile that ends on the horizon needs no line down.
    view.blueSat.clear();
    sat->passElev[74] = 0;
    drawSat(&view, sat.get(), 0.0);
    EXPECT_EQ(view.blueSat.points.size(), 1u + 75u + 1u);
}

TEST_F(HorizonTest, PassInProgressStartsAtTheLeftEdge) {
    auto sat = MakeSat("SAT", 15.0, 51.6);
    SetPass(sat.get(), 0, 40, 20.0);
    drawSat(&view, sat.get(), 0.0);
    EXPECT_FLOAT_EQ(view.graySat.points[0].x, 1.0f);
}

TEST_F(HorizonTest, LabelAtThePeakButNotWithin26PixelsOfTheTop) {
    auto low = MakeSat("LOW", 15.0, 51.6);
    SetPass(low.get(), 600, 60, 20.0);
    drawSat(&view, low.get(), 0.0);
    auto high = MakeSat("HIGH", 15.0, 51.6);
    SetPass(high.get(), 3000, 80, 88.0);
    drawSat(&view, high.get(), 0.0);
    ASSERT_EQ(view.sat_labels.size(), 2u);
    // At the peak: y = k * 20 + y0 = 41; centred on the time of maximum.
    EXPECT_FLOAT_EQ(view.sat_labels[0].point.y, 41.0f);
    EXPECT_FLOAT_EQ(view.sat_labels[0].point.x, 1.0f + (600 + 30 * 12) / 12 - 15.0f);
    // 88 degrees would put it at 177; it is lowered to y0 + h - 26 = 155.
    EXPECT_FLOAT_EQ(view.sat_labels[1].point.y, 155.0f);
}

TEST_F(HorizonTest, PassBeyondEightHoursIsOffTheScale) {
    auto sat = MakeSat("SAT", 15.0, 51.6);
    SetPass(sat.get(), 9 * 3600, 60, 45.0);
    drawSat(&view, sat.get(), 0.0);
    EXPECT_GT(view.blueSat.points[0].x, 2395.0f);
}

TEST_F(HorizonTest, BadSampleCountsAreBounded) {
    auto sat = MakeSat("SAT", 15.0, 51.6);
    SetPass(sat.get(), 0, 10, 45.0);
    sat->passElevCounter = -5;
    drawSat(&view, sat.get(), 0.0);
    EXPECT_EQ(view.blueSat.points.size(), 2u);  // start and close only
    view.blueSat.clear();
    sat->passElevCounter = 32767;
    drawSat(&view, sat.get(), 0.0);
    EXPECT_LE(view.blueSat.points.size(), 1u + 1200u + 2u);
    drawSat(&view, nullptr, 5.0);
    EXPECT_DOUBLE_EQ(view.mMinElevDegs, 5.0);
}

TEST_F(HorizonTest, GridMinuteMarksAndMinimumElevationLine) {
    auto sat = MakeSat("SAT", 15.0, 51.6);
    SetPass(sat.get(), 600, 60, 45.0);
    drawSat(&view, sat.get(), 10.0);
    DisplayList list;
    drawRect(&view, &list);
    // White background first, then the 16 half-hour labels 000 .. 450.
    ASSERT_FALSE(list.items.empty());
    EXPECT_EQ(list.items[0].kind, ItemKind::FillRect);
    const auto minutes = ItemsOfClass(list, "minute");
    ASSERT_EQ(minutes.size(), 16u);
    EXPECT_EQ(minutes[0]->text, "000");
    EXPECT_EQ(minutes[15]->text, "450");
    EXPECT_FLOAT_EQ(minutes[1]->point.x, 152.0f);  // 30 minutes * 5 + 2
    EXPECT_FLOAT_EQ(minutes[1]->point.y, 166.0f);  // 16 below the top
    const auto green = ItemsOfClass(list, "minelevation");
    ASSERT_EQ(green.size(), 1u);
    EXPECT_FLOAT_EQ(green[0]->color.g, 1.0f);
    EXPECT_FLOAT_EQ(green[0]->path.points[0].y, 182.0f / 90.0f * 10.0f);
    // Thin grid: 10 elevation lines and the 32 ten-minute lines that are not half hours.
    const auto grid = ItemsOfClass(list, "grid");
    ASSERT_EQ(grid.size(), 2u);
    EXPECT_EQ(grid[0]->path.points.size(), (10u + 32u) * 2u);
    // Thick grid: 4 elevation lines, 16 half-hour lines, 48 five-minute ticks.
    EXPECT_EQ(grid[1]->path.points.size(), (4u + 16u + 48u) * 2u);
    EXPECT_FLOAT_EQ(grid[1]->lineWidth, 0.5f);

    // The draw consumed the pass: the next one starts afresh.
    DisplayList next;
    drawRect(&view, &next);
    EXPECT_TRUE(ItemsOfClass(next, "pass mid").empty());
    EXPECT_TRUE(ItemsOfClass(next, "label").empty());
}

}  // namespace
}  // namespace veloran

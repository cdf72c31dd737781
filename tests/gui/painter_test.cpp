// The display-list painter: a known list painted into an image, with the
// pixels checked where the night, a footprint, a label and the map image
// must (and must not) be.

#include <gtest/gtest.h>

#include <QImage>
#include <QPainter>
#include <memory>

#include "gui/displaylistpainter.h"
#include "views/map2dview.h"

namespace veloran {
namespace {

constexpr int kW = 200, kH = 100;

std::shared_ptr<DisplayList> KnownList() {
    auto list = std::make_shared<DisplayList>();
    list->width = kW;
    list->height = kH;
    list->addFillRect({0, 0, kW, kH}, {1, 1, 1, 1}, "background");
    // Night over the lower-left quarter: rows 0..49 (y up), columns 0..99.
    Path night;
    for (int row = 0; row < 50; ++row) {
        night.moveTo(0, static_cast<float>(row));
        night.lineTo(99, static_cast<float>(row));
    }
    list->addSpans(&night, {0, 0, 0, 0.6f}, "night");
    // A footprint arc along y = 80 (y up), red.
    Path arc;
    arc.moveTo(10, 80);
    arc.lineTo(190, 80);
    list->addStroke(&arc, {1, 0, 0, 1}, 1.0f, "footprint");
    MDLabel label;
    label.color = 2;  // blue
    label.name = "AO-7";
    label.point = {120, 30};
    list->addLabel(label, 14.0f, "label");
    return list;
}

QImage Paint(const std::shared_ptr<DisplayList>& list, const QRect& exposed) {
    DisplayListPainter painter;
    painter.setList(list);
    QImage image(kW, kH, QImage::Format_RGB32);
    image.fill(Qt::green);  // what no item paints stays green
    QPainter p(&image);
    painter.paint(&p, exposed);
    return image;
}

TEST(DisplayListPainter, PutsEachItemWhereTheListSays) {
    const QImage image = Paint(KnownList(), QRect(0, 0, kW, kH));
    struct Probe {
        int x, y;  // image pixels, y down
        QRgb expected;
        const char* what;
    };
    // 0.6 black over white leaves 255 * 0.4 = 102.
    const Probe probes[] = {
        {50, 75, qRgb(102, 102, 102), "night, y-up row 24"},
        {50, 50, qRgb(102, 102, 102), "night's top row, y-up row 49"},
        {50, 49, qRgb(255, 255, 255), "day just above the night"},
        {100, 75, qRgb(255, 255, 255), "day just right of the night"},
        {100, 19, qRgb(255, 0, 0), "footprint on y-up row 80"},
        {100, 17, qRgb(255, 255, 255), "nothing two rows above it"},
        {5, 19, qRgb(255, 255, 255), "nothing before the arc begins"},
    };
    for (const Probe& p : probes)
        EXPECT_EQ(image.pixel(p.x, p.y), p.expected) << p.what << " at " << p.x << "," << p.y;

    // The label: blue ink in the box above its lower left corner (120, 30 up).
    int blue = 0, elsewhere = 0;
    for (int y = 0; y < kH; ++y)
        for (int x = 0; x < kW; ++x) {
            const QColor c = image.pixelColor(x, y);
            if (c.blue() > 150 && c.red() < 100 && c.green() < 100) {
                const bool inBox = x >= 119 && x <= 160 && y >= kH - 30 - 16 && y <= kH - 30;
                (inBox ? blue : elsewhere)++;
            }
        }
    EXPECT_GT(blue, 20);
    EXPECT_EQ(elsewhere, 0);
}

TEST(DisplayListPainter, PaintsOnlyWhatIsExposedAndDrawsTheMapImage) {
    const QImage part = Paint(KnownList(), QRect(0, 0, 60, 100));
    EXPECT_EQ(part.pixel(50, 75), qRgb(102, 102, 102));
    EXPECT_EQ(part.pixel(150, 50), qRgb(0, 255, 0)) << "outside the exposed rectangle";

    // The 1024 map: the Sahara's sand at 20 N 10 E is no sea blue and no night.
    auto list = std::make_shared<DisplayList>();
    list->width = 1024;
    list->height = 512;
    list->addImage(MapImageName(1024), {0, 0, 1024, 512}, "map");
    DisplayListPainter painter;
    painter.setList(list);
    QImage image(1024, 512, QImage::Format_RGB32);
    QPainter p(&image);
    painter.paint(&p, image.rect());
    p.end();
    const QColor sand = image.pixelColor(static_cast<int>((180 + 10) * 1024 / 360.0),
                                         static_cast<int>((90 - 20) * 512 / 180.0));
    EXPECT_GT(sand.red(), sand.blue())
        << "map image missing from " << DisplayListPainter::imageFolders().join(", ").toStdString();
}

}  // namespace
}  // namespace veloran

// The globe drawn by OpenGL (Mesa under Xvfb in CI): one frame of a known
// scene, saved as an artefact, must show the Earth lit on the Sun's side and
// dark on the other; the pulse alone does not draw the picture again.

#include <gtest/gtest.h>

#include <QApplication>
#include <QDir>
#include <QImage>
#include <clocale>
#include <cmath>
#include <cstring>
#include <memory>

#include "engine/satrec.h"
#include "engine/sunmoon.h"
#include "engine/timebase.h"
#include "gui/globewidget.h"
#include "tests/support/element_sets.h"
#include "views/globeexchange.h"

#if defined(__SANITIZE_ADDRESS__)
#include <sanitizer/lsan_interface.h>
#endif

namespace veloran {
namespace {

double Luminance(const QImage& image, QPointF at) {
    double sum = 0;
    int n = 0;
    for (int dy = -3; dy <= 3; ++dy) {
        for (int dx = -3; dx <= 3; ++dx) {
            const QPoint p(static_cast<int>(at.x()) + dx, static_cast<int>(at.y()) + dy);
            if (!image.rect().contains(p)) continue;
            const QColor c = image.pixelColor(p);
            sum += 0.299 * c.red() + 0.587 * c.green() + 0.114 * c.blue();
            ++n;
        }
    }
    return n > 0 ? sum / n : -1.0;
}

TEST(GlobeView, EarthIsLitOnTheSunsSide) {
    if (!GlobeWidget::openGlAvailable()) GTEST_SKIP() << "no OpenGL 3.3 on this display";
    // Noon at 45 W on 21 December: the Sun stands over the Tropic of
    // Capricorn, the station at 40 N 100 W sees the terminator cross the disc.
    SiteRec site = testing::MakeSite(40.0, 100.0, 0.0);
    auto sun = testing::LoadSun(&site);
    auto sat = testing::LoadRecord("TESTSAT", testing::Elements{}, &site);
    SatRec sats[2];
    std::memcpy(&sats[0], sat.get(), sizeof(SatRec));
    std::memcpy(&sats[1], sun.get(), sizeof(SatRec));
    GlobeInput in;
    in.epoch = EpochTime(testing::Seconds(2026, 12, 21, 15));
    in.sats = sats;
    in.totalSats = 2;
    in.mainSatNum = 1;
    in.sunNum = 2;
    in.site = &site;
    in.options.nightLight = 0;
    in.options.cityLights = false;
    auto exchange = std::make_shared<GlobeSceneExchange>();
    GlobeSceneBuilder builder;
    builder.build(&in, exchange->back());
    exchange->publish();
    const GlobeScene* scene = exchange->take();
    const Vector3F s = scene->sunDirection;
    // The sub-solar point near 23 S, 45 W (the Sun keps are approximate).
    EXPECT_NEAR(std::asin(s.y) / kDegreesToRadians, -23.4, 1.5);

    GlobeWidget view(exchange);
    view.setAmbient(0);
    view.resize(800, 600);
    view.show();
    const QImage frame = view.grabFramebuffer();
    const QString folder = QStringLiteral(VELORAN_SHOTS_DIR);
    QDir().mkpath(folder);
    frame.save(folder + "/globe.png");

    // Two points of the visible hemisphere, one towards the Sun, one away.
    const QVector3D eye = view.eye().normalized();
    QVector3D toSun(s.x, s.y, s.z);
    toSun = (toSun - QVector3D::dotProduct(toSun, eye) * eye).normalized();
    const QVector3D lit = (eye + 0.8f * toSun).normalized();
    const QVector3D dark = (eye - 0.8f * toSun).normalized();
    const double litLuma = Luminance(frame, view.screenPoint(lit));
    const double darkLuma = Luminance(frame, view.screenPoint(dark));
    EXPECT_GT(litLuma, 40.0);
    EXPECT_LT(darkLuma, 15.0);
}

// Between scenes only the main satellite's pulse changes: its frames copy
// the kept picture; a new scene or a camera change draws it again.
TEST(GlobeView, DrawsThePictureAgainOnlyWhenSomethingChanged) {
    if (!GlobeWidget::openGlAvailable()) GTEST_SKIP() << "no OpenGL 3.3 on this display";
    SiteRec site = testing::MakeSite(40.0, 100.0, 0.0);
    auto sat = testing::LoadRecord("TESTSAT", testing::Elements{}, &site);
    GlobeInput in;
    in.epoch = EpochTime(testing::Seconds(2026, 12, 21, 15));
    in.sats = sat.get();
    in.totalSats = 1;
    in.mainSatNum = 1;
    in.site = &site;
    auto exchange = std::make_shared<GlobeSceneExchange>();
    GlobeSceneBuilder builder;
    builder.build(&in, exchange->back());
    exchange->publish();
    GlobeWidget view(exchange);
    view.resize(400, 300);
    view.show();
    ASSERT_FALSE(view.grabFramebuffer(false).isNull());
    const long first = view.framesDrawn();
    EXPECT_GE(first, 1);
    for (int i = 0; i < 3; ++i) view.grabFramebuffer(false);
    EXPECT_EQ(view.framesDrawn(), first);

    in.epoch += 1.0 / 86400.0;
    builder.build(&in, exchange->back());
    exchange->publish();
    view.sceneReady();
    view.grabFramebuffer(false);
    EXPECT_EQ(view.framesDrawn(), first + 1);
    view.setDistance(6.0);
    view.grabFramebuffer(false);
    EXPECT_EQ(view.framesDrawn(), first + 2);
}

}  // namespace
}  // namespace veloran

int main(int argc, char** argv) {
    QApplication app(argc, argv);
    std::setlocale(LC_NUMERIC, "C");
    ::testing::InitGoogleTest(&argc, argv);
    const int result = RUN_ALL_TESTS();
#if defined(__SANITIZE_ADDRESS__)
    // Our leaks are looked for now, while Mesa's driver is still loaded:
    // the driver frees its last blocks only as it is unloaded at exit, where
    // LeakSanitizer can no longer name them.
    __lsan_do_leak_check();
#endif
    return result;
}

// Cost of the map tab on the GUI thread: taking a tick's list (flipping it
// into cached paths) and repainting the visible part, with 50 tracked
// satellites, at the smallest and the largest zoom. A repaint covers the
// scroll area's viewport (1240 x 540 pixels, the window at 1280 x 800),
// which at 1024 pixels is the whole map.

#include <benchmark/benchmark.h>

#include <QApplication>
#include <QImage>
#include <QPainter>
#include <algorithm>
#include <memory>

#include "gui/displaylistpainter.h"
#include "views/map2dview.h"
#include "viewscene.h"

namespace {

std::shared_ptr<const DisplayList> MapList(int width) {
    const Scene scene = MakeScene();
    HelveticaEstimate measure;
    map_2D_view view;
    initWithFrame(&view, &measure);
    setMapWidth(&view, width, RectF{0, 0, 0, 0}, false);
    for (int i = 1; i < kSatellites; ++i) drawSatPath(&view, scene.sats[i].get(), false);
    drawSatPath(&view, scene.sats[0].get(), true);
    drawGroundTrack(&view, scene.epoch, scene.sats[0].get(), &scene.site, true);
    drawSiteCross(&view, scene.site.siteLatRads, scene.site.siteLongRads, 1, false);
    auto list = std::make_shared<DisplayList>();
    drawRect(&view, scene.now, list.get());
    return list;
}

void TakeMapList(benchmark::State& state) {
    const auto list = MapList(static_cast<int>(state.range(0)));
    DisplayListPainter painter;
    for (auto _ : state) {
        painter.setList(list);
        benchmark::DoNotOptimize(painter.list());
    }
}
BENCHMARK(TakeMapList)->Arg(1024)->Arg(8192)->Unit(benchmark::kMillisecond);

void RepaintMap(benchmark::State& state) {
    const int width = static_cast<int>(state.range(0));
    DisplayListPainter painter;
    painter.setList(MapList(width));
    const QSize viewport(std::min(width, 1240), std::min(width / 2, 540));
    // The middle of the map, where most footprints cross.
    const QRect exposed(QPoint((width - viewport.width()) / 2, (width / 2 - viewport.height()) / 2),
                        viewport);
    QImage target(viewport, QImage::Format_ARGB32_Premultiplied);
    for (auto _ : state) {
        QPainter p(&target);
        p.translate(-exposed.topLeft());
        painter.paint(&p, exposed);
        p.end();
        benchmark::DoNotOptimize(target.constBits());
    }
}
BENCHMARK(RepaintMap)->Arg(1024)->Arg(8192)->Unit(benchmark::kMillisecond);

}  // namespace

int main(int argc, char** argv) {
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}

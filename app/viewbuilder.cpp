// The map and horizon display lists of a tick.

#include "app/viewbuilder.h"

#include <algorithm>

#include "views/tickdrawing.h"

namespace veloran {

ViewBuilder::ViewBuilder(const TextMeasure* measure) : measure_(measure) {
    initWithFrame(&map_, measure_);
    initWithFrame(&horizon_, RectF{0, 0, kHorizonDefaultWidth, kHorizonDefaultHeight}, measure_);
}

void ViewBuilder::zoomMap(int32_t width) {
    // The zoom keeps no rectangle to scroll to: the window keeps its own
    // centre while the frame grows or shrinks.
    setMapWidth(&map_, width, RectF{0, 0, 0, 0}, false);
    mapWidthSet_ = true;
}

void ViewBuilder::setHorizonSize(float width, float height) {
    horizon_.bounds.width = std::max(width, kHorizonDefaultWidth);
    horizon_.bounds.height = std::max(height, 90.0f);
}

ViewLists ViewBuilder::drawViews(const ViewFrame& frame, ShownViews shown, uint32_t realNowSecs) {
    if (frame.firstTick || !mapWidthSet_) {
        const RectF rect{static_cast<float>(frame.rect[0]), static_cast<float>(frame.rect[1]),
                         static_cast<float>(frame.rect[2]), static_cast<float>(frame.rect[3])};
        setMapWidth(&map_, frame.mapFrameWidth, rect, frame.firstTick && frame.hasStoredRect);
        mapWidthSet_ = true;
    }
    ViewLists lists;
    const int32_t count = frame.sats != nullptr ? std::max<int32_t>(frame.totalSats, 0) : 0;
    if (shown.horizon) {
        DrawHorizonTick(&horizon_, frame.sats, count, frame.site);
        auto list = std::make_shared<DisplayList>();
        drawRect(&horizon_, list.get());
        lists.horizon = std::move(list);
    }
    if (shown.map) {
        DrawMapTick(&map_, frame.epoch, frame.sats, count, frame.mainSatNum - 1, frame.site,
                    frame.flipped);
        auto list = std::make_shared<DisplayList>();
        drawRect(&map_, realNowSecs, list.get());
        lists.map = std::move(list);
    }
    return lists;
}

}  // namespace veloran

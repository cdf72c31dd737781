// Turns the tick's ViewFrame into the world map's and the horizon's display
// lists, on the core thread, keeping the two views' state from one tick to
// the next (the zoom, a pending scroll, the site of the previous tick). The
// window paints the lists on its own thread; the lists are immutable once
// built, so they cross threads as shared pointers to const.
#pragma once

#include <cstdint>
#include <memory>

#include "app/interfaces.h"
#include "views/displaylist.h"
#include "views/horizonview.h"
#include "views/map2dview.h"

namespace veloran {

// The pictures of one tick; a null pointer means that view was not drawn.
struct ViewLists {
    std::shared_ptr<const DisplayList> map;
    std::shared_ptr<const DisplayList> horizon;
};

// Which tabs show: the tick draws only what the user can see.
struct ShownViews {
    bool map = true;      // the world-map tab of the map tab view
    bool horizon = true;  // the horizon tab of the track-list tab view
};

class ViewBuilder {
  public:
    // `measure` sizes the labels (the Helvetica estimate when null); it must
    // outlive the builder and be usable on the core thread.
    explicit ViewBuilder(const TextMeasure* measure = nullptr);

    // The tick's drawing. The first frame sets the map's width and the
    // stored visible rectangle to scroll to. The Sun and the night follow
    // `realNowSecs` (the wall clock, seconds since 1904), the satellites the
    // frame's virtual time.
    ViewLists drawViews(const ViewFrame& frame, ShownViews shown, uint32_t realNowSecs);

    // A zoom changed the map's width (pixels); the next map list has it.
    void zoomMap(int32_t width);
    // The horizon's frame, pixels; at least the 480-minute scale wide.
    void setHorizonSize(float width, float height);

    int32_t mapWidth() const { return map_.mFrameWidth; }

  private:
    const TextMeasure* measure_;
    map_2D_view map_;
    horizon_view horizon_;
    bool mapWidthSet_ = false;
};

}  // namespace veloran

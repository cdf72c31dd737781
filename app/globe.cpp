// The controller's side of the 3D globe: the picture of now it hands the
// views, and the globe's display options, kept in the settings.
#include "app/appcontroller.h"
#include "engine/timebase.h"
#include "rotor/steering.h"
#include "views/globeoptions.h"

namespace veloran {

ViewFrame AppController::viewFrame() const {
    ViewFrame frame;
    frame.epoch = EpochTime(mTimeBaseSecs);
    frame.timeBaseSecs = mTimeBaseSecs;
    frame.sats = mAllSats.get();
    frame.totalSats = mTotalSats;
    frame.mainSatNum = mMainSatNum;
    frame.site = &mSite;
    frame.flipped = rotorFlipped(&mSite);
    frame.firstTick = mFirstTimeMainTimerTask;
    frame.mapFrameWidth = m2DMapFrameWidth;
    frame.hasStoredRect = mViewPrefs.hasVisibleRect;
    for (int i = 0; i < 4; ++i) frame.rect[i] = mViewPrefs.visibleRect[i];
    frame.sunNum = mSunNum;
    frame.moonNum = mMoonNum;
    frame.lightPoints = mLocations.lightPoints.data();
    frame.lightPointCount = static_cast<int32_t>(mLocations.lightPoints.size());
    frame.globe = GlobeOptionsFromSettings(&mSite, &mViewPrefs);
    return frame;
}

void AppController::globeOptionsChanged(const GlobeOptions& options) {
    StoreGlobeOptions(&options, &mSite, &mViewPrefs);
    savePrefs();
    if (!windowIsOpen) return;
    ViewFrame frame = viewFrame();
    frame.firstTick = false;
    services_.ui->drawGlobe(frame);
}

}  // namespace veloran

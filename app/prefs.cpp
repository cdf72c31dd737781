// Settings: start-up defaults, saving and reading back, tuning offsets.

#include "app/appcontroller.h"

namespace veloran {

void AppController::setSiteDefaults() {
    SetSiteDefaults(&mSite);
}

void AppController::savePrefs() {
    mViewPrefs.mainSatNum = mMainSatNum;
    SavePrefs(mSite, mViewPrefs, services_.defaults);
    savePortPaths();
}

void AppController::setUIStateFromPrefs() {
    mViewPrefs.mainSatNum = mMainSatNum;
    ReadPrefs(*services_.defaults, &mSite, &mViewPrefs);
    readPortPaths();
    mMainSatNum = mViewPrefs.mainSatNum;
    services_.ui->showSettings(mSite);
}

void AppController::SaveTweaks(int index) {
    const SatRec* sat = record(index);
    if (sat != nullptr && index < mTotalSats) veloran::SaveTweaks(services_.defaults, *sat);
}

void AppController::LoadTweaks(int index) {
    SatRec* sat = record(index);
    if (sat != nullptr && index < mTotalSats) veloran::LoadTweaks(*services_.defaults, sat);
}

}  // namespace veloran

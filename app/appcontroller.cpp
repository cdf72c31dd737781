// The application controller: construction and record access.

#include "app/appcontroller.h"

#include <cstdarg>
#include <cstring>

namespace veloran {

AppController::AppController(const Services& services, const DataPaths& paths)
    : services_(services),
      paths_(paths),
      mAllSats(new SatRec[kMaxSatellites]()),
      BPSatRec(new SatRec()),
      EXITSatRec(new SatRec()),
      mPortNames(new PortNameRecord[kMaxSerialPorts]()) {
    mRadioUi.app = this;
    mRotorUi.app = this;
    InitSatRec(BPSatRec.get());
    InitSatRec(EXITSatRec.get());
    SetSiteDefaults(&mSite);
}

SatRec* AppController::record(int index) {
    return const_cast<SatRec*>(static_cast<const AppController*>(this)->record(index));
}

const SatRec* AppController::record(int index) const {
    if (index == -1) return BPSatRec.get();
    if (index == -2) return EXITSatRec.get();
    if (index < 0 || index >= kMaxSatellites) return nullptr;
    return &mAllSats[index];
}

SatRec* AppController::mainSatellite() {
    if (mMainSatNum < 1 || mMainSatNum > mTotalSats) return nullptr;
    return &mAllSats[mMainSatNum - 1];
}

void AppController::debugLog(const char* format, ...) const {
    if (!mSite.debug || services_.log == nullptr) return;
    va_list args;
    va_start(args, format);
    std::vfprintf(services_.log, format, args);
    va_end(args);
}

void AppController::announce(const std::string& text) {
    if (mSite.wants_speech) queue(text, Announcement::kNone, false, false);
}

Announcer* AppController::announcer() {
    return services_.announcer != nullptr ? services_.announcer : &mAnnouncements;
}

void AppController::queue(const std::string& text, int32_t sound, bool transmit, bool waitForCOR) {
    Announcement item;
    item.text = text;
    item.sound = sound;
    item.transmit = transmit;
    item.waitForCOR = waitForCOR;
    announcer()->queueAnnouncement(item);
}

void AppController::publishAnnouncementSettings() {
    mAnnouncementSettings.gatewayFd = mSite.gatewayPortFileDescriptor;
    mAnnouncementSettings.wantsSounds = mSite.wants_sounds != 0;
    mAnnouncementSettings.debug = mSite.debug != 0;
}

void AppController::GetSiteRec(SiteRec* site) const {
    if (site != nullptr) *site = mSite;
}

void AppController::SetSiteRec(const SiteRec* site) {
    if (site != nullptr) mSite = *site;
}

int AppController::refreshModes() {
    if (!mRefreshModes) return 0;
    mRefreshModes = false;
    return 1;
}

int AppController::GetSatelliteRecordByIndex(int index, SatRec* rec) const {
    if (rec == nullptr) return 0;
    if (index >= mTotalSats || index < -2) return 0;
    *rec = *record(index);
    return 1;
}

int AppController::GetSatelliteRecordByName(const char* name, SatRec* rec) const {
    if (name == nullptr || rec == nullptr) return 0;
    for (int i = 0; i < mTotalSats; ++i) {
        if (std::strstr(name, mAllSats[i].name) != nullptr) {
            *rec = mAllSats[i];
            return 1;
        }
    }
    return 0;
}

void AppController::WriteSatelliteRecord(int index, const SatRec& rec) {
    SatRec* target = record(index);
    if (target != nullptr && target != &rec) *target = rec;
}

void AppController::MarkSatelliteEnabled(int index, int value) {
    SatRec* target = record(index);
    if (target == nullptr) return;
    target->enabled = value;
    writeModeFile(paths_.userModesFile);
}

int AppController::nextSatelliteInDB() {
    for (int attempt = 0; attempt < mTotalSats; ++attempt) {
        ++mCycleSatNum;
        if (mCycleSatNum == mMainSatNum) ++mCycleSatNum;
        if (mCycleSatNum >= mTotalSats || mCycleSatNum < 1) mCycleSatNum = 1;
        if (mAllSats[mCycleSatNum - 1].tracked) return 1;
    }
    return 0;
}

}  // namespace veloran

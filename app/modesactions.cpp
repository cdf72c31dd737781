// The modes menu actions, the channel pop-up, and a new main satellite.

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>
#include <unordered_set>

#include "app/appcontroller.h"
#include "data/modes.h"
#include "data/satnogs.h"

namespace veloran {

namespace {

// The user's modes file is moved aside, never deleted, before it is replaced
// or reset: hours of hand work stay recoverable.
std::string BackupPath(const std::string& path) {
    return path + ".bak";
}

}  // namespace

bool AppController::writeModeFile(const std::string& path, const std::vector<SatRec>& outside,
                                  const std::unordered_set<std::string>& dropped) {
    // Blocks of satellites that are not in the table now (an element-set
    // file without them) are carried over from the modes file the table was
    // loaded from, so that no one's hand-made modes are lost on a rewrite.
    std::unordered_set<std::string> inTable = {kBetweenPassesName, kOnExitName};
    for (int i = 0; i < mTotalSats; ++i) inTable.insert(mAllSats[i].name);
    ModesFile source;
    if (mModesSource.empty() || !source.load(mModesSource)) source.setText(std::string());
    const std::string kept = source.blocksOutside(inTable, outside, dropped);
    if (path == paths_.userModesFile && mUserModesUnreadable != 0) {
        std::fprintf(stderr, "the modes file %s is not rewritten: it could not be read (%s)\n",
                     path.c_str(), FileErrorText(mUserModesUnreadable).c_str());
        return false;
    }
    if (WriteModeFile(path, mAllSats.get(), mTotalSats, *BPSatRec, *EXITSatRec, kept)) return true;
    if (services_.log != nullptr)
        std::fprintf(services_.log, "cannot write the modes file %s: %s\n", path.c_str(),
                     std::strerror(errno));
    return false;
}

std::vector<SatRec> AppController::modesForEditing() const {
    std::vector<SatRec> records;
    std::unordered_set<std::string> inTable = {kBetweenPassesName, kOnExitName};
    for (int i = 0; i < mTotalSats; ++i) {
        inTable.insert(mAllSats[i].name);
        if (mAllSats[i].numberOfActiveChannels > 0) records.push_back(mAllSats[i]);
    }
    ModesFile source;
    if (!mModesSource.empty() && source.load(mModesSource)) {
        auto rec = std::make_unique<SatRec>();
        for (const std::string& name : source.names()) {
            if (inTable.count(name) != 0) continue;
            InitSatRec(rec.get());
            source.getModes(rec.get(), name.c_str());
            rec->db_index = -1;  // no entry of the table
            records.push_back(*rec);
        }
    }
    records.push_back(*BPSatRec);
    records.push_back(*EXITSatRec);
    return records;
}

std::vector<std::string> AppController::satellitesWithoutModes() const {
    std::vector<std::string> names;
    for (int i = 0; i < mTotalSats; ++i)
        if (mAllSats[i].numberOfActiveChannels <= 0) names.emplace_back(mAllSats[i].name);
    return names;
}

namespace {

// What the modes file holds of a record, and nothing of its orbit.
void copyModeFields(const SatRec& from, SatRec* to) {
    const int count = std::clamp<int>(from.numberOfActiveChannels, 0, kMaxModes);
    std::copy(from.modes, from.modes + count, to->modes);
    to->numberOfActiveChannels = static_cast<int16_t>(count);
    if (to->selectedModeIndex >= count) to->selectedModeIndex = 0;
    std::snprintf(to->speakName, sizeof to->speakName, "%s", from.speakName);
    std::snprintf(to->trackHours, sizeof to->trackHours, "%s", from.trackHours);
    to->hasBVals = from.hasBVals;
    to->bLatDegs = from.bLatDegs;
    to->bLonDegs = from.bLonDegs;
    to->startMA = from.startMA;
    to->endMA = from.endMA;
    to->enabled = from.enabled;
    to->priority = from.priority;
}

}  // namespace

int AppController::saveEditedModes(const SatRec* edited, int count,
                                   const std::vector<std::string>& deleted) {
    if ((edited == nullptr || count <= 0) && deleted.empty()) return 0;
    for (const std::string& name : deleted)
        if (name == kBetweenPassesName || name == kOnExitName) {
            services_.ui->alert("The modes were not saved.",
                                name + " sets the radio outside passes and cannot be deleted.",
                                "OK");
            return 0;
        }
    const int32_t mainSat = mMainSatNum;
    SaveTweaks(mMainSatNum - 1);
    auto tableEntry = [this](const char* name) -> SatRec* {
        if (std::strcmp(name, kBetweenPassesName) == 0) return BPSatRec.get();
        if (std::strcmp(name, kOnExitName) == 0) return EXITSatRec.get();
        for (int i = 0; i < mTotalSats; ++i)
            if (std::strcmp(mAllSats[i].name, name) == 0) return &mAllSats[i];
        return nullptr;
    };
    std::vector<SatRec> outside;
    for (int e = 0; edited != nullptr && e < count; ++e) {
        if (SatRec* target = tableEntry(edited[e].name))
            copyModeFields(edited[e], target);
        else if (IsModesBlockName(edited[e].name))
            outside.push_back(edited[e]);
    }
    std::unordered_set<std::string> dropped;
    for (const std::string& name : deleted) {
        if (SatRec* target = tableEntry(name.c_str())) {
            ResetModes(target);  // without modes it writes no block
        } else {
            dropped.insert(name);
        }
    }
    const std::string userModes = paths_.userModesFile;
    if (FileExists(userModes) && !CopyFileAtomically(userModes, BackupPath(userModes))) {
        services_.ui->alert("The modes were not saved.",
                            "Cannot keep a backup of " + userModes + ".", "OK");
        return 0;
    }
    if (!writeModeFile(userModes, outside, dropped)) {
        services_.ui->alert("The modes were not saved.", "Cannot write " + userModes + ".", "OK");
        return 0;
    }
    reloadModes(mainSat);
    return 1;
}

void AppController::defaultModes() {
    const int32_t mainSat = mMainSatNum;
    for (int i = 0; i < mTotalSats; ++i) {
        SatRec* sat = &mAllSats[i];
        for (int m = 0; m < sat->numberOfActiveChannels && m < kMaxModes; ++m) {
            sat->modes[m].RXOffset = 0;
            sat->modes[m].TXOffset = 0;
            sat->modes[m].BEOffset = 0;
        }
        SaveTweaks(i);
    }
    const std::string userModes = paths_.userModesFile;
    if (!FileExists(userModes)) {
        services_.ui->beep();
        return;
    }
    std::rename(userModes.c_str(), BackupPath(userModes).c_str());
    reloadModes(mainSat);
}

void AppController::importModes() {
    const int32_t mainSat = mMainSatNum;
    std::string chosen;
    if (services_.files == nullptr || !services_.files->chooseFileToOpen(&chosen)) return;
    SaveTweaks(mMainSatNum - 1);
    const std::string userModes = paths_.userModesFile;
    if (FileExists(chosen)) {
        // Without its backup the old file would be lost for good: stop there.
        if (FileExists(userModes) && !CopyFileAtomically(userModes, BackupPath(userModes))) {
            services_.ui->alert("The modes were not imported.",
                                "Cannot back up " + userModes + ": " + std::strerror(errno) + ".",
                                "OK");
            return;
        }
        if (!CopyFileAtomically(chosen, userModes))
            services_.ui->alert("The modes were not imported.",
                                "Cannot write " + userModes + ": " + std::strerror(errno) + ".",
                                "OK");
    }
    reloadModes(mainSat);
}

void AppController::importSatnogs() {
    const int32_t mainSat = mMainSatNum;
    std::string chosen;
    if (services_.files == nullptr || !services_.files->chooseFileToOpen(&chosen)) return;
    SaveTweaks(mMainSatNum - 1);
    const std::string userModes = paths_.userModesFile;
    if (FileExists(userModes) && !CopyFileAtomically(userModes, BackupPath(userModes))) {
        services_.ui->alert("The transmitters were not imported.",
                            "Cannot back up " + userModes + ": " + std::strerror(errno) + ".",
                            "OK");
        return;
    }
    SatnogsImportResult result;
    if (!ImportSatnogs(chosen, paths_, &result)) {
        services_.ui->alert("The transmitters were not imported.", result.message, "OK");
        return;
    }
    reloadModes(mainSat);
    services_.ui->showNotice("SatNOGS transmitters imported: " + result.message);
}

void AppController::reloadModes(int32_t mainSatNum) {
    loadKepsAndModes();
    mMainSatNum = mainSatNum;
    HandleNewSatellite();
    updateVFO(1);
    mRefreshModes = true;
}

void AppController::exportModes() {
    std::string path;
    if (services_.files == nullptr ||
        !services_.files->chooseFileToSave("Veloran Modes.txt", &path))
        return;
    writeModeFile(path);
}

void AppController::modeChanged() {
    resetVfoSlider();
    SatRec* sat = mainSatellite();
    if (sat == nullptr) return;
    const int chosen = mControls.selectedChannel;
    if (chosen < 0 || chosen >= kMaxModes) return;
    sat->selectedModeIndex = chosen;
    updateVFO(1);
    if (sat->numberOfActiveChannels >= 1) services_.defaults->setInteger(sat->name, chosen);
}

void AppController::HandleNewSatellite() {
    SatRec* sat = mainSatellite();
    if (sat == nullptr) return;
    newSatellite = true;
    sat->satVelocity = 0;
    mSite.deadSpotCrossed = 0;
    LoadTweaks(mMainSatNum - 1);
    UserInterface* ui = services_.ui;
    resetVfoSlider();
    mControls.channelCount = 0;
    mControls.selectedChannel = 0;
    ui->removeAllChannelItems();
    if (sat->numberOfActiveChannels < 1) {
        ++mControls.channelCount;
        ui->addChannelItem("No Modes");
    } else {
        for (int m = 0; m < sat->numberOfActiveChannels && m < kMaxModes; ++m) {
            ++mControls.channelCount;
            ui->addChannelItem(sat->modes[m].channel);
        }
        // A stored choice outside the mode table (a hand-edited settings
        // file) falls back to the first mode.
        const int32_t remembered = services_.defaults->integerForKey(sat->name);
        sat->selectedModeIndex = remembered >= 0 && remembered < kMaxModes ? remembered : 0;
        if (sat->selectedModeIndex < mControls.channelCount) {
            mControls.selectedChannel = sat->selectedModeIndex;
            ui->selectChannelItem(sat->selectedModeIndex);
        }
    }
    NextSatelliteAnnouncement();
    displaySatName();
    updateVFO(1);
    updateRotors();
}

}  // namespace veloran

// The track list's rows, their texts, order and colours, and the table's
// actions.

#include "app/tracklist.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <memory>

#include "app/appcontroller.h"
#include "data/settings.h"
#include "engine/timebase.h"
#include "engine/units.h"

namespace veloran {

namespace {

std::string Format(const char* format, double value) {
    char text[64];
    std::snprintf(text, sizeof text, format, value);
    return text;
}

std::string Duration(uint32_t secs) {
    char text[16];
    formatTime(secs, text);
    return text;
}

}  // namespace

void SatelliteSlot::loadIt(const SatRec& rec, int32_t timeDiff, bool displayUTC, bool displayKM) {
    const double factor = displayKM ? 1.0 : kMilesPerKilometre;
    const char* unit = displayKM ? " km" : " mi";
    checkbox = rec.enabled;
    satelliteName = rec.name;
    pri = rec.priority;
    inView = rec.AOS != 0;
    passPredicted = rec.satActivePass != 0;
    secondsToAOS = rec.secondsToAOS;
    secondsToLOS = rec.secondsToLOS;
    pass = inView ? "In view" : (passPredicted ? "Next pass" : "No pass");
    char when[24];
    formatDateTime(displayUTC ? rec.AOSTime : rec.AOSTime + static_cast<uint32_t>(timeDiff), when);
    aostime = when;
    length = Duration(rec.passLength);
    azimuth = Format("%0.1f", rec.azimuthDegs);
    elevation = Format("%0.1f", rec.elevationDegs);
    deltae = rec.elevationRising ? "rising" : "falling";
    maxe = Format("%0.1f", rec.maxElevation);
    latitude = Format("%0.2f", std::fabs(rec.subSatPtLatitudeDegs)) +
               (rec.subSatPtLatitudeDegs < 0 ? " S" : " N");
    // The record's longitudes are positive towards the west.
    longitude = Format("%0.2f", std::fabs(rec.subSatPtLongitudeDegs)) +
                (rec.subSatPtLongitudeDegs < 0 ? " E" : " W");
    altitude = Format("%0.1f", rec.satAltitude * factor) + unit;
    deltaa = rec.altitudeAscending ? "up" : "down";
    range = Format("%0.1f", rec.satRange * factor) + unit;
    double revolution = std::fmod(rec.meanAnomaly, kTwoPi);
    if (revolution < 0) revolution += kTwoPi;
    phase = Format("%0.0f", std::floor(revolution / kTwoPi * 256.0));
    squint =
        rec.hasBVals ? Format("%0.1f", rec.squintAngleRads * kRadiansToDegrees) : std::string();
    planarcr = Duration(rec.secondsToPlanarCrossing);
    maxetime = Duration(rec.secondsToMAXE);
    apogtime = Duration(rec.secondsToApogee);
    lostime = Duration(rec.secondsToLOS);
    timetoe = Duration(rec.secondsToECL);
    velocity = Format("%0.3f", rec.satVelocity * factor) + (displayKM ? " km/s" : " mi/s");
    eclipse = rec.eclipsed ? "Eclipsed" : "Sunlit";
    index = rec.db_index;
    orbit = rec.currentOrbit;
    pathLoss = Format("%0.1f dB", rec.pathLoss);
}

std::string SatelliteSlot::valueForKey(const std::string& key) const {
    const std::pair<const char*, const std::string*> texts[] = {{"satelliteName", &satelliteName},
                                                                {"pass", &pass},
                                                                {"aostime", &aostime},
                                                                {"length", &length},
                                                                {"azimuth", &azimuth},
                                                                {"elevation", &elevation},
                                                                {"deltae", &deltae},
                                                                {"maxe", &maxe},
                                                                {"latitude", &latitude},
                                                                {"longitude", &longitude},
                                                                {"altitude", &altitude},
                                                                {"deltaa", &deltaa},
                                                                {"range", &range},
                                                                {"phase", &phase},
                                                                {"squint", &squint},
                                                                {"planarcr", &planarcr},
                                                                {"maxetime", &maxetime},
                                                                {"apogtime", &apogtime},
                                                                {"lostime", &lostime},
                                                                {"velocity", &velocity},
                                                                {"eclipse", &eclipse},
                                                                {"timetoe", &timetoe},
                                                                {"pathLoss", &pathLoss}};
    for (const auto& [name, text] : texts)
        if (key == name) return *text;
    if (key == "checkbox") return std::to_string(checkbox);
    if (key == "pri") return std::to_string(pri);
    if (key == "index") return std::to_string(index);
    if (key == "orbit") return std::to_string(orbit);
    return std::string();
}

int SatelliteSlot::compare(const SatelliteSlot& other) const {
    auto rank = [](const SatelliteSlot& s) { return s.inView ? 0 : (s.passPredicted ? 1 : 2); };
    if (rank(*this) != rank(other)) return rank(*this) < rank(other) ? -1 : 1;
    const uint32_t mine = inView ? secondsToLOS : secondsToAOS;
    const uint32_t theirs = other.inView ? other.secondsToLOS : other.secondsToAOS;
    if (rank(*this) < 2 && mine != theirs) return mine < theirs ? -1 : 1;
    return satelliteName.compare(other.satelliteName) < 0
               ? -1
               : (satelliteName == other.satelliteName ? 0 : 1);
}

RowColour RowColourFor(const SatRec& rec, bool isMainSatellite) {
    if (!rec.satActivePass || !rec.enabled) return RowColour::kGrey;
    if (rec.AOS) return RowColour::kRed;
    if (rec.secondsToAOS <= 59) return RowColour::kGreen;
    return isMainSatellite ? RowColour::kBlue : RowColour::kBlack;
}

SatelliteTableController::SatelliteTableController(AppController* app, UserDefaults* defaults,
                                                   TrackListUi* ui)
    : appController(app), defaults_(defaults), ui_(ui) {}

void SatelliteTableController::awakeFromNib() {
    emptyIt();
    mFirstTime = true;
    const bool on = defaults_->boolForKey(prefkeys::kTrackListEnabled);
    ui_->setTrackListChecked(on);
    appController->setTrackList(on);
}

void SatelliteTableController::toggleTrackList(bool on) {
    appController->setTrackList(on);
    defaults_->setBool(prefkeys::kTrackListEnabled, on);
}

void SatelliteTableController::appendRow(const SatRec& rec) {
    SatelliteSlot slot;
    slot.loadIt(rec, site.timeDiff, site.displayUTC != 0, site.displayKM != 0);
    satelliteArray.push_back(slot);
    appController->MarkSatelliteTracked(rec.db_index, true);
}

void SatelliteTableController::addSatellite(int popupIndex) {
    auto rec = std::make_unique<SatRec>();
    if (!appController->GetSatelliteRecordByIndex(popupIndex - 1, rec.get()) || popupIndex < 1) {
        ui_->beep();
        return;
    }
    if (rec->tracked) {
        ui_->beep();
        return;
    }
    appendRow(*rec);
    if (!appController->trackListInUse()) {
        ui_->deselectAllRows();
        appController->selectSatelliteWithIndex(popupIndex - 1);
    }
    ui_->reloadRows(satelliteArray);
}

void SatelliteTableController::deleteRow(int row) {
    if (row < 0 || row >= static_cast<int>(satelliteArray.size())) {
        ui_->beep();
        return;
    }
    appController->MarkSatelliteTracked(satelliteArray[row].index, false);
    satelliteArray.erase(satelliteArray.begin() + row);
    ui_->reloadRows(satelliteArray);
}

void SatelliteTableController::singleClick(int row, int32_t checkboxValue) {
    if (row < 0 || row >= static_cast<int>(satelliteArray.size())) return;
    SatelliteSlot& slot = satelliteArray[row];
    auto rec = std::make_unique<SatRec>();
    if (!appController->GetSatelliteRecordByIndex(slot.index, rec.get())) return;
    if (checkboxValue == rec->enabled) {
        if (!appController->trackListInUse()) appController->selectSatelliteWithIndex(slot.index);
        return;
    }
    slot.checkbox = checkboxValue;
    appController->MarkSatelliteEnabled(slot.index, checkboxValue);
}

void SatelliteTableController::doubleClick(int row) {
    if (row < 0 || row >= static_cast<int>(satelliteArray.size())) {
        ui_->beep();
        return;
    }
    appController->selectSatelliteWithIndex(satelliteArray[row].index);
}

void SatelliteTableController::updateTrackList() {
    appController->GetSiteRec(&site);
    auto rec = std::make_unique<SatRec>();
    if (mFirstTime) {
        const std::string saved = defaults_->stringForKey(prefkeys::kTrackListString);
        size_t start = 0;
        while (start <= saved.size()) {
            size_t end = saved.find(' ', start);
            if (end == std::string::npos) end = saved.size();
            const std::string name = saved.substr(start, end - start);
            if (!name.empty() && appController->GetSatelliteRecordByName(name.c_str(), rec.get()) &&
                !rec->tracked)
                appendRow(*rec);
            start = end + 1;
        }
    }
    if (appController->windowOpen()) {
        for (SatelliteSlot& slot : satelliteArray) {
            if (!appController->GetSatelliteRecordByIndex(slot.index, rec.get())) continue;
            appController->MarkSatelliteTracked(slot.index, true);
            slot.loadIt(*rec, site.timeDiff, site.displayUTC != 0, site.displayKM != 0);
        }
        std::stable_sort(
            satelliteArray.begin(), satelliteArray.end(),
            [](const SatelliteSlot& a, const SatelliteSlot& b) { return a.compare(b) < 0; });
        ui_->reloadRows(satelliteArray);
    }
    mFirstTime = false;
}

void SatelliteTableController::applicationWillTerminate() {
    std::vector<std::string> names;
    for (const SatelliteSlot& slot : satelliteArray) names.push_back(slot.satelliteName);
    defaults_->setString(prefkeys::kTrackListString, TrackListString(names));
}

bool SatelliteTableController::getSatelliteFromList(int row, TrackRow* out) const {
    if (row < 0 || row >= static_cast<int>(satelliteArray.size()) || out == nullptr) return false;
    out->index = static_cast<uint32_t>(satelliteArray[row].index);
    out->checkbox = satelliteArray[row].checkbox;
    out->satelliteName = satelliteArray[row].satelliteName;
    return true;
}

void SatelliteTableController::emptyIt() {
    satelliteArray.clear();
    ui_->reloadRows(satelliteArray);
}

}  // namespace veloran

// The core thread's side of the window: outlet calls become queued signals.

#include "gui/uibridge.h"

#include <cstdio>
#include <memory>

#include "app/appcontroller.h"

namespace veloran {

namespace {

QString Q(const std::string& text) {
    return QString::fromStdString(text);
}

}  // namespace

void RegisterBridgeTypes() {
    qRegisterMetaType<WindowSettings>();
    qRegisterMetaType<WindowPrefs>();
    qRegisterMetaType<std::shared_ptr<const DisplayList>>();
    qRegisterMetaType<std::vector<SatelliteSlot>>();
    qRegisterMetaType<std::vector<RowColour>>();
    qRegisterMetaType<std::shared_ptr<const PrefsSnapshot>>();
    qRegisterMetaType<TestedDevice>();
    qRegisterMetaType<std::shared_ptr<const std::vector<SatRec>>>();
    qRegisterMetaType<std::vector<SatelliteNames>>();
    qRegisterMetaType<MainSatelliteStatus>();
    qRegisterMetaType<std::shared_ptr<const KepsSourcesSnapshot>>();
    qRegisterMetaType<std::shared_ptr<const ModesForEditing>>();
}

QString SatelliteToolTip(const SatelliteNames& names) {
    QStringList lines;
    if (!names.longName.empty() && names.longName != names.name)
        lines << QString::fromStdString(names.longName);
    if (names.catalog > 0) lines << QObject::tr("Catalogue number %1").arg(names.catalog);
    return lines.join('\n');
}

UiBridge::UiBridge(QObject* parent)
    : QObject(parent), globe_(std::make_shared<GlobeSceneExchange>()) {}

void UiBridge::removeAllSatelliteItems() {
    emit satelliteItemsCleared();
}
void UiBridge::addSatelliteItem(const std::string& name) {
    emit satelliteItemAdded(Q(name));
}
void UiBridge::setKepsDateText(const std::string& text) {
    emit kepsDateChanged(Q(text));
}
void UiBridge::setSatelliteNames(const std::vector<SatelliteNames>& names) {
    emit satelliteNamesChanged(names);
}
void UiBridge::setMainSatelliteStatus(const MainSatelliteStatus& status) {
    emit mainSatelliteStatusChanged(status);
}
void UiBridge::alert(const std::string& title, const std::string& message,
                     const std::string& button) {
    emit alertRequested(Q(title), Q(message), Q(button));
}
void UiBridge::beep() {
    emit beepRequested();
}

void UiBridge::removeAllChannelItems() {
    emit channelItemsCleared();
}
void UiBridge::addChannelItem(const std::string& name) {
    emit channelItemAdded(Q(name));
}
void UiBridge::selectChannelItem(int index) {
    emit channelItemSelected(index);
}
void UiBridge::setVfoSlider(double value) {
    emit vfoSliderReset(value);
}

void UiBridge::removeAllLocationItems() {
    emit locationItemsCleared();
}
void UiBridge::addLocationItem(const std::string& name) {
    emit locationItemAdded(Q(name));
}
void UiBridge::showLocation(const std::string& name, const std::string& latitude,
                            const std::string& longitude) {
    emit locationShown(Q(name), Q(latitude), Q(longitude));
}
void UiBridge::closeLocationSheet() {
    emit locationSheetClosed();
}

bool UiBridge::chooseFileToOpen(std::string* path) {
    if (chosenFile_.empty()) return false;
    *path = chosenFile_;
    return true;
}

bool UiBridge::chooseFileToSave(const std::string&, std::string* path) {
    return chooseFileToOpen(path);
}

void UiBridge::showSettings(const SiteRec& site) {
    WindowSettings shown;
    shown.followSat = site.followSat_enabled != 0;
    shown.displayTrackList = site.displayTrackList != 0;
    shown.speech = site.wants_speech != 0;
    shown.rotorManual = site.rotor_manual != 0;
    shown.fullDoppler = site.fullDopplerTuning != 0;
    shown.beacon = site.listenForBeacon != 0;
    shown.locked = site.vfo_locked != 0;
    shown.radio = site.radio;
    shown.radioOn = site.vfo_enabled != 0;
    shown.rotorOn = site.rotor_enabled != 0;
    shown.gatewayOn = site.gateway_enabled != 0;
    shown.locationName = QString::fromUtf8(site.locationName);
    // As the places combo box shows a chosen place; the site keeps west
    // positive, the window east positive.
    char text[32];
    std::snprintf(text, sizeof text, "%01.4f", site.siteLatDegs);
    shown.latitude = text;
    std::snprintf(text, sizeof text, "%01.4f", -site.siteLongDegs);
    shown.longitude = text;
    emit settingsShown(shown);

    auto prefs = std::make_shared<PrefsSnapshot>();
    prefs->site = site;
    if (app_ != nullptr) {
        prefs->places = app_->locations();
        const PortNameRecord* ports = app_->portNames();
        for (int i = 0; ports != nullptr && i < kMaxSerialPorts && ports[i].bsdPath[0] != '\0'; ++i)
            prefs->ports << QString::fromUtf8(ports[i].userName);
        for (const std::string& voice : app_->speechVoices())
            prefs->voices << QString::fromStdString(voice);
        prefs->speechAudible = app_->speechAudible();
    }
    emit prefsShown(prefs);
}

void UiBridge::setClockLine(const std::string& text, bool red) {
    emit clockLineChanged(Q(text), red);
}
void UiBridge::setVersionLine(const std::string& text) {
    emit versionLineChanged(Q(text));
}
void UiBridge::setMapStatus(const std::string& text) {
    emit mapStatusChanged(Q(text));
}
void UiBridge::setTransponderLine(const std::string& text, bool fullDopplerChecked,
                                  bool fullDopplerEnabled) {
    emit transponderLineChanged(Q(text), fullDopplerChecked, fullDopplerEnabled);
}
void UiBridge::setSatelliteFigures(const std::string& altitude, const std::string& velocity,
                                   const std::string& maxElevation, const std::string& range) {
    emit satelliteFiguresChanged(Q(altitude), Q(velocity), Q(maxElevation), Q(range));
}
void UiBridge::setFlipLine(const std::string& text) {
    emit flipLineChanged(Q(text));
}
void UiBridge::setRadioPanelTitle(const std::string& text) {
    emit radioPanelTitleChanged(Q(text));
}
void UiBridge::setVfoPanel(const std::string& uplink, const std::string& downlink,
                           const std::string& uplinkTrim, const std::string& downlinkTrim,
                           const std::string& uplinkLine, const std::string& downlinkLine) {
    emit vfoPanelChanged(Q(uplink), Q(downlink), Q(uplinkTrim), Q(downlinkTrim), Q(uplinkLine),
                         Q(downlinkLine));
}
void UiBridge::setTrimSteppers(double uplink, double downlink) {
    emit trimSteppersChanged(uplink, downlink);
}
void UiBridge::setRadioPrefsControls(bool icomAddress, bool sMeter, bool dialTracking) {
    emit radioPrefsControlsChanged(icomAddress, sMeter, dialTracking);
}
void UiBridge::setSerialPortItems(const std::vector<std::string>& names) {
    QStringList list;
    for (const std::string& name : names) list << Q(name);
    emit serialPortItemsChanged(list);
}
void UiBridge::setDeviceMessage(const std::string& text) {
    emit deviceMessageChanged(Q(text));
}
void UiBridge::setRadioChecked(bool on) {
    emit radioCheckedChanged(on);
}
void UiBridge::setGatewayChecked(bool on) {
    emit gatewayCheckedChanged(on);
}
void UiBridge::setRotorChecked(bool on) {
    emit rotorCheckedChanged(on);
}
void UiBridge::setSMeter(int level) {
    emit sMeterChanged(level);
}
void UiBridge::setElevationControl(int value) {
    emit elevationControlChanged(value);
}
void UiBridge::setRotorPanel(const std::string& azimuth, const std::string& elevation) {
    emit rotorPanelChanged(Q(azimuth), Q(elevation));
}
void UiBridge::setDebugChecked(bool on) {
    emit debugCheckedChanged(on);
}
void UiBridge::setSpeechChecked(bool on) {
    emit speechCheckedChanged(on);
}
void UiBridge::setZoomButtons(bool zoomInEnabled, bool zoomOutEnabled) {
    emit zoomButtonsChanged(zoomInEnabled, zoomOutEnabled);
}
void UiBridge::zoomMap(int32_t width, double scale) {
    builder_.zoomMap(width);
    emit mapZoomed(width, scale);
}
void UiBridge::showMainWindow(bool shown) {
    emit mainWindowShown(shown);
}
void UiBridge::drawViews(const ViewFrame& frame) {
    // Only the tabs in front are drawn: the world map (map tab 0) and the
    // horizon (track-list tab 1); the indices stay fixed as tabs are added.
    static const ControlsModel kNoControls;
    const ControlsModel& tabs = app_ != nullptr ? app_->controls() : kNoControls;
    const ShownViews shown{tabs.mapTab == 0, tabs.listTab == 1};
    const ViewLists lists = builder_.drawViews(frame, shown, clock_.dateTimeUTC());
    emit viewListsPublished(lists.map, lists.horizon);
    if (tabs.mapTab == 1) drawGlobe(frame);
}

void UiBridge::drawGlobe(const ViewFrame& frame) {
    if (app_ == nullptr || app_->controls().mapTab != 1) return;
    GlobeInput in;
    in.epoch = frame.epoch;
    in.sats = frame.sats;
    in.totalSats = frame.totalSats;
    in.mainSatNum = frame.mainSatNum;
    in.sunNum = frame.sunNum;
    in.moonNum = frame.moonNum;
    in.site = frame.site;
    in.cityLights = frame.lightPoints;
    in.cityLightCount = frame.lightPointCount;
    in.flipped = frame.flipped;
    in.options = frame.globe;
    globeBuilder_.build(&in, globe_->back());
    globe_->publish();
    emit globeScenePublished();
}

void UiBridge::reloadRows(const std::vector<SatelliteSlot>& rows) {
    std::vector<RowColour> colours;
    colours.reserve(rows.size());
    auto sat = std::make_unique<SatRec>();
    for (const SatelliteSlot& slot : rows) {
        RowColour colour = RowColour::kBlack;
        if (app_ != nullptr && app_->GetSatelliteRecordByIndex(slot.index, sat.get()))
            colour = RowColourFor(*sat, slot.index == app_->selectedSatelliteIndex());
        colours.push_back(colour);
    }
    emit trackRowsChanged(rows, colours);
}
void UiBridge::deselectAllRows() {
    emit trackRowsDeselected();
}
void UiBridge::setTrackListChecked(bool on) {
    emit trackListCheckedChanged(on);
}

}  // namespace veloran

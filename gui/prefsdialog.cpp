// The preferences panel's tabs, and the copy of the site record they edit.

#include "gui/prefsdialog.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QDoubleSpinBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QRegularExpression>
#include <QSlider>
#include <QSpinBox>
#include <QTabWidget>
#include <QVBoxLayout>
#include <cmath>
#include <cstdio>

#include "app/appcontroller.h"
#include "data/grid.h"
#include "gui/simulateddevices.h"
#include "radio/drivers.h"
#include "radio/hamlibradio.h"
#include "radio/tuning.h"
#include "rotor/hamlibrotor.h"
#include "rotor/rotor.h"
#include "serial/serial.h"

namespace veloran {

namespace {

template <size_t N>
void copyText(char (&to)[N], const QString& from) {
    std::snprintf(to, N, "%s", from.toUtf8().constData());
}

QDoubleSpinBox* spin(const char* name, double low, double high, int decimals, const QString& unit) {
    auto* box = new QDoubleSpinBox;
    box->setObjectName(name);
    box->setAccessibleName(name);
    box->setRange(low, high);
    box->setDecimals(decimals);
    if (!unit.isEmpty()) box->setSuffix(" " + unit);
    return box;
}

QComboBox* baudBox(const char* name) {
    auto* box = new QComboBox;
    box->setObjectName(name);
    box->setAccessibleName(name);
    for (const BaudRate& rate : kBaudTable) box->addItem(QString::number(rate.bitsPerSecond));
    return box;
}

QComboBox* portBox(const char* name) {
    auto* box = new QComboBox;
    box->setObjectName(name);
    box->setAccessibleName(name);
    // A device path may be typed: a pseudo-terminal or a udev symlink the
    // list does not show.
    box->setEditable(true);
    box->setInsertPolicy(QComboBox::NoInsert);
    box->setMinimumContentsLength(28);
    return box;
}

QLabel* testLine(const char* name) {
    auto* label = new QLabel;
    label->setObjectName(name);
    label->setWordWrap(true);
    label->setTextInteractionFlags(Qt::TextSelectableByMouse);
    return label;
}

// The port list with the site's choice selected; a stored index past the
// ports found shows as missing rather than as whatever port is there now.
void fillPorts(QComboBox* box, const QStringList& ports, int index) {
    const QSignalBlocker quiet(box);
    box->clear();
    box->addItems(ports);
    if (index >= ports.size()) {
        box->addItem(QObject::tr("Port %1 (missing)").arg(index + 1));
        box->setCurrentIndex(box->count() - 1);
    } else {
        box->setCurrentIndex(index);
    }
}

QString hamlibText(const QVector<HamlibChoice>& models, int number) {
    for (const HamlibChoice& m : models)
        if (m.number == number) return QString("%1  %2 %3").arg(number).arg(m.maker, m.model);
    return QObject::tr("model %1").arg(number);
}

// The rate slider's steps either side of normal.
constexpr int kRateSteps = 10;

QString degrees(double value) {
    return QString::number(value, 'f', 4);
}

}  // namespace

PrefsDialog::PrefsDialog(UiBridge* bridge, CorePost post, SimulatedDevices* sims, QWidget* parent)
    : QDialog(parent), post_(std::move(post)), sims_(sims) {
    setObjectName("preferencesWindow");
    setWindowTitle(tr("Preferences"));
    tabs_ = new QTabWidget;
    tabs_->setObjectName("preferencesTabs");
    tabs_->addTab(buildStation(), tr("Station"));
    tabs_->addTab(buildRadio(), tr("Radio"));
    tabs_->addTab(buildRotor(), tr("Rotor"));
    tabs_->addTab(buildGateway(), tr("Gateway"));
    tabs_->addTab(buildSpeech(), tr("Speech and sounds"));
    tabs_->addTab(buildDisplay(), tr("Display"));
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    buttons->setObjectName("preferencesButtons");
    connect(buttons, &QDialogButtonBox::accepted, this, &PrefsDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &PrefsDialog::reject);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(tabs_);
    layout->addWidget(buttons);

    connect(bridge, &UiBridge::prefsShown, this,
            [this](std::shared_ptr<const PrefsSnapshot> prefs) {
                shown_ = std::move(prefs);
                show(*shown_);
            });
    connect(bridge, &UiBridge::windowPrefsShown, this, [this](const WindowPrefs& prefs) {
        const QSignalBlocker quiet(radio_);
        radio_->clear();
        radio_->addItems(prefs.radioNames);
        // Items the core never enables (a model without a driver) stay grey.
        for (int i = 0; i < prefs.radioItemEnabled.size() && i < radio_->count(); ++i)
            if (!prefs.radioItemEnabled[i]) radio_->setItemData(i, 0, Qt::UserRole - 1);
        radio_->addItem(tr("Hamlib…"));  // lands at kHamlibRadio: the names stop before it
        hamlibRadios_ = prefs.hamlibRadios;
        hamlibRotors_ = prefs.hamlibRotors;
        if (shown_) radio_->setCurrentIndex(shown_->site.radio);
        showHamlibModels();
    });
    connect(bridge, &UiBridge::radioPrefsControlsChanged, this,
            [this](bool icomAddress, bool sMeter, bool dialTracking) {
                icomAddress_->setEnabled(icomAddress);
                sMeter_->setEnabled(sMeter);
                dialTracking_->setEnabled(dialTracking);
            });
    connect(bridge, &UiBridge::deviceTested, this,
            [this](TestedDevice device, const QString& text) {
                QLabel* line = device == TestedDevice::Radio   ? radioTest_
                               : device == TestedDevice::Rotor ? rotorTest_
                                                               : gatewayTest_;
                line->setText(text);
            });
}

QWidget* PrefsDialog::buildStation() {
    auto* page = new QWidget;
    auto* form = new QFormLayout(page);
    callSign_ = new QLineEdit;
    callSign_->setObjectName("callSign");
    siteName_ = new QLineEdit;
    siteName_->setObjectName("siteName");
    place_ = new QComboBox;
    place_->setObjectName("place");
    latitude_ = new QLineEdit;
    latitude_->setObjectName("latitude");
    latitude_->setPlaceholderText(tr("degrees, north positive"));
    longitude_ = new QLineEdit;
    longitude_->setObjectName("longitude");
    longitude_->setPlaceholderText(tr("degrees, east positive"));
    locator_ = new QLineEdit;
    locator_->setObjectName("locator");
    locator_->setMaxLength(6);
    locator_->setPlaceholderText(tr("Maidenhead locator, e.g. FN03gr"));
    altitude_ = spin("altitude", -500, 9000, 0, tr("m"));
    minElevation_ = spin("minimumElevation", 0, 45, 1, tr("°"));
    form->addRow(tr("Call sign:"), callSign_);
    form->addRow(tr("Site name:"), siteName_);
    form->addRow(tr("Place:"), place_);
    form->addRow(tr("Latitude:"), latitude_);
    form->addRow(tr("Longitude:"), longitude_);
    form->addRow(tr("Locator:"), locator_);
    form->addRow(tr("Altitude:"), altitude_);
    form->addRow(tr("Minimum elevation:"), minElevation_);
    connect(place_, &QComboBox::activated, this, &PrefsDialog::placeChosen);
    connect(latitude_, &QLineEdit::textEdited, this, &PrefsDialog::latLonEdited);
    connect(longitude_, &QLineEdit::textEdited, this, &PrefsDialog::latLonEdited);
    connect(locator_, &QLineEdit::textEdited, this, &PrefsDialog::locatorEdited);
    return page;
}

QWidget* PrefsDialog::buildRadio() {
    auto* page = new QWidget;
    auto* form = new QFormLayout(page);
    radio_ = new QComboBox;
    radio_->setObjectName("radioModel");
    radioPort_ = portBox("radioPort");
    radioBaud_ = baudBox("radioBaud");
    icomAddress_ = new QSpinBox;
    icomAddress_->setObjectName("icomAddress");
    icomAddress_->setRange(0, 0xFF);
    icomAddress_->setDisplayIntegerBase(16);
    icomAddress_->setPrefix("0x");
    commandDelay_ = spin("commandDelay", 0, 100, 1, tr("ms"));
    sMeter_ = new QCheckBox(tr("Read the S-meter"));
    sMeter_->setObjectName("sMeter");
    dialTracking_ = new QCheckBox(tr("Follow the radio's tuning dial"));
    dialTracking_->setObjectName("dialTracking");
    debug_ = new QCheckBox(tr("Log device traffic"));
    debug_->setObjectName("debugTraffic");
    auto* testButton = new QPushButton(tr("Test"));
    testButton->setObjectName("radioTest");
    radioTest_ = testLine("radioTestResult");
    form->addRow(tr("Radio:"), radio_);
    hamlibRadio_ = new QLabel;
    hamlibRadio_->setObjectName("hamlibRadioModel");
    form->addRow(tr("Hamlib model:"), hamlibRadio_);
    form->addRow(tr("Port:"), radioPort_);
    form->addRow(tr("Speed (bit/s):"), radioBaud_);
    form->addRow(tr("CI-V address:"), icomAddress_);
    form->addRow(tr("Command delay:"), commandDelay_);
    form->addRow(QString(), sMeter_);
    form->addRow(QString(), dialTracking_);
    form->addRow(QString(), debug_);
    form->addRow(testButton, radioTest_);
    // The controls a model uses are the core's to say.
    connect(radio_, &QComboBox::currentIndexChanged, this, [this](int index) {
        updateSimulatedItems();
        showHamlibModels();
        post_([index](CoreSide& s) {
            const RadioPrefsControls c = radioPrefsControls(index);
            s.ui->setRadioPrefsControls(c.icomAddress, c.sMeter, c.dialTracking);
        });
    });
    connect(radio_, &QComboBox::activated, this, [this](int index) {
        if (index == kHamlibRadio) chooseHamlibModel(TestedDevice::Radio);
    });
    connect(testButton, &QPushButton::clicked, this, [this] { test(TestedDevice::Radio); });
    return page;
}

QWidget* PrefsDialog::buildRotor() {
    auto* page = new QWidget;
    auto* form = new QFormLayout(page);
    rotor_ = new QComboBox;
    rotor_->setObjectName("rotorType");
    for (int i = 0; i < kRotorCount; ++i) rotor_->addItem(QString::fromUtf8(rotorName(i)));
    rotor_->addItem(tr("Hamlib…"));  // kHamlibRotor
    connect(rotor_, &QComboBox::currentIndexChanged, this, [this] {
        updateSimulatedItems();
        showHamlibModels();
    });
    connect(rotor_, &QComboBox::activated, this, [this](int index) {
        if (index == kHamlibRotor) chooseHamlibModel(TestedDevice::Rotor);
    });
    hamlibRotor_ = new QLabel;
    hamlibRotor_->setObjectName("hamlibRotorModel");
    rotorPort_ = portBox("rotorPort");
    rotorBaud_ = baudBox("rotorBaud");
    azOffset_ = spin("azimuthOffset", -360, 360, 1, tr("°"));
    elOffset_ = spin("elevationOffset", -90, 90, 1, tr("°"));
    park_ = new QCheckBox(tr("Park between passes at"));
    park_->setObjectName("park");
    parkAz_ = spin("parkAzimuth", 0, 450, 0, tr("° azimuth"));
    parkEl_ = spin("parkElevation", 0, 180, 0, tr("° elevation"));
    auto* parkRow = new QHBoxLayout;
    parkRow->addWidget(park_);
    parkRow->addWidget(parkAz_);
    parkRow->addWidget(parkEl_);
    parkRow->addStretch();
    deadSpot_ = new QComboBox;
    deadSpot_->setObjectName("deadSpot");
    deadSpot_->addItems({tr("Never flip over the top"),
                         tr("Flip for passes crossing south of the station"),
                         tr("Flip for passes crossing north of the station")});
    auto* testButton = new QPushButton(tr("Test"));
    testButton->setObjectName("rotorTest");
    rotorTest_ = testLine("rotorTestResult");
    form->addRow(tr("Rotor:"), rotor_);
    form->addRow(tr("Hamlib model:"), hamlibRotor_);
    form->addRow(tr("Port:"), rotorPort_);
    form->addRow(tr("Speed (bit/s):"), rotorBaud_);
    form->addRow(tr("Azimuth offset:"), azOffset_);
    form->addRow(tr("Elevation offset:"), elOffset_);
    form->addRow(QString(), parkRow);
    form->addRow(tr("Dead spot:"), deadSpot_);
    form->addRow(testButton, rotorTest_);
    connect(testButton, &QPushButton::clicked, this, [this] { test(TestedDevice::Rotor); });
    return page;
}

QWidget* PrefsDialog::buildGateway() {
    auto* page = new QWidget;
    auto* form = new QFormLayout(page);
    gatewayPort_ = portBox("gatewayPort");
    gatewayBaud_ = baudBox("gatewayBaud");
    auto* testButton = new QPushButton(tr("Test"));
    testButton->setObjectName("gatewayTest");
    testButton->setToolTip(tr("Reads the carrier line; nothing is keyed."));
    gatewayTest_ = testLine("gatewayTestResult");
    form->addRow(tr("Port:"), gatewayPort_);
    form->addRow(tr("Speed (bit/s):"), gatewayBaud_);
    form->addRow(testButton, gatewayTest_);
    connect(testButton, &QPushButton::clicked, this, [this] { test(TestedDevice::Gateway); });
    return page;
}

QWidget* PrefsDialog::buildSpeech() {
    auto* page = new QWidget;
    auto* form = new QFormLayout(page);
    speech_ = new QCheckBox(tr("Speak pass warnings"));
    speech_->setObjectName("speech");
    sounds_ = new QCheckBox(tr("Play the AOS, LOS and rotor sounds"));
    sounds_->setObjectName("sounds");
    voice_ = new QComboBox;
    voice_->setObjectName("speechVoice");
    voice_->setAccessibleName(tr("Voice"));
    voice_->setMinimumContentsLength(20);
    rate_ = new QSlider(Qt::Horizontal);
    rate_->setObjectName("speechRate");
    rate_->setAccessibleName(tr("Speaking rate"));
    // Tenths of QTextToSpeech's -1 .. 1.
    rate_->setRange(-kRateSteps, kRateSteps);
    rate_->setPageStep(2);
    rate_->setTickPosition(QSlider::TicksBelow);
    rate_->setTickInterval(5);
    rateText_ = new QLabel;
    rateText_->setObjectName("speechRateText");
    rateText_->setMinimumWidth(rateText_->fontMetrics().horizontalAdvance("normal  +1.0"));
    connect(rate_, &QSlider::valueChanged, this, [this](int value) {
        rateText_->setText(value == 0 ? tr("normal") : QString::asprintf("%+.1f", value / 10.0));
    });
    rateRow_ = new QWidget;
    auto* rateRow = new QHBoxLayout(rateRow_);
    rateRow->setContentsMargins(0, 0, 0, 0);
    rateRow->addWidget(new QLabel(tr("slower")));
    rateRow->addWidget(rate_, 1);
    rateRow->addWidget(new QLabel(tr("faster")));
    rateRow->addSpacing(8);
    rateRow->addWidget(rateText_);
    sayTest_ = new QPushButton(tr("Speak a test sentence"));
    sayTest_->setObjectName("speakTest");
    speechNote_ = new QLabel;
    speechNote_->setObjectName("speechUnavailable");
    speechNote_->setWordWrap(true);
    speechNote_->hide();
    form->addRow(QString(), speech_);
    form->addRow(QString(), sounds_);
    form->addRow(tr("Voice:"), voice_);
    form->addRow(tr("Rate:"), rateRow_);
    auto* sayRow = new QHBoxLayout;
    sayRow->addWidget(sayTest_);
    sayRow->addStretch();
    form->addRow(QString(), sayRow);
    form->addRow(QString(), speechNote_);
    connect(sayTest_, &QPushButton::clicked, this, [this] {
        const std::string voice = chosenVoice().toStdString();
        const double rate = chosenRate();
        post_([voice, rate](CoreSide& s) { s.app->speakTestSentence(voice, rate); });
    });
    return page;
}

void PrefsDialog::showVoices(const PrefsSnapshot& prefs) {
    const QSignalBlocker quiet(voice_);
    voice_->clear();
    voice_->addItem(tr("Default voice"), QString());
    for (const QString& name : prefs.voices) voice_->addItem(name, name);
    const QString stored = QString::fromUtf8(prefs.site.speechVoice);
    if (!stored.isEmpty()) {
        int at = voice_->findData(stored);
        // A voice of another engine or computer stays chosen, marked.
        if (at < 0) {
            voice_->addItem(tr("%1 (not installed)").arg(stored), stored);
            at = voice_->count() - 1;
        }
        voice_->setCurrentIndex(at);
    }
    rate_->setValue(static_cast<int>(std::lround(prefs.site.speechRate * kRateSteps)));
    emit rate_->valueChanged(rate_->value());
    const bool usable = !prefs.voices.isEmpty() && prefs.speechAudible;
    for (QWidget* w : {static_cast<QWidget*>(voice_), rateRow_, static_cast<QWidget*>(sayTest_)})
        w->setEnabled(usable);
    if (prefs.voices.isEmpty())
        speechNote_->setText(
            tr("No speech voices were found: the speech engine is missing or "
               "offers none. Announcements stay silent."));
    else if (!prefs.speechAudible)
        speechNote_->setText(
            tr("No audio output was found, so the voice cannot be heard or "
               "tried here. Announcements stay silent."));
    speechNote_->setVisible(!usable);
}

QString PrefsDialog::chosenVoice() const {
    return voice_->currentData().toString();
}

double PrefsDialog::chosenRate() const {
    return rate_->value() / static_cast<double>(kRateSteps);
}

QWidget* PrefsDialog::buildDisplay() {
    auto* page = new QWidget;
    auto* form = new QFormLayout(page);
    utc_ = new QCheckBox(tr("Times in UTC (otherwise local time)"));
    utc_->setObjectName("displayUTC");
    km_ = new QCheckBox(tr("Distances in km (otherwise miles)"));
    km_->setObjectName("displayKM");
    trackList_ = new QCheckBox(tr("Draw the track list's satellites on the map"));
    trackList_->setObjectName("displayTrackList");
    night_ = new QCheckBox(tr("Night theme"));
    night_->setObjectName("nightTheme");
    for (QCheckBox* box : {utc_, km_, trackList_, night_}) form->addRow(QString(), box);
    return page;
}

void PrefsDialog::setNightTheme(bool on) {
    night_->setChecked(on);
}

void PrefsDialog::open() {
    for (QLabel* line : {radioTest_, rotorTest_, gatewayTest_}) line->clear();
    post_([](CoreSide& s) { s.app->prefsCancelled(); });
    QDialog::open();
}

void PrefsDialog::show(const PrefsSnapshot& prefs) {
    const SiteRec& site = prefs.site;
    callSign_->setText(QString::fromUtf8(site.call_sign));
    siteName_->setText(QString::fromUtf8(site.siteName));
    {
        const QSignalBlocker quiet(place_);
        place_->clear();
        place_->addItem(tr("(as typed below)"));
        for (const Location& place : prefs.places)
            place_->addItem(QString::fromStdString(place.displayName()));
        const int chosen = place_->findText(QString::fromUtf8(site.locationName));
        place_->setCurrentIndex(chosen > 0 ? chosen : 0);
    }
    latitude_->setText(degrees(site.siteLatDegs));
    longitude_->setText(degrees(-site.siteLongDegs));  // the record counts west positive
    latLonEdited();
    altitude_->setValue(site.siteAltitudeM);
    minElevation_->setValue(site.siteMinElevDegs);

    hamlibRadioModel_ = site.hamlibRadioModel;
    hamlibRotorModel_ = site.hamlibRotorModel;
    if (site.radio >= 0 && site.radio < radio_->count()) radio_->setCurrentIndex(site.radio);
    fillPorts(radioPort_, prefs.ports, site.radioPort);
    radioBaud_->setCurrentIndex(site.radioBaud);
    icomAddress_->setValue(site.icomAddress);
    commandDelay_->setValue(site.commandDelay);
    sMeter_->setChecked(site.s_meter_enabled != 0);
    dialTracking_->setChecked(site.dial_tracking_enabled != 0);
    debug_->setChecked(site.debug != 0);

    rotor_->setCurrentIndex(site.rotor);
    fillPorts(rotorPort_, prefs.ports, site.rotorPort);
    rotorBaud_->setCurrentIndex(site.rotorBaud);
    azOffset_->setValue(site.siteAzOffset);
    elOffset_->setValue(site.siteElOffset);
    park_->setChecked(site.park != 0);
    parkAz_->setValue(site.siteParkAz);
    parkEl_->setValue(site.siteParkEl);
    deadSpot_->setCurrentIndex(site.deadSpotState);

    fillPorts(gatewayPort_, prefs.ports, site.gatewayPort);
    updateSimulatedItems();
    showHamlibModels();
    gatewayBaud_->setCurrentIndex(site.gatewayBaud);

    speech_->setChecked(site.wants_speech != 0);
    sounds_->setChecked(site.wants_sounds != 0);
    showVoices(prefs);

    utc_->setChecked(site.displayUTC != 0);
    km_->setChecked(site.displayKM != 0);
    trackList_->setChecked(site.displayTrackList != 0);
}

void PrefsDialog::placeChosen(int index) {
    if (!shown_ || index < 1 || index > static_cast<int>(shown_->places.size())) return;
    const Location& place = shown_->places[static_cast<size_t>(index - 1)];
    latitude_->setText(degrees(place.latDegs));
    longitude_->setText(degrees(place.lonDegs));
    latLonEdited();
}

void PrefsDialog::latLonEdited() {
    bool latOk = false, lonOk = false;
    const double lat = latitude_->text().toDouble(&latOk);
    const double lon = longitude_->text().toDouble(&lonOk);
    const bool good = latOk && lonOk && lat >= -90 && lat < 90 && lon >= -180 && lon <= 180;
    latitude_->setStyleSheet(latOk && lat >= -90 && lat < 90 ? "" : "color: red");
    longitude_->setStyleSheet(lonOk && lon >= -180 && lon <= 180 ? "" : "color: red");
    if (!good) return;
    char grid[8] = {};
    LatLon_to_Grid(lat, -lon, grid);
    locator_->setText(QString::fromLatin1(grid));
    locator_->setStyleSheet("");
    if (sender() == latitude_ || sender() == longitude_) place_->setCurrentIndex(0);
}

void PrefsDialog::locatorEdited() {
    // Sub-square letters are read as capitals.
    const QByteArray text = locator_->text().toUpper().toLatin1();
    double lon = 0, lat = 0;
    if (!Grid_toLatLon(text.constData(), &lon, &lat, true)) {
        locator_->setStyleSheet("color: red");
        return;
    }
    locator_->setStyleSheet("");
    latitude_->setText(degrees(lat));
    longitude_->setText(degrees(lon));
    latitude_->setStyleSheet("");
    longitude_->setStyleSheet("");
    place_->setCurrentIndex(0);
}

SiteRec PrefsDialog::fromControls() const {
    SiteRec site = shown_ ? shown_->site : SiteRec{};
    copyText(site.call_sign, callSign_->text().trimmed());
    copyText(site.siteName, siteName_->text().trimmed());
    // Coordinates typed by hand belong to no place of the list.
    copyText(site.locationName, place_->currentIndex() > 0 ? place_->currentText() : QString());
    bool ok = false;
    const double lat = latitude_->text().toDouble(&ok);
    if (ok && lat >= -90 && lat < 90) site.siteLatDegs = lat;
    const double lon = longitude_->text().toDouble(&ok);
    if (ok && lon >= -180 && lon <= 180) site.siteLongDegs = -lon;
    site.siteAltitudeM = altitude_->value();
    site.siteMinElevDegs = minElevation_->value();
    site.radio = radio_->currentIndex();
    site.hamlibRadioModel = hamlibRadioModel_;
    site.hamlibRotorModel = hamlibRotorModel_;
    site.radioPort = radioPort_->currentIndex();
    site.radioBaud = radioBaud_->currentIndex();
    site.icomAddress = icomAddress_->value();
    site.commandDelay = static_cast<float>(commandDelay_->value());
    site.s_meter_enabled = sMeter_->isChecked();
    site.dial_tracking_enabled = dialTracking_->isChecked();
    site.debug = debug_->isChecked();
    site.rotor = rotor_->currentIndex();
    site.rotorPort = rotorPort_->currentIndex();
    site.rotorBaud = rotorBaud_->currentIndex();
    site.siteAzOffset = azOffset_->value();
    site.siteElOffset = elOffset_->value();
    site.park = park_->isChecked();
    site.siteParkAz = parkAz_->value();
    site.siteParkEl = parkEl_->value();
    site.deadSpotState = deadSpot_->currentIndex();
    site.gatewayPort = gatewayPort_->currentIndex();
    site.gatewayBaud = gatewayBaud_->currentIndex();
    site.wants_speech = speech_->isChecked();
    site.wants_sounds = sounds_->isChecked();
    copyText(site.speechVoice, chosenVoice());
    site.speechRate = chosenRate();
    site.displayUTC = utc_->isChecked();
    site.displayKM = km_->isChecked();
    site.displayTrackList = trackList_->isChecked();
    return site;
}

namespace {

// A port box's text when it is a typed path rather than an item of the list.
std::string typedPath(const QComboBox* box, const QStringList& ports) {
    const QString text = box->currentText().trimmed();
    if (text.isEmpty() || ports.contains(text)) return {};
    // A device path, or a rigctld/rotctld as HOST:PORT; not "Port 3 (missing)".
    static const QRegularExpression address("^[^\\s/:]+:\\d+$");
    if (!text.startsWith('/') && !address.match(text).hasMatch()) return {};
    return text.toStdString();
}

}  // namespace

void PrefsDialog::accept() {
    auto site = std::make_shared<SiteRec>(fromControls());
    const std::string radioPath = pathToAdd(TestedDevice::Radio);
    const std::string rotorPath = pathToAdd(TestedDevice::Rotor);
    const std::string gatewayPath = pathToAdd(TestedDevice::Gateway);
    post_([site, radioPath, rotorPath, gatewayPath](CoreSide& s) {
        if (!radioPath.empty()) site->radioPort = s.app->addTypedPort(radioPath.c_str());
        if (!rotorPath.empty()) site->rotorPort = s.app->addTypedPort(rotorPath.c_str());
        if (!gatewayPath.empty()) site->gatewayPort = s.app->addTypedPort(gatewayPath.c_str());
        s.app->prefsAccepted(site.get());
    });
    emit nightThemeChosen(night_->isChecked());
    QDialog::accept();
}

void PrefsDialog::reject() {
    post_([](CoreSide& s) { s.app->prefsCancelled(); });
    QDialog::reject();
}

void PrefsDialog::updateSimulatedItems() {
    const QStringList ports = shown_ ? shown_->ports : QStringList();
    const struct {
        QComboBox* box;
        QString item;
    } lists[] = {{radioPort_, SimulatedDevices::radioItem(radio_->currentIndex())},
                 // No simulator stands in for a Hamlib rotator.
                 {rotorPort_, rotor_->currentIndex() == kHamlibRotor
                                  ? QString()
                                  : SimulatedDevices::rotorItem(rotor_->currentIndex())},
                 {gatewayPort_, SimulatedDevices::gatewayItem()}};
    for (const auto& list : lists) {
        const QSignalBlocker quiet(list.box);
        const bool wasChosen = SimulatedDevices::isSimulatedItem(list.box->currentText());
        const int last = list.box->count() - 1;
        if (last >= 0 && SimulatedDevices::isSimulatedItem(list.box->itemText(last)))
            list.box->removeItem(last);
        if (!list.item.isEmpty()) list.box->addItem(list.item);
        if (wasChosen && !list.item.isEmpty()) list.box->setCurrentIndex(list.box->count() - 1);
    }
}

std::string PrefsDialog::pathToAdd(TestedDevice device) {
    const QComboBox* box = device == TestedDevice::Radio   ? radioPort_
                           : device == TestedDevice::Rotor ? rotorPort_
                                                           : gatewayPort_;
    if (SimulatedDevices::isSimulatedItem(box->currentText())) {
        if (sims_ == nullptr) return {};
        if (device == TestedDevice::Radio)
            return sims_->startRadio(radio_->currentIndex(), icomAddress_->value());
        if (device == TestedDevice::Rotor) return sims_->startRotor(rotor_->currentIndex());
        return sims_->startGateway();
    }
    return typedPath(box, shown_ ? shown_->ports : QStringList());
}

void PrefsDialog::test(TestedDevice device) {
    QLabel* line = device == TestedDevice::Radio   ? radioTest_
                   : device == TestedDevice::Rotor ? rotorTest_
                                                   : gatewayTest_;
    line->setText(tr("Asking…"));
    auto site = std::make_shared<SiteRec>(fromControls());
    const std::string path = pathToAdd(device);
    post_([site, device, path](CoreSide& s) {
        int* port = device == TestedDevice::Radio   ? &site->radioPort
                    : device == TestedDevice::Rotor ? &site->rotorPort
                                                    : &site->gatewayPort;
        if (!path.empty()) *port = s.app->addTypedPort(path.c_str());
        const std::string text = device == TestedDevice::Radio   ? s.app->testRadio(site.get())
                                 : device == TestedDevice::Rotor ? s.app->testRotor(site.get())
                                                                 : s.app->testGateway(site.get());
        s.ui->showDeviceTest(device, text);
    });
}

void PrefsDialog::showHamlibModels() {
    if (hamlibRadio_ == nullptr || hamlibRotor_ == nullptr) return;  // still being built
    hamlibRadio_->setText(hamlibText(hamlibRadios_, hamlibRadioModel_));
    hamlibRadio_->setEnabled(radio_->currentIndex() == kHamlibRadio);
    hamlibRotor_->setText(hamlibText(hamlibRotors_, hamlibRotorModel_));
    hamlibRotor_->setEnabled(rotor_->currentIndex() == kHamlibRotor);
}

void PrefsDialog::chooseHamlibModel(TestedDevice device) {
    const bool radio = device == TestedDevice::Radio;
    const QVector<HamlibChoice>& models = radio ? hamlibRadios_ : hamlibRotors_;
    auto* picker = new QDialog(this);
    picker->setObjectName("hamlibModels");
    picker->setWindowTitle(radio ? tr("Hamlib radio") : tr("Hamlib rotator"));
    picker->setAttribute(Qt::WA_DeleteOnClose);
    auto* filter = new QLineEdit;
    filter->setObjectName("hamlibFilter");
    filter->setPlaceholderText(tr("Number, maker or model"));
    filter->setClearButtonEnabled(true);
    auto* list = new QListWidget;
    list->setObjectName("hamlibList");
    const int current = radio ? hamlibRadioModel_ : hamlibRotorModel_;
    for (const HamlibChoice& m : models) {
        auto* item = new QListWidgetItem(QString("%1  %2 %3").arg(m.number).arg(m.maker, m.model));
        item->setData(Qt::UserRole, m.number);
        list->addItem(item);
        if (m.number == current) list->setCurrentItem(item);
    }
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    auto* layout = new QVBoxLayout(picker);
    layout->addWidget(filter);
    layout->addWidget(list);
    layout->addWidget(buttons);
    connect(filter, &QLineEdit::textChanged, list, [list](const QString& text) {
        for (int i = 0; i < list->count(); ++i)
            list->item(i)->setHidden(!list->item(i)->text().contains(text, Qt::CaseInsensitive));
    });
    connect(buttons, &QDialogButtonBox::accepted, picker, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, picker, &QDialog::reject);
    connect(list, &QListWidget::itemActivated, picker, &QDialog::accept);
    connect(picker, &QDialog::accepted, this, [this, list, radio] {
        const QListWidgetItem* item = list->currentItem();
        if (item == nullptr || item->isHidden()) return;
        (radio ? hamlibRadioModel_ : hamlibRotorModel_) = item->data(Qt::UserRole).toInt();
        showHamlibModels();
    });
    picker->open();
}

}  // namespace veloran

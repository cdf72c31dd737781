// The window on the bundled data, the core on its thread, a simulated IC-910
// on a pseudo-terminal: what the operator sees and what reaches the radio.
// The timers stay off; each test ticks the core by hand and waits for the
// window to show the result.

#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/stat.h>

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDateTime>
#include <QDialogButtonBox>
#include <QDir>
#include <QDoubleSpinBox>
#include <QElapsedTimer>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPointer>
#include <QPushButton>
#include <QRadioButton>
#include <QSlider>
#include <QSortFilterProxyModel>
#include <QSpinBox>
#include <QSplitter>
#include <QTabWidget>
#include <QTableView>
#include <QTableWidget>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTemporaryDir>
#include <QThread>
#include <QTimeZone>
#include <QToolButton>
#include <QTreeWidget>
#include <QtTest/QTest>
#include <algorithm>
#include <atomic>
#include <cmath>
#include <functional>
#include <memory>

#include "app/appcontroller.h"
#include "data/kepssources.h"
#include "data/modes.h"
#include "engine/satrec.h"
#include "gui/callbookdialog.h"
#include "gui/corethread.h"
#include "gui/kepsdownload.h"
#include "gui/logbookmodel.h"
#include "gui/logbookwindow.h"
#include "gui/mainwindow.h"
#include "gui/modeseditor.h"
#include "gui/passeswindow.h"
#include "gui/placeseditor.h"
#include "gui/prefsdialog.h"
#include "gui/simulateddevices.h"
#include "gui/skywidget.h"
#include "gui/tracklistmodel.h"
#include "gui/uibridge.h"
#include "logbook/callbook.h"
#include "platform/numericlocale.h"
#include "platform/qtuserdefaults.h"
#include "radio/drivers.h"
#include "radio/hamlibradio.h"
#include "sim/icom_sim.h"
#include "sim/radio_sim.h"
#include "sim/sim_pty.h"
#include "station/stationoptions.h"
#include "tests/support/pty.h"

namespace veloran {
namespace {

constexpr int kIc910 = 7;
constexpr uint8_t kIc910Address = 0x60;

// Lets the GUI thread run until `done` holds; false after half a minute.
bool WaitFor(const std::function<bool()>& done) {
    QElapsedTimer clock;
    clock.start();
    while (!done()) {
        if (clock.elapsed() > 30000) return false;
        QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
        QThread::msleep(2);
    }
    return true;
}

class Window : public ::testing::Test {
  protected:
    static void SetUpTestSuite() {
        folders = new QTemporaryDir;
        radio = new sim::IcomSimulator(sim::IcomModel::IC910, kIc910Address);
        radioLine = new sim::PtyServer;
        ASSERT_TRUE(radioLine->open());
        radioLine->start(radio);
        // The core's reply time-outs pass only while the radio is idle, so a
        // busy machine cannot make it look switched off.
        clock = new testing::DeviceClock({{radioLine->path(), -1, [] { radioLine->waitIdle(); }}});
        const std::string base = folders->path().toStdString();
        const DataPaths paths =
            DataPaths::InFolders(VELORAN_RESOURCE_DIR, base + "/data", base + "/config");
        std::string error;
        ASSERT_TRUE(SeedDataFiles(paths, &error)) << error;
        {
            // The station's IC-910 on the simulated radio's line.
            QtUserDefaults stored(paths.settingsFile);
            stored.setInteger("icomAddress", kIc910Address);
            stored.setString("commandDelay", "0");
            ASSERT_TRUE(stored.sync(&error)) << error;
        }
        StationOptions options;
        options.radio = kIc910;
        options.radioPort = radioLine->path();
        core = new CoreThread(options, paths);
        window = new MainWindow(core->bridge(), [](CoreAction a) { core->post(std::move(a)); });
        core->start(false, false);
        // The offscreen screen is 800 x 600; the shots show a laptop's window.
        window->resize(1280, 800);
        window->show();
        settingsFile = QString::fromStdString(paths.settingsFile);
        placesFile = QString::fromStdString(paths.placesFile);
        Tick();
    }
    static void TearDownTestSuite() {
        delete window;
        delete core;
        delete clock;
        delete radioLine;
        delete radio;
        delete folders;
    }

    // Runs on the core thread and waits until it has; the signals it sent
    // are then delivered.
    static void OnCore(CoreAction action) {
        auto done = std::make_shared<std::atomic<bool>>(false);
        core->post([action, done](CoreSide& s) {
            action(s);
            done->store(true);
        });
        ASSERT_TRUE(WaitFor([&] { return done->load(); }));
        QCoreApplication::processEvents();
    }
    static void Sync() {
        OnCore([](CoreSide&) {});
    }
    static void Tick() {
        OnCore([](CoreSide& s) {
            s.app->mainTimerTasks();
            s.trackList->updateTrackList();
        });
    }
    template <typename T>
    static T* Find(const char* name) {
        T* found = window->findChild<T*>(name);
        EXPECT_NE(found, nullptr) << name;
        return found;
    }
    static QString Text(const char* label) { return Find<QLabel>(label)->text(); }
    static uint32_t RadioUplinkHertz() {
        const sim::IcomSimState s = radio->state();
        return s.sub.vfo[s.sub.current].hertz;
    }
    static void Shot(QWidget* widget, const char* name) {
        QDir().mkpath(VELORAN_SHOTS_DIR);
        const QString path = QString(VELORAN_SHOTS_DIR) + "/" + name + ".png";
        ASSERT_TRUE(widget->grab().save(path)) << path.toStdString();
    }

    static inline QTemporaryDir* folders;
    static inline sim::IcomSimulator* radio;
    static inline sim::PtyServer* radioLine;
    static inline testing::DeviceClock* clock;
    static inline CoreThread* core;
    static inline MainWindow* window;
    static inline QString settingsFile, placesFile;
};

TEST_F(Window, OpensOnTheBundledData) {
    EXPECT_EQ(window->windowTitle(), "Veloran");
    auto* satellites = Find<QComboBox>("satellitePopUp");
    ASSERT_GT(satellites->count(), 5);
    EXPECT_EQ(satellites->itemText(0), "Add Satellite");
    EXPECT_EQ(satellites->itemText(1), "AO-7");
    EXPECT_GT(Find<QComboBox>("locationComboBox")->count(), 0);
    EXPECT_TRUE(Text("kepsDateLine").startsWith("Keplerian Elements: "));
    EXPECT_TRUE(Text("versionLine").startsWith("Path Loss: "));
    EXPECT_TRUE(Text("mapStatus").startsWith("Next: "));
    EXPECT_TRUE(Text("radioPanelTitle").startsWith("Veloran: "));
    EXPECT_FALSE(Find<QLabel>("clockLine")->property("virtualTime").toBool());
    EXPECT_TRUE(Find<QCheckBox>("radioCheckBox")->isChecked());
}

// "2026:11:24 12:13:51 UTC", with the separators blinking to blanks.
QDateTime ClockTime(QString text) {
    text = text.left(19);
    text[13] = ':';
    text[16] = ':';
    QDateTime t = QDateTime::fromString(text, "yyyy:MM:dd HH:mm:ss");
    t.setTimeSpec(Qt::UTC);
    return t;
}

TEST_F(Window, TimeSliderAheadTurnsTheClockRedAndMovesTheSatellites) {
    const QString figuresNow = Text("satelliteFigures");
    Find<QSlider>("timeSlider")->setValue(30);
    Sync();
    EXPECT_TRUE(Find<QLabel>("clockLine")->property("virtualTime").toBool());
    const QDateTime shown = ClockTime(Text("clockLine"));
    ASSERT_TRUE(shown.isValid()) << Text("clockLine").toStdString();
    EXPECT_NEAR(QDateTime::currentDateTimeUtc().secsTo(shown), 1800, 5);
    EXPECT_NE(Text("satelliteFigures"), figuresNow);

    Find<QPushButton>("realTimeButton")->click();
    Sync();
    EXPECT_FALSE(Find<QLabel>("clockLine")->property("virtualTime").toBool());
}

TEST_F(Window, ChoosingASatelliteRetitlesTheRadioPanelAndFillsTheModes) {
    auto* satellites = Find<QComboBox>("satellitePopUp");
    const int index = satellites->findText("FO-29");
    ASSERT_GT(index, 0);
    emit satellites->activated(index);
    Sync();
    EXPECT_EQ(Text("radioPanelTitle"), "Veloran: FO-29");
    auto* modes = Find<QComboBox>("channelPopUp");
    ASSERT_GT(modes->count(), 0);
    EXPECT_NE(modes->itemText(0), "No Modes");
    EXPECT_EQ(satellites->currentIndex(), 0);  // the pop-up shows its title again
}

TEST_F(Window, StepperClickMovesTheUplinkOneKilohertzOnTheWire) {
    Tick();
    radioLine->waitIdle();
    const uint32_t before = RadioUplinkHertz();
    ASSERT_NE(before, 0u);
    const QString trimBefore = Text("uplinkTrim");
    Find<QToolButton>("uplinkStepUp")->click();
    Sync();
    EXPECT_NE(Text("uplinkTrim"), trimBefore);
    ASSERT_TRUE(WaitFor([&] {
        radioLine->waitIdle();
        return RadioUplinkHertz() != before;
    }));
    EXPECT_EQ(RadioUplinkHertz(), before + 1000);
}

TEST_F(Window, TrackListRowsCarryTheirColours) {
    std::vector<SatelliteSlot> shown;
    std::vector<RowColour> colours;
    const auto keep =
        QObject::connect(core->bridge(), &UiBridge::trackRowsChanged, window,
                         [&](std::vector<SatelliteSlot> rows, std::vector<RowColour> c) {
                             shown = std::move(rows);
                             colours = std::move(c);
                         });
    auto* satellites = Find<QComboBox>("satellitePopUp");
    emit satellites->activated(satellites->findText("SO-50"));
    Tick();
    QObject::disconnect(keep);
    ASSERT_FALSE(shown.empty());
    ASSERT_EQ(colours.size(), shown.size());
    // Added with automatic selection off, SO-50 became the main satellite:
    // blue, unless its pass is on (red) or just starting (green), or there
    // is none to come (grey).
    const auto row = std::find_if(shown.begin(), shown.end(), [](const SatelliteSlot& r) {
        return r.satelliteName == "SO-50";
    });
    ASSERT_NE(row, shown.end());
    EXPECT_NE(colours[static_cast<size_t>(row - shown.begin())], RowColour::kBlack);
}

TEST_F(Window, AddPlaceSheetAddsAPlace) {
    Find<QToolButton>("addPlaceButton")->click();
    Find<QLineEdit>("placeCity")->setText("Testville");
    Find<QLineEdit>("placeState")->setText("ON");
    Find<QLineEdit>("placeCountry")->setText("Canada");
    Find<QLineEdit>("placeLatitude")->setText("45.5");
    Find<QLineEdit>("placeLongitude")->setText("-75.25");
    Find<QPushButton>("placeOK")->click();
    Sync();
    EXPECT_FALSE(window->findChild<QWidget*>("placeSheet")->isVisible());
    auto* places = Find<QComboBox>("locationComboBox");
    EXPECT_GE(places->findText("Testville ON Canada"), 0);
    EXPECT_EQ(places->currentText(), "Testville ON Canada");
    QFile file(placesFile);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const QByteArray text = file.readAll();
    EXPECT_TRUE(text.contains("Testville\tON\tCanada\t45.5")) << "decimal point kept";
}

TEST_F(Window, ScreenshotsOfTheMapHorizonAndTrackList) {
    auto* mapTabs = Find<QTabWidget>("mapTabs");
    auto* listTabs = Find<QTabWidget>("listTabs");
    mapTabs->setCurrentIndex(0);
    listTabs->setCurrentIndex(0);
    Tick();
    Shot(window, "track-list");
    listTabs->setCurrentIndex(1);
    Tick();
    Shot(window, "horizon");
    Shot(mapTabs, "map");
    listTabs->setCurrentIndex(0);
}

TEST_F(Window, FullScreenKeepsTheGlobeInFront) {
    auto* mapTabs = Find<QTabWidget>("mapTabs");
    mapTabs->setCurrentIndex(1);
    Tick();
    window->setFullScreenView(true);
    EXPECT_EQ(mapTabs->currentIndex(), 1);
    EXPECT_FALSE(Find<QWidget>("globeControls")->isVisible());
    EXPECT_FALSE(Find<QWidget>("globeOptionBoxes")->isVisible());
    EXPECT_FALSE(Find<QWidget>("logStrip")->isVisible());
    window->setFullScreenView(false);
    EXPECT_EQ(mapTabs->currentIndex(), 1);
    EXPECT_TRUE(Find<QWidget>("globeControls")->isVisible());
    EXPECT_TRUE(Find<QWidget>("logStrip")->isVisible());
    mapTabs->setCurrentIndex(0);
}

TEST_F(Window, PassesWindowFillsFiltersAndMovesTheTimeSlider) {
    window->showPasses();
    PassesWindow* passes = window->passesWindow();
    ASSERT_NE(passes, nullptr);
    EXPECT_EQ(passes->windowTitle(), "Passes");
    passes->findChild<QComboBox*>("passesScope")->setCurrentIndex(PassesWindow::kAll);
    ASSERT_TRUE(WaitFor([&] { return !passes->searching() && passes->model()->rowCount() > 0; }));
    auto* table = passes->findChild<QTableView*>("passesTable");
    const int all = table->model()->rowCount();
    ASSERT_EQ(all, passes->model()->rowCount());

    passes->findChild<QDoubleSpinBox*>("passesMinElevation")->setValue(30);
    const int high = table->model()->rowCount();
    EXPECT_LT(high, all) << "the bundled satellites have low passes within a day";
    int kept = 0;
    for (const PassRow& row : passes->model()->rows()) kept += row.pass.maxElevationDegs >= 30;
    EXPECT_EQ(high, kept);
    Shot(passes, "passes");

    // Double-click: the slider goes to the pass's AOS, in minutes from now.
    const QModelIndex first = table->model()->index(0, 0);
    const uint32_t aos =
        passes->model()
            ->row(static_cast<QSortFilterProxyModel*>(table->model())->mapToSource(first).row())
            .aos;
    emit table->doubleClicked(first);
    const qint64 now = QDateTime::currentSecsSinceEpoch() + 2082844800;
    EXPECT_NEAR(Find<QSlider>("timeSlider")->value(), (static_cast<qint64>(aos) - now) / 60.0, 1.5);
    Find<QPushButton>("realTimeButton")->click();
    passes->findChild<QDoubleSpinBox*>("passesMinElevation")->setValue(0);
    passes->close();
    Sync();
}

TEST_F(Window, SkyTabShowsTheMainSatellitesPass) {
    auto* listTabs = Find<QTabWidget>("listTabs");
    listTabs->setCurrentIndex(2);
    auto* sky = Find<SkyTab>("skyTab");
    // The main satellite of the bundled data passes within two days.
    const auto drawn = [&](const char* cls) {
        if (sky->list() == nullptr) return false;
        for (const DisplayItem& item : sky->list()->items)
            if (item.cls == cls) return true;
        return false;
    };
    ASSERT_TRUE(WaitFor([&] { return drawn("track"); }));
    EXPECT_TRUE(drawn("aos") && drawn("max") && drawn("los"));
    Shot(sky, "sky");
    listTabs->setCurrentIndex(0);
}

TEST_F(Window, PreferencesAcceptSavesAndCancelRestores) {
    auto* open = window->findChild<QAction*>("preferencesAction");
    ASSERT_NE(open, nullptr);
    EXPECT_EQ(open->shortcut(), QKeySequence("Ctrl+,"));
    open->trigger();
    auto* prefs = Find<PrefsDialog>("preferencesWindow");
    ASSERT_TRUE(WaitFor([&] { return prefs->isVisible(); }));
    EXPECT_EQ(prefs->windowTitle(), "Preferences");
    Sync();
    auto* model = Find<QComboBox>("radioModel");
    ASSERT_EQ(model->currentIndex(), kIc910);
    // The CI-V address belongs to the Icom models only.
    auto* address = Find<QSpinBox>("icomAddress");
    model->setCurrentIndex(14);  // TS-2000
    Sync();
    EXPECT_FALSE(address->isEnabled());
    model->setCurrentIndex(kIc910);
    Sync();
    EXPECT_TRUE(address->isEnabled());

    auto* tabs = Find<QTabWidget>("preferencesTabs");
    const char* names[] = {"prefs-station", "prefs-radio",  "prefs-rotor",
                           "prefs-gateway", "prefs-speech", "prefs-display"};
    for (int i = 0; i < tabs->count(); ++i) {
        tabs->setCurrentIndex(i);
        Shot(prefs, names[i]);
    }

    Find<QLineEdit>("callSign")->setText("VE3TST");
    auto* locator = Find<QLineEdit>("locator");
    // Ottawa's sub-square: south-west corner 45.4167 N, 75.75 W (2' by 5' of
    // arc); the program takes the point 0.05 degree north and 0.1 east of it.
    locator->setText("FN25dk");
    emit locator->textEdited(locator->text());
    Find<QDoubleSpinBox>("altitude")->setValue(321);
    Find<QComboBox>("deadSpot")->setCurrentIndex(2);
    Find<QCheckBox>("displayKM")->setChecked(false);
    prefs->accept();
    Sync();
    SiteRec site;
    OnCore([&](CoreSide& s) { s.app->GetSiteRec(&site); });
    EXPECT_STREQ(site.call_sign, "VE3TST");
    EXPECT_NEAR(site.siteLatDegs, 45.4667, 1e-3);
    EXPECT_NEAR(site.siteLongDegs, 75.65, 1e-3);  // the record counts west positive
    EXPECT_DOUBLE_EQ(site.siteAltitudeM, 321);
    EXPECT_EQ(site.deadSpotState, 2);
    EXPECT_EQ(site.displayKM, 0);
    std::string stored;
    OnCore([&](CoreSide& s) { stored = s.defaults->stringForKey("userCallSign"); });
    EXPECT_EQ(stored, "VE3TST");

    // Cancel puts back what the site holds, not what was typed.
    open->trigger();
    ASSERT_TRUE(WaitFor([&] { return prefs->isVisible(); }));
    Sync();
    Find<QLineEdit>("callSign")->setText("XX9XX");
    prefs->reject();
    Sync();
    EXPECT_EQ(Find<QLineEdit>("callSign")->text(), "VE3TST");
    OnCore([&](CoreSide& s) { s.app->GetSiteRec(&site); });
    EXPECT_STREQ(site.call_sign, "VE3TST");
}

// Without a speech engine (this suite runs none) the voice controls are
// off and say why; with voices on offer the choice is kept and saved.
TEST_F(Window, SpeechTabChoosesAVoiceOrSaysWhyItCannot) {
    std::shared_ptr<const PrefsSnapshot> real;
    const QMetaObject::Connection watch = QObject::connect(
        core->bridge(), &UiBridge::prefsShown,
        [&real](std::shared_ptr<const PrefsSnapshot> shown) { real = std::move(shown); });
    window->findChild<QAction*>("preferencesAction")->trigger();
    auto* prefs = Find<PrefsDialog>("preferencesWindow");
    ASSERT_TRUE(WaitFor([&] { return prefs->isVisible() && real != nullptr; }));
    Sync();
    QObject::disconnect(watch);
    Find<QTabWidget>("preferencesTabs")->setCurrentIndex(4);
    auto* voice = Find<QComboBox>("speechVoice");
    auto* rate = Find<QSlider>("speechRate");
    auto* note = Find<QLabel>("speechUnavailable");
    EXPECT_FALSE(voice->isEnabled());
    EXPECT_FALSE(rate->isEnabled());
    EXPECT_FALSE(Find<QPushButton>("speakTest")->isEnabled());
    EXPECT_TRUE(note->isVisible());
    EXPECT_TRUE(note->text().contains("No speech voices")) << note->text().toStdString();
    Shot(prefs, "prefs-speech-unavailable");

    // As the panel shows an engine with voices and a loudspeaker.
    auto offered = std::make_shared<PrefsSnapshot>(*real);
    offered->voices = {"kal", "slt", "awb"};
    offered->speechAudible = true;
    emit core->bridge()->prefsShown(offered);
    EXPECT_TRUE(voice->isEnabled());
    EXPECT_FALSE(note->isVisible());
    ASSERT_EQ(voice->count(), 4);  // the engine's default first
    voice->setCurrentIndex(voice->findText("slt"));
    rate->setValue(-3);
    EXPECT_EQ(Find<QLabel>("speechRateText")->text(), "-0.3");
    Shot(prefs, "prefs-speech");
    prefs->accept();
    Sync();
    SiteRec site;
    std::string stored;
    OnCore([&](CoreSide& s) {
        s.app->GetSiteRec(&site);
        stored = s.defaults->stringForKey("speechVoice");
    });
    EXPECT_STREQ(site.speechVoice, "slt");
    EXPECT_DOUBLE_EQ(site.speechRate, -0.3);
    EXPECT_EQ(stored, "slt");

    // A stored voice this computer lacks stays chosen, marked as missing.
    offered->site = site;
    offered->voices = {"kal"};
    emit core->bridge()->prefsShown(offered);
    EXPECT_EQ(voice->currentText(), "slt (not installed)");
    OnCore([&](CoreSide& s) { s.app->prefsCancelled(); });
}

TEST_F(Window, HamlibItemOfTheRadioPopUpStoresTheChosenModel) {
    SiteRec before;
    OnCore([&](CoreSide& s) {
        s.app->GetSiteRec(&before);
        SiteRec other = before;
        other.hamlibRadioModel = kHamlibNetModel;  // so choosing the dummy shows
        s.app->prefsAccepted(&other);
    });
    window->findChild<QAction*>("preferencesAction")->trigger();
    auto* prefs = Find<PrefsDialog>("preferencesWindow");
    ASSERT_TRUE(WaitFor([&] { return prefs->isVisible(); }));
    Sync();
    auto* model = Find<QComboBox>("radioModel");
    ASSERT_EQ(model->itemText(kHamlibRadio), "Hamlib…");
    model->setCurrentIndex(kHamlibRadio);
    emit model->activated(kHamlibRadio);
    auto* picker = Find<QDialog>("hamlibModels");
    auto* filter = picker->findChild<QLineEdit*>("hamlibFilter");
    auto* list = picker->findChild<QListWidget*>("hamlibList");
    ASSERT_TRUE(filter && list);
    filter->setText("dummy");
    QListWidgetItem* dummy = nullptr;
    for (int i = 0; i < list->count(); ++i) {
        if (list->item(i)->isHidden()) continue;
        EXPECT_TRUE(list->item(i)->text().contains("dummy", Qt::CaseInsensitive));
        if (list->item(i)->data(Qt::UserRole).toInt() == kHamlibDummyModel) dummy = list->item(i);
    }
    ASSERT_NE(dummy, nullptr);
    list->setCurrentItem(dummy);
    picker->accept();
    prefs->accept();
    Sync();
    SiteRec site;
    OnCore([&](CoreSide& s) { s.app->GetSiteRec(&site); });
    EXPECT_EQ(site.radio, kHamlibRadio);
    EXPECT_EQ(site.hamlibRadioModel, kHamlibDummyModel);
    std::string stored;
    OnCore([&](CoreSide& s) { stored = s.defaults->stringForKey("hamlibRadioModel"); });
    EXPECT_EQ(stored, "1");
    OnCore([&](CoreSide& s) { s.app->prefsAccepted(&before); });
    Sync();
}

TEST_F(Window, ModesEditorSavesAFrequencyAndRefusesABadNumber) {
    auto* open = window->findChild<QAction*>("modesEditorAction");
    ASSERT_NE(open, nullptr);
    open->trigger();
    auto* editor = Find<ModesEditor>("modesWindow");
    EXPECT_EQ(editor->windowTitle(), "Modes");
    auto* outline = Find<QTreeWidget>("modesOutline");
    ASSERT_TRUE(WaitFor([&] { return outline->topLevelItemCount() > 2; }));
    EXPECT_TRUE(outline->topLevelItem(0)->text(0).contains("BetweenPasses"));
    EXPECT_TRUE(outline->topLevelItem(1)->text(0).contains("OnExit"));
    const auto found = outline->findItems("AO-7", Qt::MatchExactly);
    ASSERT_EQ(found.size(), 1);
    ASSERT_GT(found[0]->childCount(), 0);
    outline->setCurrentItem(found[0]->child(0));

    auto* uplink = Find<QLineEdit>("uplink");
    uplink->setText("432.1x");
    emit uplink->textEdited(uplink->text());
    EXPECT_TRUE(uplink->styleSheet().contains("red"));
    EXPECT_FALSE(Find<QPushButton>("saveModes")->isEnabled()) << "a bad number is not stored";
    uplink->setText("432.123456");
    emit uplink->textEdited(uplink->text());
    EXPECT_TRUE(uplink->styleSheet().isEmpty());
    Shot(editor, "modes-editor");
    Find<QPushButton>("saveModes")->click();
    Sync();

    // The running program tunes with it, and the file reads back the same.
    SatRec* sat = new SatRec;
    OnCore([&](CoreSide& s) { s.app->GetSatelliteRecordByName("AO-7", sat); });
    EXPECT_DOUBLE_EQ(sat->modes[0].upFreq, 432.123456);
    ModesFile file;
    std::string modesPath;
    OnCore([&](CoreSide& s) { modesPath = s.app->paths().userModesFile; });
    ASSERT_TRUE(file.load(modesPath));
    SatRec* reread = new SatRec{};
    ASSERT_GT(file.getModes(reread, "AO-7"), 0);
    EXPECT_DOUBLE_EQ(reread->modes[0].upFreq, 432.123456);
    EXPECT_EQ(reread->numberOfActiveChannels, sat->numberOfActiveChannels);
    delete reread;
    delete sat;
    editor->reject();
}

TEST_F(Window, ModesEditorAddsAndDeletesSatellitesWithUndo) {
    window->findChild<QAction*>("modesEditorAction")->trigger();
    auto* editor = Find<ModesEditor>("modesWindow");
    auto* outline = Find<QTreeWidget>("modesOutline");
    ASSERT_TRUE(WaitFor([&] { return outline->topLevelItemCount() > 2; }));
    const int before = outline->topLevelItemCount();
    auto top = [&](const QString& text) {
        const auto found = outline->findItems(text, Qt::MatchStartsWith);
        return found.isEmpty() ? nullptr : found[0];
    };

    // The pseudo-records cannot be deleted.
    outline->setCurrentItem(outline->topLevelItem(0));
    EXPECT_FALSE(Find<QPushButton>("deleteSatellite")->isEnabled());
    EXPECT_FALSE(editor->addSatellite("AO-7")) << "it has modes already";
    EXPECT_FALSE(editor->addSatellite("AO 7"));
    EXPECT_EQ(outline->topLevelItemCount(), before);

    // The Sun has an element set and no modes: it is offered.
    Find<QPushButton>("addSatellite")->click();
    auto* ask = Find<QDialog>("addSatelliteDialog");
    auto* name = ask->findChild<QComboBox*>("newSatelliteName");
    ASSERT_NE(name, nullptr);
    EXPECT_NE(name->findText("Sun"), -1);
    Shot(ask, "modes-add-satellite");
    name->setEditText("Sun");
    ask->findChild<QDialogButtonBox*>()->button(QDialogButtonBox::Ok)->click();
    ASSERT_NE(top("Sun"), nullptr);
    EXPECT_EQ(top("Sun")->childCount(), 1);
    EXPECT_TRUE(editor->addSatellite("XO-99"));
    ASSERT_NE(top("XO-99"), nullptr);
    EXPECT_TRUE(top("XO-99")->text(0).contains("no element set"));

    outline->setCurrentItem(top("RS-44"));
    Find<QPushButton>("deleteSatellite")->click();
    EXPECT_EQ(top("RS-44"), nullptr);
    editor->undo();
    ASSERT_NE(top("RS-44"), nullptr) << "Undo brings a deleted satellite back";
    outline->setCurrentItem(top("RS-44"));
    Find<QPushButton>("deleteSatellite")->click();
    editor->undo();
    editor->undo();
    EXPECT_EQ(top("XO-99"), nullptr) << "and takes an added one out";
    EXPECT_TRUE(editor->addSatellite("XO-99"));
    outline->setCurrentItem(top("RS-44"));
    Find<QPushButton>("deleteSatellite")->click();
    Shot(editor, "modes-editor-added");

    Find<QPushButton>("saveModes")->click();
    Sync();
    ASSERT_TRUE(WaitFor([&] { return top("RS-44") == nullptr && top("Sun") != nullptr; }));
    auto sat = std::make_unique<SatRec>();
    OnCore([&](CoreSide& s) {
        s.app->GetSatelliteRecordByName("Sun", sat.get());
        EXPECT_EQ(sat->numberOfActiveChannels, 1);
        s.app->GetSatelliteRecordByName("RS-44", sat.get());
        EXPECT_EQ(sat->numberOfActiveChannels, 0);
    });
    std::string modesPath;
    OnCore([&](CoreSide& s) { modesPath = s.app->paths().userModesFile; });
    ModesFile file;
    ASSERT_TRUE(file.load(modesPath));
    const std::vector<std::string> names = file.names();
    EXPECT_NE(std::find(names.begin(), names.end(), "XO-99"), names.end());
    EXPECT_EQ(std::find(names.begin(), names.end(), "RS-44"), names.end());
    editor->reject();
}

// A newcomer without a radio: "Simulated FT-847" starts a simulator inside
// the program, and the station opens and tunes it like a real one.
TEST_F(Window, SimulatedFt847IsTunedFromTheRadioPanel) {
    constexpr int kFt847 = 1;
    window->findChild<QAction*>("preferencesAction")->trigger();
    auto* prefs = Find<PrefsDialog>("preferencesWindow");
    ASSERT_TRUE(WaitFor([&] { return prefs->isVisible(); }));
    Sync();
    Find<QComboBox>("radioModel")->setCurrentIndex(kFt847);
    auto* port = Find<QComboBox>("radioPort");
    const int item = port->findText("Simulated FT-847");
    ASSERT_GE(item, 0);
    port->setCurrentIndex(item);
    prefs->accept();
    Sync();
    const sim::SimulatedRadio* ft847 = window->simulatedDevices().yaesuRadio();
    ASSERT_NE(ft847, nullptr);
    ASSERT_TRUE(WaitFor([&] { return ft847->state().satRx.hertz != 0; }));
    VFORec vfo{};
    OnCore([&](CoreSide& s) { vfo = s.app->vfo(); });
    EXPECT_TRUE(ft847->state().catOn);
    // The FT-847 is told frequencies in steps of 10 Hz.
    EXPECT_NEAR(ft847->state().satRx.hertz, vfo.down * 1e6, 10);
    EXPECT_NEAR(ft847->state().satTx.hertz, vfo.up * 1e6, 10);
}

TEST_F(Window, PlacesEditorRewritesTheFileAndRefusesABadLatitude) {
    window->findChild<QAction*>("placesEditorAction")->trigger();
    auto* editor = Find<PlacesEditor>("placesWindow");
    auto* table = Find<QTableWidget>("placesTable");
    ASSERT_TRUE(WaitFor([&] { return table->rowCount() > 0; }));
    const auto found = table->findItems("Testville", Qt::MatchExactly);
    ASSERT_EQ(found.size(), 1);
    const int row = found[0]->row();
    table->item(row, 3)->setText("91");
    EXPECT_FALSE(Find<QPushButton>("savePlaces")->isEnabled());
    table->item(row, 3)->setText("46.25");
    table->item(row, 0)->setText("Newville");
    ASSERT_TRUE(Find<QPushButton>("savePlaces")->isEnabled());
    Find<QPushButton>("savePlaces")->click();
    Sync();
    EXPECT_FALSE(editor->isVisible());
    QFile file(placesFile);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const QByteArray text = file.readAll();
    EXPECT_TRUE(text.contains("Newville\tON\tCanada\t46.25")) << text.toStdString();
    EXPECT_FALSE(text.contains("Testville"));
    EXPECT_GE(Find<QComboBox>("locationComboBox")->findText("Newville ON Canada"), 0);
}

TEST_F(Window, ContactLoggedDuringAPassCarriesThatMomentAndExportsForLotw) {
    // The ISS's FM repeater, the time slider moved to one to two minutes
    // before the highest point of its next good pass (whole minutes from
    // now), where the Doppler shift is kilohertz.
    auto* satellites = Find<QComboBox>("satellitePopUp");
    emit satellites->activated(satellites->findText("ISS"));
    window->showPasses();
    PassesWindow* passes = window->passesWindow();
    passes->findChild<QComboBox*>("passesScope")->setCurrentIndex(PassesWindow::kAll);
    ASSERT_TRUE(WaitFor([&] { return !passes->searching() && passes->model()->rowCount() > 0; }));
    uint32_t highest = 0;
    for (const PassRow& row : passes->model()->rows())
        if (row.satellite == "ISS" && row.pass.maxElevationDegs > 20 && highest == 0)
            highest = row.max;
    passes->close();
    ASSERT_NE(highest, 0u) << "the ISS passes the test site within a day";
    const qint64 now = QDateTime::currentSecsSinceEpoch() + 2082844800;
    Find<QSlider>("timeSlider")->setValue(static_cast<int>((highest - 60 - now) / 60));
    Sync();
    Tick();
    uint32_t virtualNow = 0;
    double radioDown = 0;
    OnCore([&](CoreSide& s) {
        virtualNow = s.app->timeBaseSecs();
        radioDown = s.app->vfo().down;
    });

    auto* call = Find<QLineEdit>("logCall");
    QTest::keyClicks(call, "dl1abc");
    EXPECT_EQ(call->text(), "DL1ABC");
    ASSERT_TRUE(WaitFor([&] { return Text("logCountry") != "country"; }));
    EXPECT_EQ(Text("logCountry"), "Federal Republic of Germany");
    Find<QLineEdit>("logGrid")->setText("jo62qm");
    Find<QLineEdit>("logComment")->setText("first contact");
    Shot(Find<QWidget>("logStrip"), "logstrip");
    QTest::keyClick(call, Qt::Key_Return);
    ASSERT_TRUE(WaitFor([&] { return Text("logStatus").startsWith("Logged"); }));
    EXPECT_FALSE(Text("logStatus").startsWith("DUPE"));
    EXPECT_TRUE(call->text().isEmpty());

    // The same station again on this pass: warned in the strip, still logged.
    QTest::keyClicks(call, "DL1ABC/P");
    QTest::keyClick(call, Qt::Key_Return);
    ASSERT_TRUE(WaitFor([&] { return Text("logStatus").startsWith("DUPE"); }));
    Shot(window, "logstrip-window");

    window->showLogbook();
    LogbookWindow* book = window->logbookWindow();
    ASSERT_NE(book, nullptr);
    EXPECT_EQ(book->windowTitle(), "Logbook");
    ASSERT_TRUE(WaitFor([&] { return book->model()->rowCount() == 2; }));
    const ContactRec* first = nullptr;
    for (int r = 0; r < 2; ++r)
        if (book->model()->contact(r).call == "DL1ABC") first = &book->model()->contact(r);
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(first->satellite, "ISS");
    EXPECT_EQ(first->transponder, "FM Rptr");
    EXPECT_EQ(first->mode, "FM");
    EXPECT_EQ(first->startUTC, virtualNow);
    EXPECT_EQ(first->grid, "JO62QM");
    EXPECT_EQ(first->country, "Federal Republic of Germany");
    // The repeater's frequencies as the ISS sees them (mode.dat), to the
    // hertz, not the Doppler-shifted ones the radio was on (up to 10 kHz off
    // at 70 cm).
    EXPECT_DOUBLE_EQ(first->uplinkMHz, 145.990);
    EXPECT_DOUBLE_EQ(first->downlinkMHz, 437.800);
    EXPECT_GT(std::fabs(radioDown - 437.800), 1e-4) << "mid-pass the radio is Doppler-shifted";

    auto* filter = book->findChild<QLineEdit*>("logbookFilter");
    filter->setText("/p");
    EXPECT_EQ(book->proxy()->rowCount(), 1);
    filter->setText("germany");
    EXPECT_EQ(book->proxy()->rowCount(), 2);
    filter->setText("W1AW");
    EXPECT_EQ(book->proxy()->rowCount(), 0);
    filter->clear();
    Shot(book, "logbook");

    // Corrected in place, saved through the core, listed again.
    const QModelIndex name = book->model()->index(0, LogbookModel::kName);
    ASSERT_TRUE(book->model()->setData(name, "Hans", Qt::EditRole));
    ASSERT_TRUE(WaitFor([&] { return book->model()->contact(0).name == "Hans"; }));

    const QString adif = folders->path() + "/export.adi";
    book->exportAdifTo(adif);
    ASSERT_TRUE(WaitFor([&] { return QFile::exists(adif); }));
    QFile file(adif);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const QString text = QString::fromUtf8(file.readAll());
    for (const char* field :
         {"<PROP_MODE:3>SAT", "<SAT_NAME:5>ARISS", "<CALL:6>DL1ABC", "<FREQ:10>145.9",
          "<FREQ_RX:10>437.8", "<MY_GRIDSQUARE:6>", "<BAND:2>2m", "<BAND_RX:4>70cm", "<MODE:2>FM",
          "<GRIDSQUARE:6>JO62QM"})
        EXPECT_TRUE(text.contains(field)) << field << "\n" << text.toStdString();
    book->close();
    Find<QPushButton>("realTimeButton")->click();
    Sync();
}

// A callsign service on loopback: any login opens a session, any call is
// found (answers shaped as HamQTH's XML).
TEST_F(Window, CallbookFillsNameQthAndGridOnceTheCallIsTyped) {
    QTcpServer service;
    ASSERT_TRUE(service.listen(QHostAddress::LocalHost, 0));
    QObject::connect(&service, &QTcpServer::newConnection, [&service] {
        QTcpSocket* socket = service.nextPendingConnection();
        QObject::connect(socket, &QTcpSocket::readyRead, [socket] {
            const QByteArray request = socket->readAll();
            const QByteArray body =
                "<?xml version=\"1.0\"?><HamQTH version=\"2.8\">" +
                QByteArray(request.contains("u=")
                               ? "<session><session_id>S1</session_id></session>"
                               : "<search><callsign>ok7an</callsign><nick>Petr</nick>"
                                 "<qth>Neratovice</qth><grid>JO70GG</grid></search>") +
                "</HamQTH>";
            socket->write(
                "HTTP/1.1 200 OK\r\nContent-Type: text/xml\r\nConnection: close\r\n"
                "Content-Length: " +
                QByteArray::number(body.size()) + "\r\n\r\n" + body);
            socket->disconnectFromHost();
        });
    });
    const std::string url = "http://127.0.0.1:" + std::to_string(service.serverPort()) + "/xml.php";
    OnCore([url](CoreSide& s) {
        s.defaults->setBool(callbookkeys::kEnabled, true);
        s.defaults->setString(callbookkeys::kUser, "test");
        s.defaults->setString(callbookkeys::kPassword, "pw");
        s.defaults->setString(callbookkeys::kUrl, url);
    });
    auto* call = Find<QLineEdit>("logCall");
    QTest::keyClicks(call, "OK7AN");
    ASSERT_TRUE(WaitFor([&] { return !Find<QLineEdit>("logName")->text().isEmpty(); }));
    EXPECT_EQ(Find<QLineEdit>("logName")->text(), "Petr");
    EXPECT_EQ(Find<QLineEdit>("logQth")->text(), "Neratovice");
    EXPECT_EQ(Find<QLineEdit>("logGrid")->text(), "JO70GG");
    OnCore([](CoreSide& s) { s.defaults->setBool(callbookkeys::kEnabled, false); });
    for (const char* f : {"logCall", "logName", "logQth", "logGrid"}) Find<QLineEdit>(f)->clear();
}

// The lookup's settings set from the logbook window: the account goes to the
// settings file, the password only to its private file.
TEST_F(Window, CallbookSettingsFromTheLogbookWindow) {
    std::string configDir;
    OnCore([&configDir](CoreSide& s) {
        configDir = s.app->paths().configDir;
        for (const char* key : {callbookkeys::kEnabled, callbookkeys::kUser, callbookkeys::kUrl})
            s.defaults->removeKey(key);
        StoreCallbookPassword(configDir, "", nullptr);
    });
    const std::string passwordFile = CallbookPasswordPath(configDir);
    window->showLogbook();
    LogbookWindow* book = window->logbookWindow();
    ASSERT_NE(book, nullptr);
    struct Fields {
        QPointer<CallbookDialog> dialog;
        QCheckBox* enabled;
        QLineEdit *user, *password, *url;
        QPushButton *clear, *ok;
        QLabel* state;
    };
    auto open = [book] {
        Fields f;
        f.dialog = book->openCallbookSettings();
        f.enabled = f.dialog->findChild<QCheckBox*>("callbookEnabled");
        f.user = f.dialog->findChild<QLineEdit*>("callbookUser");
        f.password = f.dialog->findChild<QLineEdit*>("callbookPassword");
        f.url = f.dialog->findChild<QLineEdit*>("callbookUrl");
        f.clear = f.dialog->findChild<QPushButton*>("callbookClearPassword");
        f.state = f.dialog->findChild<QLabel*>("callbookPasswordState");
        f.ok =
            f.dialog->findChild<QDialogButtonBox*>("callbookButtons")->button(QDialogButtonBox::Ok);
        EXPECT_TRUE(WaitFor([&] { return f.ok->isEnabled(); }));
        return f;
    };
    auto closed = [](const Fields& f) {
        return WaitFor([&] { return f.dialog.isNull() || !f.dialog->isVisible(); });
    };

    Fields f = open();
    EXPECT_FALSE(f.enabled->isChecked());
    EXPECT_EQ(f.url->text(), kCallbookDefaultUrl);
    EXPECT_EQ(f.password->echoMode(), QLineEdit::Password);
    EXPECT_FALSE(f.clear->isEnabled());
    f.enabled->setChecked(true);
    f.user->setText("ve3xyz");
    QTest::keyClicks(f.password, "s3cret pw");
    Shot(f.dialog, "callbook");
    f.ok->click();
    ASSERT_TRUE(closed(f));
    ASSERT_TRUE(WaitFor([&] {
        QFile settings(settingsFile);
        return settings.open(QIODevice::ReadOnly) &&
               settings.readAll().contains("callbook_user=ve3xyz");
    }));
    QFile settings(settingsFile);
    ASSERT_TRUE(settings.open(QIODevice::ReadOnly));
    const QByteArray stored = settings.readAll();
    EXPECT_TRUE(stored.contains("callbook_enabled=true")) << stored.toStdString();
    EXPECT_FALSE(stored.contains("s3cret")) << stored.toStdString();
    EXPECT_FALSE(stored.contains("callbook_url")) << "the default applies";
    struct stat st {};
    ASSERT_EQ(stat(passwordFile.c_str(), &st), 0);
    EXPECT_EQ(st.st_mode & 0777, 0600u);
    QFile password(QString::fromStdString(passwordFile));
    ASSERT_TRUE(password.open(QIODevice::ReadOnly));
    EXPECT_EQ(password.readAll(), "s3cret pw");

    // Reopened: stored, not shown; left empty it is kept.
    f = open();
    EXPECT_TRUE(f.enabled->isChecked());
    EXPECT_EQ(f.user->text(), "ve3xyz");
    EXPECT_TRUE(f.password->text().isEmpty());
    EXPECT_TRUE(f.state->text().contains("stored")) << f.state->text().toStdString();
    EXPECT_TRUE(f.clear->isEnabled());
    f.url->setText("ftp://example.org");
    f.ok->click();
    EXPECT_TRUE(f.dialog->isVisible()) << "a bad address is refused";
    f.url->setText("http://127.0.0.1:9/xml.php");
    f.ok->click();
    ASSERT_TRUE(closed(f));
    CallbookSettings read;
    OnCore([&](CoreSide& s) { ReadCallbookSettings(s.defaults, configDir, &read); });
    EXPECT_EQ(read.password, "s3cret pw");
    EXPECT_EQ(read.url, "http://127.0.0.1:9/xml.php");

    // Turned off with the password cleared: the file goes.
    f = open();
    f.enabled->setChecked(false);
    f.clear->click();
    EXPECT_FALSE(f.state->text().contains("is stored"));
    f.ok->click();
    ASSERT_TRUE(closed(f));
    Sync();
    EXPECT_FALSE(QFile::exists(QString::fromStdString(passwordFile)));
    book->close();
}

QByteArray ReadResource(const char* name) {
    QFile file(QString(VELORAN_RESOURCE_DIR) + "/" + name);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// A web server on loopback that answers every request with `body`.
class LoopbackServer {
  public:
    explicit LoopbackServer(QByteArray body) : body_(std::move(body)) {
        QObject::connect(&server_, &QTcpServer::newConnection, [this] {
            QTcpSocket* socket = server_.nextPendingConnection();
            QObject::connect(socket, &QTcpSocket::readyRead, [this, socket] {
                socket->readAll();
                ++requests;
                socket->write(
                    "HTTP/1.1 200 OK\r\nContent-Type: text/plain\r\nConnection: close\r\n"
                    "Content-Length: " +
                    QByteArray::number(body_.size()) + "\r\n\r\n" + body_);
                socket->disconnectFromHost();
            });
        });
    }
    bool listen() { return server_.listen(QHostAddress::LocalHost, 0); }
    QString url(const char* path) const {
        return QString("http://127.0.0.1:%1%2").arg(server_.serverPort()).arg(path);
    }
    int requests = 0;

  private:
    QTcpServer server_;
    QByteArray body_;
};

QStringList ItemTexts(const QListWidget* list) {
    QStringList texts;
    for (int i = 0; i < list->count(); ++i) texts << list->item(i)->text();
    return texts;
}

TEST_F(Window, DownloadDialogOffersTheSourcesAndMergesFromAnAddressOfYours) {
    OnCore([](CoreSide& s) {
        s.defaults->setString(prefkeys::kKepsAutoStopped, "https://example.org/x answered 403");
    });
    Find<QAction>("downloadKepsAction")->trigger();
    auto* dialog = Find<KepsDownloadDialog>("kepsDownloadDialog");
    auto* list = dialog->findChild<QListWidget*>("kepsSourceList");
    ASSERT_TRUE(WaitFor([&] { return list->count() > 0; }));
    const QStringList texts = ItemTexts(list);
    EXPECT_EQ(texts.value(0), "AMSAT bulletin (nasa.all)");
    EXPECT_EQ(list->currentRow(), 0) << "the default source is chosen";
    for (const char* group : {"Amateur radio", "Space stations", "Weather", "Active satellites"})
        for (const char* form : {"TLE", "OMM"})
            EXPECT_TRUE(texts.contains(QString("CelesTrak: %1 (%2)").arg(group, form)))
                << group << " " << form;
    const int byNumber = texts.indexOf("CelesTrak: one satellite by catalogue number");
    ASSERT_GT(byNumber, 0);
    list->setCurrentRow(byNumber);
    dialog->findChild<QSpinBox*>("kepsCatalogNumber")->setValue(27607);
    dialog->findChild<QComboBox*>("kepsCatalogForm")->setCurrentIndex(1);
    EXPECT_EQ(dialog->chosenURL().toStdString(), CelestrakCatalogURL(27607, true));
    EXPECT_FALSE(dialog->findChild<QCheckBox*>("kepsInsist")->isChecked());

    // Stopped by a server's refusal until the operator resumes them.
    auto* autoState = dialog->findChild<QLabel*>("kepsAutoState");
    auto* resume = dialog->findChild<QPushButton*>("kepsResumeAuto");
    EXPECT_TRUE(autoState->text().contains("stopped")) << autoState->text().toStdString();
    EXPECT_TRUE(resume->isVisible());
    resume->click();
    ASSERT_TRUE(WaitFor([&] { return !resume->isVisible(); }));
    std::string stopped = "?";
    OnCore([&](CoreSide& s) { stopped = s.defaults->stringForKey(prefkeys::kKepsAutoStopped); });
    EXPECT_EQ(stopped, "");

    // Plain http is refused; the loopback server of a local mirror is not.
    LoopbackServer server(ReadResource("samples/samples-long.tle"));
    ASSERT_TRUE(server.listen());
    auto* newURL = dialog->findChild<QLineEdit*>("kepsNewURL");
    newURL->setText("http://example.org/keps.txt");
    dialog->findChild<QPushButton*>("kepsAddURL")->click();
    EXPECT_TRUE(dialog->findChild<QLabel*>("kepsURLProblem")->isVisible());
    const QString mine = server.url("/keps.txt");
    newURL->setText(mine);
    dialog->findChild<QPushButton*>("kepsAddURL")->click();
    ASSERT_TRUE(WaitFor([&] { return ItemTexts(list).contains(mine); }));
    EXPECT_EQ(dialog->chosenURL(), mine);
    std::string saved;
    OnCore([&](CoreSide& s) { saved = s.defaults->stringForKey(prefkeys::kKepsUserURLs); });
    EXPECT_EQ(saved, mine.toStdString());
    Shot(dialog, "keps-download");

    // Merged: the three sample satellites join the bundled ones.
    auto* satellites = Find<QComboBox>("satellitePopUp");
    const int before = satellites->count();
    dialog->findChild<QRadioButton*>("kepsMerge")->setChecked(true);
    dialog->findChild<QPushButton*>("kepsDownloadButton")->click();
    EXPECT_FALSE(dialog->isVisible());
    // The pop-up is emptied and filled again one item at a time.
    ASSERT_TRUE(WaitFor(
        [&] { return satellites->findText("VS-1") > 0 && satellites->count() == before + 3; }));
    EXPECT_GT(satellites->findText("AO-7"), 0);
    EXPECT_EQ(server.requests, 1);
    ASSERT_TRUE(WaitFor([&] { return Text("messageLine").startsWith("Element sets downloaded"); }));
    OnCore([&](CoreSide& s) { saved = s.defaults->stringForKey(prefkeys::kKepsSourceURL); });
    EXPECT_EQ(saved, mine.toStdString()) << "the source chosen stays chosen";
}

// Runs after the download above brought the sample satellites' long names.
TEST_F(Window, LongNamesAndTheElementAgeOfTheMainSatellite) {
    auto* satellites = Find<QComboBox>("satellitePopUp");
    const int vs1 = satellites->findText("VS-1");
    ASSERT_GT(vs1, 0);
    const QString tip = satellites->itemData(vs1, Qt::ToolTipRole).toString();
    EXPECT_TRUE(tip.contains("VELORAN SAMPLE 1 (VS-1)")) << tip.toStdString();
    EXPECT_TRUE(tip.contains("99901")) << tip.toStdString();

    emit satellites->activated(vs1);  // the main satellite, and a track-list row
    Tick();
    const QString line = Text("mainSatelliteLine");
    EXPECT_TRUE(line.contains("VS-1") && line.contains("VELORAN SAMPLE 1")) << line.toStdString();
    EXPECT_TRUE(line.contains("days old")) << line.toStdString();

    TrackListModel* rows = Find<TrackListWidget>("trackList")->model();
    const int name = TrackListModel::columnOfKey("satelliteName");
    QString rowTip;
    for (int r = 0; r < rows->rowCount(); ++r)
        if (rows->data(rows->index(r, name), Qt::DisplayRole).toString() == "VS-1")
            rowTip = rows->data(rows->index(r, name), Qt::ToolTipRole).toString();
    EXPECT_TRUE(rowTip.contains("VELORAN SAMPLE 1")) << rowTip.toStdString();

    // The passes of the track list's satellites carry the same tips.
    window->showPasses();
    PassesWindow* passes = window->passesWindow();
    passes->findChild<QComboBox*>("passesScope")->setCurrentIndex(PassesWindow::kTrackList);
    const auto vs1Pass = [&]() -> const PassRow* {
        for (const PassRow& row : passes->model()->rows())
            if (row.satellite == "VS-1") return &row;
        return nullptr;
    };
    ASSERT_TRUE(WaitFor([&] { return !passes->searching() && vs1Pass() != nullptr; }));
    const int vs1Row = static_cast<int>(vs1Pass() - passes->model()->rows().data());
    EXPECT_TRUE(passes->model()
                    ->data(passes->model()->index(vs1Row, PassesModel::kSatellite), Qt::ToolTipRole)
                    .toString()
                    .contains("VELORAN SAMPLE 1"));
    passes->close();

    // Two weeks on, the sample set is past any limit: the line says so.
    Find<QSlider>("timeSlider")->setValue(14 * 24 * 60);
    Tick();
    auto* shown = Find<QLabel>("mainSatelliteLine");
    EXPECT_TRUE(shown->property("stale").toBool()) << shown->text().toStdString();
    EXPECT_TRUE(shown->text().contains("download new ones")) << shown->text().toStdString();
    Shot(window, "main-satellite-line");
    Find<QPushButton>("realTimeButton")->click();
    Sync();
}

TEST_F(Window, SatnogsImportAddsItsChannelsToTheRunningProgram) {
    ASSERT_NE(Find<QAction>("importSatnogsAction"), nullptr);
    auto* satellites = Find<QComboBox>("satellitePopUp");
    emit satellites->activated(satellites->findText("AO-7"));
    Sync();
    auto* channels = Find<QComboBox>("channelPopUp");
    ASSERT_EQ(Text("radioPanelTitle"), "Veloran: AO-7");
    EXPECT_LT(channels->findText("Mode B beacon"), 0);

    const std::string sample =
        std::string(VELORAN_RESOURCE_DIR) + "/samples/satnogs-transmitters.json";
    OnCore([sample](CoreSide& s) {
        s.ui->setChosenFile(sample);
        s.app->importSatnogs();
        s.ui->setChosenFile(std::string());
    });
    EXPECT_TRUE(WaitFor([&] { return channels->findText("Mode B beacon") >= 0; }))
        << "used at once, no restart";
    EXPECT_TRUE(Text("messageLine").startsWith("SatNOGS transmitters imported:"))
        << Text("messageLine").toStdString();
    EXPECT_TRUE(Text("messageLine").contains("channels added"));
}

// Last: quitting ends the core.
TEST_F(Window, QuittingSavesTheSettings) {
    Find<QTabWidget>("listTabs")->setCurrentIndex(1);
    ASSERT_TRUE(core->stop(2000));
    QFile file(settingsFile);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const QString text = QString::fromUtf8(file.readAll());
    EXPECT_TRUE(text.contains("main_sat_num=")) << text.toStdString();
    EXPECT_TRUE(text.contains("tracklist_tab=1"));
    EXPECT_TRUE(text.contains("trackList_string=")) << "the track list is kept";
    EXPECT_TRUE(text.contains("SO-50"));
    // Under the comma locale of this run, numbers keep their point.
    EXPECT_TRUE(text.contains("site_latitude=45.46")) << text.toStdString();
    EXPECT_FALSE(text.contains("45,46"));
    EXPECT_TRUE(text.contains("userCallSign=VE3TST")) << "the preferences were saved";
    // The one-off port of this run is not written over the stored one.
    EXPECT_FALSE(text.contains(QString::fromStdString(radioLine->path())));
}

// The handle between the map and the lower panel: where the operator leaves
// it, even with the panel folded away, is where the next start puts it.
TEST(WindowLayout, LowerPanelHeightComesBackAtTheNextStart) {
    QTemporaryDir folders;
    const std::string base = folders.path().toStdString();
    const DataPaths paths =
        DataPaths::InFolders(VELORAN_RESOURCE_DIR, base + "/data", base + "/config");
    std::string error;
    ASSERT_TRUE(SeedDataFiles(paths, &error)) << error;
    int dragged = 0;
    for (const bool again : {false, true}) {
        CoreThread core(StationOptions{}, paths);
        MainWindow window(core.bridge(), [&core](CoreAction a) { core.post(std::move(a)); });
        bool prefsShown = false;
        QObject::connect(core.bridge(), &UiBridge::windowPrefsShown, &window,
                         [&] { prefsShown = true; });
        core.start(false, false);
        window.resize(1280, 800);
        window.show();
        ASSERT_TRUE(WaitFor([&] { return prefsShown; }));
        auto* splitter = window.findChild<QSplitter*>("mapSplitter");
        auto* lower = window.findChild<QWidget*>("lowerPanel");
        ASSERT_NE(splitter, nullptr);
        ASSERT_NE(lower, nullptr);
        if (again) {
            EXPECT_EQ(window.lowerPanelHeight(), dragged);
            EXPECT_EQ(lower->height(), dragged);
        } else {
            // A first start gives the map all but what the panels need.
            const int least = window.lowerPanelHeight();
            EXPECT_EQ(least, lower->minimumSizeHint().height());
            QSplitterHandle* handle = splitter->handle(1);
            QTest::mousePress(handle, Qt::LeftButton, {}, QPoint(20, 2));
            QTest::mouseMove(handle, QPoint(20, -78));
            QTest::mouseRelease(handle, Qt::LeftButton, {}, QPoint(20, -78));
            dragged = lower->height();
            EXPECT_EQ(dragged, least + 80);
            window.setLowerPanelShown(false);
            EXPECT_EQ(window.lowerPanelHeight(), dragged);
            window.setLowerPanelShown(true);
            EXPECT_EQ(lower->height(), dragged);
            window.setLowerPanelShown(false);
        }
        window.saveWindowState();
        ASSERT_TRUE(core.stop(2000));
    }
}

}  // namespace
}  // namespace veloran

int main(int argc, char** argv) {
    ::testing::InitGoogleTest(&argc, argv);
    QApplication app(argc, argv);
    veloran::UseCNumericLocale();
    return RUN_ALL_TESTS();
}

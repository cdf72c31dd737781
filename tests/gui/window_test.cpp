// The window on the bundled data, the core on its thread, a simulated IC-910
// on a pseudo-terminal: what the operator sees and what reaches the radio.
// The timers stay off; each test ticks the core by hand and waits for the
// window to show the result.

#include <gtest/gtest.h>
#include <stdlib.h>

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDateTime>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSlider>
#include <QTabWidget>
#include <QTemporaryDir>
#include <QThread>
#include <QTimeZone>
#include <QToolButton>
#include <atomic>
#include <functional>
#include <memory>

#include "app/appcontroller.h"
#include "gui/corethread.h"
#include "gui/mainwindow.h"
#include "gui/uibridge.h"
#include "platform/numericlocale.h"
#include "platform/qtuserdefaults.h"
#include "radio/drivers.h"
#include "sim/icom_sim.h"
#include "sim/sim_pty.h"
#include "station/stationoptions.h"

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
        window->show();
        settingsFile = QString::fromStdString(paths.settingsFile);
        placesFile = QString::fromStdString(paths.placesFile);
        Tick();
    }
    static void TearDownTestSuite() {
        delete window;
        delete core;
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
    EXPECT_TRUE(text.contains("site_latitude=45.5")) << text.toStdString();
    EXPECT_FALSE(text.contains("45,5"));
    // The one-off port of this run is not written over the stored one.
    EXPECT_FALSE(text.contains(QString::fromStdString(radioLine->path())));
}

}  // namespace
}  // namespace veloran

int main(int argc, char** argv) {
    ::testing::InitGoogleTest(&argc, argv);
    QApplication app(argc, argv);
    veloran::UseCNumericLocale();
    return RUN_ALL_TESTS();
}

// The bridge: every outlet the core calls reaches the window as a signal,
// and the controls the core reads are answered from its own copy.

#include <gtest/gtest.h>

#include <QMetaMethod>
#include <functional>
#include <memory>

#include "gui/uibridge.h"

namespace veloran {
namespace {

// Counts every signal the bridge emits.
class SignalCounter : public QObject {
    Q_OBJECT
  public:
    explicit SignalCounter(UiBridge* bridge) {
        const QMetaObject* meta = bridge->metaObject();
        const QMetaMethod count = metaObject()->method(metaObject()->indexOfSlot("count()"));
        for (int i = meta->methodOffset(); i < meta->methodCount(); ++i)
            if (meta->method(i).methodType() == QMetaMethod::Signal)
                connect(bridge, meta->method(i), this, count);
    }
    int seen = 0;
  public slots:
    void count() { ++seen; }
};

struct Outlet {
    const char* name;
    std::function<void(UserInterface*, TrackListUi*)> call;
};

// A window that leaves one of these at its empty default shows nothing for
// it; each must reach the GUI thread.
TEST(Bridge, EveryOutletReachesTheWindow) {
    const SiteRec site{};
    const ViewFrame frame;
    const std::vector<Outlet> outlets = {
        {"removeAllSatelliteItems", [](auto* ui, auto*) { ui->removeAllSatelliteItems(); }},
        {"addSatelliteItem", [](auto* ui, auto*) { ui->addSatelliteItem("AO-7"); }},
        {"setKepsDateText", [](auto* ui, auto*) { ui->setKepsDateText("k"); }},
        {"setSatelliteNames",
         [](auto* ui, auto*) {
             ui->setSatelliteNames({{"SO-50", 27607, "SAUDISAT 1C (SO-50)"}});
         }},
        {"setMainSatelliteStatus",
         [](auto* ui, auto*) { ui->setMainSatelliteStatus(MainSatelliteStatus{}); }},
        {"alert", [](auto* ui, auto*) { ui->alert("t", "m", "OK"); }},
        {"beep", [](auto* ui, auto*) { ui->beep(); }},
        {"removeAllChannelItems", [](auto* ui, auto*) { ui->removeAllChannelItems(); }},
        {"addChannelItem", [](auto* ui, auto*) { ui->addChannelItem("Mode B"); }},
        {"selectChannelItem",
         [](auto* ui, auto*) {
             ui->addChannelItem("Mode B");
             ui->selectChannelItem(0);
         }},
        {"setVfoSlider", [](auto* ui, auto*) { ui->setVfoSlider(0); }},
        {"removeAllLocationItems", [](auto* ui, auto*) { ui->removeAllLocationItems(); }},
        {"addLocationItem", [](auto* ui, auto*) { ui->addLocationItem("Here"); }},
        {"showLocation", [](auto* ui, auto*) { ui->showLocation("Here", "1", "2"); }},
        {"closeLocationSheet", [](auto* ui, auto*) { ui->closeLocationSheet(); }},
        {"showSettings", [&](auto* ui, auto*) { ui->showSettings(site); }},
        {"setClockLine", [](auto* ui, auto*) { ui->setClockLine("c", false); }},
        {"setVersionLine", [](auto* ui, auto*) { ui->setVersionLine("v"); }},
        {"setMapStatus", [](auto* ui, auto*) { ui->setMapStatus("m"); }},
        {"setTransponderLine", [](auto* ui, auto*) { ui->setTransponderLine("t", true, true); }},
        {"setSatelliteFigures",
         [](auto* ui, auto*) { ui->setSatelliteFigures("a", "b", "c", "d"); }},
        {"setFlipLine", [](auto* ui, auto*) { ui->setFlipLine("Manual"); }},
        {"setRadioPanelTitle", [](auto* ui, auto*) { ui->setRadioPanelTitle("Veloran: AO-7"); }},
        {"setVfoPanel", [](auto* ui, auto*) { ui->setVfoPanel("u", "d", "ut", "dt", "ul", "dl"); }},
        {"setTrimSteppers", [](auto* ui, auto*) { ui->setTrimSteppers(0.001, 0); }},
        {"setRadioPrefsControls", [](auto* ui, auto*) { ui->setRadioPrefsControls(1, 1, 1); }},
        {"setSerialPortItems", [](auto* ui, auto*) { ui->setSerialPortItems({"/dev/ttyS0"}); }},
        {"setRadioChecked", [](auto* ui, auto*) { ui->setRadioChecked(true); }},
        {"setGatewayChecked", [](auto* ui, auto*) { ui->setGatewayChecked(true); }},
        {"setRotorChecked", [](auto* ui, auto*) { ui->setRotorChecked(true); }},
        {"setSMeter", [](auto* ui, auto*) { ui->setSMeter(5); }},
        {"setElevationControl", [](auto* ui, auto*) { ui->setElevationControl(270); }},
        {"setRotorPanel", [](auto* ui, auto*) { ui->setRotorPanel("a", "e"); }},
        {"setDebugChecked", [](auto* ui, auto*) { ui->setDebugChecked(true); }},
        {"setSpeechChecked", [](auto* ui, auto*) { ui->setSpeechChecked(true); }},
        {"setZoomButtons", [](auto* ui, auto*) { ui->setZoomButtons(true, false); }},
        {"zoomMap", [](auto* ui, auto*) { ui->zoomMap(2048, 2.0); }},
        {"showMainWindow", [](auto* ui, auto*) { ui->showMainWindow(false); }},
        {"drawViews", [&](auto* ui, auto*) { ui->drawViews(frame); }},
        {"reloadRows", [](auto*, auto* list) { list->reloadRows({}); }},
        {"deselectAllRows", [](auto*, auto* list) { list->deselectAllRows(); }},
        {"setTrackListChecked", [](auto*, auto* list) { list->setTrackListChecked(true); }},
    };
    for (const Outlet& outlet : outlets) {
        UiBridge bridge;
        SignalCounter counter(&bridge);
        outlet.call(&bridge, &bridge);
        EXPECT_GT(counter.seen, 0) << outlet.name << " does not reach the window";
    }
}

}  // namespace
}  // namespace veloran

#include "bridge_test.moc"

// The polar sky plot on screen: a square display list, rebuilt at the size
// the widget has, centred in it.
#pragma once

#include <QWidget>
#include <memory>

#include "engine/satrec.h"
#include "engine/siterec.h"
#include "gui/corethread.h"
#include "gui/displaylistpainter.h"
#include "views/skyplot.h"

namespace veloran {

class SkyWidget : public QWidget {
    Q_OBJECT
  public:
    explicit SkyWidget(QWidget* parent = nullptr);
    void setScene(const SkyPlotScene& scene);
    const DisplayList* list() const { return painter_.list(); }
    QSize sizeHint() const override { return {320, 320}; }

  protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

  private:
    void rebuild();
    SkyPlotScene scene_;
    DisplayListPainter painter_;
};

// What the sky tab shows, copied on the core thread.
struct SkySnapshot {
    bool valid = false;
    std::shared_ptr<SatRec> sat;
    SiteRec site{};
    uint32_t now = 0;
    double nowDay = 0;
    bool rotorKnown = false;  // the rotor reported its position
    double rotorAz = 0, rotorEl = 0;
};

class SkyFeed : public QObject {
    Q_OBJECT
  signals:
    void snapshot(std::shared_ptr<const SkySnapshot> snapshot);
};

// The "Sky" tab: the main satellite's current or next pass, the satellite
// now and the antenna's last target, refreshed every few seconds while shown.
class SkyTab : public SkyWidget {
    Q_OBJECT
  public:
    explicit SkyTab(CorePost post, QWidget* parent = nullptr);

  protected:
    void showEvent(QShowEvent* event) override;

  private:
    void poll();
    void show(std::shared_ptr<const SkySnapshot> snapshot);
    CorePost post_;
    std::shared_ptr<SkyFeed> feed_;
};

}  // namespace veloran

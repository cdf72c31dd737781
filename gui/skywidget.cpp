// The sky plot widget: the scene is kept, the list rebuilt when the size
// changes, so painting only strokes cached paths.

#include "gui/skywidget.h"

#include <QPaintEvent>
#include <QPainter>
#include <QTimer>
#include <algorithm>
#include <memory>

#include "app/appcontroller.h"
#include "engine/timebase.h"

namespace veloran {

SkyWidget::SkyWidget(QWidget* parent) : QWidget(parent) {
    setObjectName("skyPlot");
    setAccessibleName(tr("Sky plot"));
    setMinimumSize(160, 160);
}

void SkyWidget::setScene(const SkyPlotScene& scene) {
    scene_ = scene;
    rebuild();
}

void SkyWidget::rebuild() {
    scene_.size = static_cast<float>(std::max(100, std::min(width(), height())));
    auto list = std::make_shared<DisplayList>();
    BuildSkyPlot(&scene_, list.get());
    painter_.setList(std::move(list));
    update();
}

void SkyWidget::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    rebuild();
}

void SkyWidget::paintEvent(QPaintEvent*) {
    QPainter p(this);
    p.fillRect(rect(), palette().color(QPalette::Base));
    const QSize list = painter_.size();
    p.translate((width() - list.width()) / 2, (height() - list.height()) / 2);
    painter_.paint(&p, QRectF(QPointF(0, 0), QSizeF(list)));
}

namespace {

constexpr int kSkyPollMs = 2000;

}  // namespace

SkyTab::SkyTab(CorePost post, QWidget* parent)
    : SkyWidget(parent),
      post_(std::move(post)),
      feed_(new SkyFeed, [](SkyFeed* f) { f->deleteLater(); }) {
    setObjectName("skyTab");
    connect(feed_.get(), &SkyFeed::snapshot, this, &SkyTab::show);
    auto* timer = new QTimer(this);
    timer->setInterval(kSkyPollMs);
    connect(timer, &QTimer::timeout, this, [this] {
        if (isVisible()) poll();
    });
    timer->start();
}

void SkyTab::showEvent(QShowEvent* event) {
    SkyWidget::showEvent(event);
    poll();
}

void SkyTab::poll() {
    auto feed = feed_;
    post_([feed](CoreSide& s) {
        auto snap = std::make_shared<SkySnapshot>();
        snap->sat = std::make_shared<SatRec>();
        const int index = s.app->selectedSatelliteIndex();
        snap->valid = index >= 0 && s.app->GetSatelliteRecordByIndex(index, snap->sat.get()) != 0;
        s.app->GetSiteRec(&snap->site);
        snap->now = s.app->timeBaseSecs();
        snap->nowDay = EpochTime(snap->now);
        snap->rotorKnown = s.app->rotorPosition(&snap->rotorAz, &snap->rotorEl) != 0;
        emit feed->snapshot(std::move(snap));
    });
}

void SkyTab::show(std::shared_ptr<const SkySnapshot> snap) {
    SkyPlotScene scene;
    if (snap->valid) SkyPlotForPass(snap->sat.get(), &snap->site, snap->nowDay, snap->now, &scene);
    // The angles the steering last stored for the rotor; during a pass that
    // flips the antenna over the top they are the flipped pair.
    scene.hasTarget = snap->site.rotor_enabled != 0;
    scene.target = SkyDirection{snap->site.rotor_az, snap->site.rotor_el};
    scene.hasRotor = snap->rotorKnown;
    scene.rotor = SkyDirection{snap->rotorAz, snap->rotorEl};
    setScene(scene);
}

}  // namespace veloran

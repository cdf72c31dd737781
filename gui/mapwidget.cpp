// The world-map tab's widgets: canvas, scroll area, zoom and follow.

#include "gui/mapwidget.h"

#include <QHBoxLayout>
#include <QPaintEvent>
#include <QPainter>
#include <QScrollBar>
#include <QVBoxLayout>
#include <algorithm>

namespace veloran {

namespace {

// The night theme's veil over the map imagery: dark enough not to dazzle
// in a dark shack, light enough that the coasts still show.
constexpr double kNightDimming = 0.55;

QPalette NightPalette() {
    QPalette p;
    const QColor window(32, 32, 36), base(22, 22, 26), text(200, 200, 190);
    p.setColor(QPalette::Window, window);
    p.setColor(QPalette::WindowText, text);
    p.setColor(QPalette::Base, base);
    p.setColor(QPalette::AlternateBase, window);
    p.setColor(QPalette::Text, text);
    p.setColor(QPalette::Button, window);
    p.setColor(QPalette::ButtonText, text);
    p.setColor(QPalette::Highlight, QColor(120, 40, 40));
    p.setColor(QPalette::HighlightedText, text);
    return p;
}

}  // namespace

MapCanvas::MapCanvas(QWidget* parent) : QWidget(parent) {
    setObjectName("mapCanvas");
    setAttribute(Qt::WA_OpaquePaintEvent);
    resize(1024, 512);
}

void MapCanvas::paintEvent(QPaintEvent* event) {
    QPainter p(this);
    p.fillRect(event->rect(), palette().color(QPalette::Base));
    const QSize listSize = painter_.size();
    if (listSize.isEmpty()) return;
    painter_.paint(&p, event->rect(), static_cast<double>(width()) / listSize.width());
}

void MapCanvas::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    emit resized();
}

MapWidget::MapWidget(QWidget* parent) : QWidget(parent) {
    setObjectName("mapWidget");
    canvas_ = new MapCanvas;
    scroll_ = new QScrollArea;
    scroll_->setObjectName("mapScroll");
    scroll_->setWidget(canvas_);
    scroll_->setWidgetResizable(false);
    scroll_->setAlignment(Qt::AlignCenter);

    zoomIn_ = new QToolButton;
    zoomIn_->setObjectName("zoomin");
    zoomIn_->setText(tr("Zoom In"));
    zoomIn_->setAccessibleName(tr("Zoom in"));
    zoomOut_ = new QToolButton;
    zoomOut_->setObjectName("zoomout");
    zoomOut_->setText(tr("Zoom Out"));
    zoomOut_->setAccessibleName(tr("Zoom out"));
    // At the default width only zooming in makes sense, until the core says.
    zoomOut_->setEnabled(false);
    follow_ = new QCheckBox(tr("Follow"));
    follow_->setObjectName("followSat");
    follow_->setAccessibleName(tr("Follow the main satellite"));
    night_ = new QCheckBox(tr("Night"));
    night_->setObjectName("nightTheme");
    night_->setAccessibleName(tr("Night theme"));

    toolBar_ = new QWidget;
    auto* bar = new QHBoxLayout(toolBar_);
    bar->setContentsMargins(0, 0, 0, 0);
    bar->addWidget(zoomIn_);
    bar->addWidget(zoomOut_);
    bar->addWidget(follow_);
    bar->addStretch(1);
    bar->addWidget(night_);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(2);
    layout->addWidget(toolBar_);
    layout->addWidget(scroll_, 1);

    connect(zoomIn_, &QToolButton::clicked, this, &MapWidget::zoomInClicked);
    connect(zoomOut_, &QToolButton::clicked, this, &MapWidget::zoomOutClicked);
    connect(follow_, &QCheckBox::toggled, this, &MapWidget::followToggled);
    connect(night_, &QCheckBox::toggled, this, [this](bool on) {
        setNightTheme(on);
        emit nightThemeToggled(on);
    });
    connect(canvas_, &MapCanvas::resized, this, &MapWidget::applyPendingScroll);
    connect(scroll_->horizontalScrollBar(), &QScrollBar::valueChanged, this,
            &MapWidget::reportVisibleRect);
    connect(scroll_->verticalScrollBar(), &QScrollBar::valueChanged, this,
            &MapWidget::reportVisibleRect);
    connect(scroll_->horizontalScrollBar(), &QScrollBar::rangeChanged, this,
            &MapWidget::applyPendingScroll);
    connect(scroll_->verticalScrollBar(), &QScrollBar::rangeChanged, this,
            &MapWidget::applyPendingScroll);
}

int MapWidget::mapWidth() const {
    return canvas_->width();
}

QRectF MapWidget::visibleRect() const {
    const QSize viewport = scroll_->viewport()->size();
    const qreal w = std::min(viewport.width(), canvas_->width());
    const qreal h = std::min(viewport.height(), canvas_->height());
    const qreal x = scroll_->horizontalScrollBar()->value();
    const qreal top = scroll_->verticalScrollBar()->value();
    return QRectF(x, canvas_->height() - top - h, w, h);
}

void MapWidget::setList(std::shared_ptr<const DisplayList> list) {
    if (!list) return;
    const QSize size(static_cast<int>(list->width), static_cast<int>(list->height));
    if (!pendingCentre_ && size.width() > 0 && size != canvas_->size()) canvas_->resize(size);
    const qreal scale = list->width > 0 ? canvas_->width() / static_cast<qreal>(list->width) : 1.0;
    if (list->scrollToRect) {
        // The stored rectangle's top left corner goes to the view's top left.
        const RectF& r = list->scrollRect;
        topLeft_ = QPointF(r.x * scale, (list->height - r.y - r.height) * scale);
        pendingTopLeft_ = true;
    }
    if (list->centreOnPoint && !pendingCentre_ && !pendingTopLeft_)
        centreOn(QPointF(list->centre.x * scale, (list->height - list->centre.y) * scale));
    canvas_->painter().setList(std::move(list));
    applyPendingScroll();
    canvas_->update();
}

void MapWidget::setZoomButtons(bool zoomInEnabled, bool zoomOutEnabled) {
    zoomIn_->setEnabled(zoomInEnabled);
    zoomOut_->setEnabled(zoomOutEnabled);
}

void MapWidget::zoomMap(int width, double /*scale*/) {
    if (width <= 0) return;
    const QSize viewport = scroll_->viewport()->size();
    const qreal cx = scroll_->horizontalScrollBar()->value() +
                     std::min(viewport.width(), canvas_->width()) / 2.0;
    const qreal cy = scroll_->verticalScrollBar()->value() +
                     std::min(viewport.height(), canvas_->height()) / 2.0;
    centreFraction_ =
        QPointF(cx / std::max(1, canvas_->width()), cy / std::max(1, canvas_->height()));
    pendingCentre_ = true;
    canvas_->resize(width, width / 2);
    applyPendingScroll();
    canvas_->update();
}

void MapWidget::setFollowChecked(bool on) {
    const QSignalBlocker block(follow_);
    follow_->setChecked(on);
}

void MapWidget::setNightTheme(bool on) {
    nightTheme_ = on;
    {
        const QSignalBlocker block(night_);
        night_->setChecked(on);
    }
    setPalette(on ? NightPalette() : QPalette());
    setAutoFillBackground(on);
    canvas_->painter().setImageDimming(on ? kNightDimming : 0.0);
    canvas_->update();
}

void MapWidget::centreOn(QPointF p) {
    const QSize viewport = scroll_->viewport()->size();
    scroll_->horizontalScrollBar()->setValue(static_cast<int>(p.x() - viewport.width() / 2.0));
    scroll_->verticalScrollBar()->setValue(static_cast<int>(p.y() - viewport.height() / 2.0));
}

void MapWidget::applyPendingScroll() {
    // Until the scroll bars know the frame's size, a value would be clamped
    // to the old range: wait for their range to grow.
    QScrollBar* h = scroll_->horizontalScrollBar();
    QScrollBar* v = scroll_->verticalScrollBar();
    const QSize viewport = scroll_->viewport()->size();
    const bool ready = h->maximum() == std::max(0, canvas_->width() - viewport.width()) &&
                       v->maximum() == std::max(0, canvas_->height() - viewport.height());
    if (!ready) return;
    if (pendingCentre_) {
        pendingCentre_ = false;
        centreOn(QPointF(centreFraction_.x() * canvas_->width(),
                         centreFraction_.y() * canvas_->height()));
    }
    if (pendingTopLeft_) {
        pendingTopLeft_ = false;
        h->setValue(static_cast<int>(topLeft_.x()));
        v->setValue(static_cast<int>(topLeft_.y()));
    }
    reportVisibleRect();
}

void MapWidget::reportVisibleRect() {
    // Before the first list the frame is only a default: nothing to keep.
    if (canvas_->painter().list() == nullptr) return;
    emit visibleRectChanged(visibleRect(), canvas_->width());
}

}  // namespace veloran

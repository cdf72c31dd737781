// The horizon tab's canvas and scroll area.

#include "gui/horizonwidget.h"

#include <QPaintEvent>
#include <QPainter>
#include <QScrollBar>

#include "views/horizonview.h"

namespace veloran {

HorizonCanvas::HorizonCanvas(QWidget* parent) : QWidget(parent) {
    setObjectName("horizonCanvas");
    setAttribute(Qt::WA_OpaquePaintEvent);
    resize(static_cast<int>(kHorizonDefaultWidth), static_cast<int>(kHorizonDefaultHeight));
}

void HorizonCanvas::paintEvent(QPaintEvent* event) {
    QPainter p(this);
    p.fillRect(event->rect(), palette().color(QPalette::Base));
    painter_.paint(&p, event->rect());
}

HorizonWidget::HorizonWidget(QWidget* parent) : QScrollArea(parent) {
    setObjectName("horizonView");
    canvas_ = new HorizonCanvas;
    setWidget(canvas_);
    setWidgetResizable(false);
    setAlignment(Qt::AlignLeft | Qt::AlignTop);
    setVerticalScrollBarPolicy(Qt::ScrollBarAsNeeded);
}

void HorizonWidget::setList(std::shared_ptr<const DisplayList> list) {
    if (!list) return;
    const QSize size(static_cast<int>(list->width + 0.5f), static_cast<int>(list->height + 0.5f));
    if (size != canvas_->size()) canvas_->resize(size);
    canvas_->painter().setList(std::move(list));
    canvas_->update();
}

void HorizonWidget::setNightTheme(bool on) {
    // Lighter than the map's veil: the grey passes must still read.
    canvas_->painter().setOverallDimming(on ? 0.45 : 0.0);
    canvas_->update();
}

void HorizonWidget::resizeEvent(QResizeEvent* event) {
    QScrollArea::resizeEvent(event);
    const int scrollBar = horizontalScrollBar()->sizeHint().height();
    // Follows the tab's height down to a low floor: in a short lower panel
    // a taller timeline would scroll its horizon line, where the passes
    // start, out of sight.
    constexpr int kLeastHeight = 100;
    emit heightAvailable(std::max(
        kLeastHeight, viewport()->height() - (horizontalScrollBar()->isVisible() ? 0 : scrollBar)));
}

}  // namespace veloran

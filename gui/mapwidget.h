// The world-map tab: the map's display list in a scroll area, the zoom
// buttons, the follow switch and the night theme. The widget only shows and
// forwards: the zoom rules and the follow setting live in the core, which
// answers with setZoomButtons, zoomMap and new lists.
#pragma once

#include <QCheckBox>
#include <QRectF>
#include <QScrollArea>
#include <QToolButton>
#include <QWidget>
#include <memory>

#include "gui/displaylistpainter.h"

namespace veloran {

// The widget inside the scroll area: as large as the map frame.
class MapCanvas : public QWidget {
    Q_OBJECT
  public:
    explicit MapCanvas(QWidget* parent = nullptr);
    DisplayListPainter& painter() { return painter_; }

  signals:
    void resized();

  protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

  private:
    DisplayListPainter painter_;
};

class MapWidget : public QWidget {
    Q_OBJECT
  public:
    explicit MapWidget(QWidget* parent = nullptr);

    // The map frame's width in pixels (its height is half of it).
    int mapWidth() const;
    // The visible part of the map in map pixels with the y axis up (origin
    // at the lower left corner), as it is saved; empty before the first list.
    QRectF visibleRect() const;
    // The last list shown, null before the first.
    const DisplayList* list() const { return canvas_->painter().list(); }
    MapCanvas* canvas() const { return canvas_; }
    QScrollArea* scrollArea() const { return scroll_; }

  public slots:
    // A tick's picture: resizes the frame to the list's when no zoom is
    // pending, then scrolls to the list's rectangle or centres on its point.
    void setList(std::shared_ptr<const DisplayList> list);
    void setZoomButtons(bool zoomInEnabled, bool zoomOutEnabled);
    // The core changed the width: the frame follows at once, keeping the
    // centre of the view on the same place; the next list fills it in.
    void zoomMap(int width, double scale);
    void setFollowChecked(bool on);
    void setNightTheme(bool on);

  signals:
    void zoomInClicked();
    void zoomOutClicked();
    void followToggled(bool on);
    void nightThemeToggled(bool on);
    // The visible rectangle (y up, map pixels) and the frame width after a
    // scroll, a zoom or a resize.
    void visibleRectChanged(QRectF rect, int width);

  private:
    void applyPendingScroll();
    void centreOn(QPointF topDownPoint);
    void reportVisibleRect();

    MapCanvas* canvas_;
    QScrollArea* scroll_;
    QToolButton* zoomIn_;
    QToolButton* zoomOut_;
    QCheckBox* follow_;
    QCheckBox* night_;
    QWidget* toolBar_;
    bool nightTheme_ = false;
    // A scroll waiting for the scroll area to know its size: the point
    // (top-down map pixels) to put at the top left, or the centre's place
    // as fractions of the frame.
    bool pendingTopLeft_ = false;
    QPointF topLeft_;
    bool pendingCentre_ = false;
    QPointF centreFraction_;
};

}  // namespace veloran

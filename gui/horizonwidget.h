// The horizon tab: the eight-hour pass timeline's display list in a
// horizontal scroll area, as tall as the tab allows.
#pragma once

#include <QScrollArea>
#include <QWidget>
#include <memory>

#include "gui/displaylistpainter.h"

namespace veloran {

class HorizonCanvas : public QWidget {
    Q_OBJECT
  public:
    explicit HorizonCanvas(QWidget* parent = nullptr);
    DisplayListPainter& painter() { return painter_; }

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    DisplayListPainter painter_;
};

class HorizonWidget : public QScrollArea {
    Q_OBJECT
  public:
    explicit HorizonWidget(QWidget* parent = nullptr);
    const DisplayList* list() const { return canvas_->painter().list(); }
    HorizonCanvas* canvas() const { return canvas_; }

  public slots:
    void setList(std::shared_ptr<const DisplayList> list);
    // Night theme: the white timeline dimmed, so it does not dazzle.
    void setNightTheme(bool on);

  signals:
    // The height the timeline could fill, pixels: the core may build its
    // next list that tall, so the elevation scale uses the whole tab.
    void heightAvailable(int height);

  protected:
    void resizeEvent(QResizeEvent* event) override;

  private:
    HorizonCanvas* canvas_;
};

}  // namespace veloran

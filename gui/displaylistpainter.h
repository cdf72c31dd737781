// Paints a DisplayList with QPainter. The list's y axis grows upwards; the
// painter flips it once, when the list arrives, into QPainterPaths and pixel
// rectangles kept for every later repaint, so a paint event only strokes
// what it is given and allocates nothing on the way.
#pragma once

#include <QColor>
#include <QFont>
#include <QImage>
#include <QPainterPath>
#include <QRectF>
#include <QSize>
#include <QString>
#include <QStringList>
#include <memory>
#include <vector>

#include "views/displaylist.h"

class QPainter;

namespace veloran {

class DisplayListPainter {
  public:
    // Takes the list and builds the cached paths. A null list paints nothing.
    void setList(std::shared_ptr<const DisplayList> list);
    const DisplayList* list() const { return list_.get(); }
    // The list's frame in pixels; empty without a list.
    QSize size() const;

    // Paints the items that meet `exposed` (target pixels), the picture
    // scaled by `scale` (target width / list width; 1 normally, another
    // value only for the moment between a zoom and the next list).
    void paint(QPainter* painter, const QRectF& exposed, double scale = 1.0) const;

    // Night theme: a black veil of this opacity (0..1) over the map images.
    void setImageDimming(double alpha) { dimming_ = alpha; }
    // Night theme for a picture without imagery (the white timeline): a
    // black veil of this opacity over everything painted.
    void setOverallDimming(double alpha) { overallDimming_ = alpha; }

    // Folders searched, in order, for the images the lists name
    // ("map_1024.jpg" ...): the build tree's map folder, then
    // share/veloran/maps beside the installed program.
    static QStringList imageFolders();
    static void setImageFolders(const QStringList& folders);

  private:
    struct Cached {
        ItemKind kind;
        QColor color;
        qreal lineWidth;
        QRectF bounds;  // target pixels at scale 1, for skipping unexposed items
        QPainterPath path;
        std::vector<QRect> spans;  // Spans: whole-pixel rows, top to bottom
        QString text;
        QPointF baseline;
        QFont font;
        std::shared_ptr<const QImage> image;
    };

    std::shared_ptr<const DisplayList> list_;
    std::vector<Cached> items_;
    double dimming_ = 0.0;
    double overallDimming_ = 0.0;
};

// The image of that resource name, loaded once and shared; null when no
// folder holds it. Only the latest two images are kept, since a map at
// 8192 pixels takes 128 MB.
std::shared_ptr<const QImage> CachedImage(const std::string& name);

}  // namespace veloran

// The display-list painter: flipping and caching once, painting many times.

#include "gui/displaylistpainter.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QPainter>
#include <algorithm>
#include <deque>
#include <utility>

namespace veloran {

namespace {

// From the lower left corner of a line of text to its baseline, in ems:
// Helvetica's descender, as the SVG export places its texts.
constexpr double kDescent = 0.22;
// Painted where a map image is missing, so the rest still reads.
const QColor kMissingImageColor = QColor::fromRgbF(0.11f, 0.23f, 0.40f);

QColor ToQColor(const Color& c) {
    return QColor::fromRgbF(c.r, c.g, c.b, c.a);
}

QStringList& Folders() {
    static QStringList folders;
    if (folders.isEmpty()) {
#ifdef VELORAN_MAP_DIR
        folders << QStringLiteral(VELORAN_MAP_DIR);
#endif
        if (QCoreApplication::instance() != nullptr)
            folders << QCoreApplication::applicationDirPath() + "/../share/veloran/maps";
    }
    return folders;
}

struct ImageCache {
    std::deque<std::pair<std::string, std::shared_ptr<const QImage>>> entries;
};

ImageCache& Cache() {
    static ImageCache cache;
    return cache;
}

}  // namespace

QStringList DisplayListPainter::imageFolders() {
    return Folders();
}

void DisplayListPainter::setImageFolders(const QStringList& folders) {
    Folders() = folders;
    Cache().entries.clear();
}

std::shared_ptr<const QImage> CachedImage(const std::string& name) {
    ImageCache& cache = Cache();
    for (const auto& [key, image] : cache.entries)
        if (key == name) return image;
    std::shared_ptr<const QImage> found;
    for (const QString& folder : Folders()) {
        const QString path = QDir(folder).filePath(QString::fromStdString(name));
        if (!QFileInfo::exists(path)) continue;
        QImage image(path);
        if (image.isNull()) continue;
        // RGB32 blits straight onto the widget's backing store.
        found = std::make_shared<const QImage>(image.convertToFormat(QImage::Format_RGB32));
        break;
    }
    if (!found) return nullptr;
    cache.entries.emplace_back(name, found);
    while (cache.entries.size() > 2) cache.entries.pop_front();
    return found;
}

QSize DisplayListPainter::size() const {
    if (!list_) return QSize();
    return QSize(static_cast<int>(list_->width), static_cast<int>(list_->height));
}

void DisplayListPainter::setList(std::shared_ptr<const DisplayList> list) {
    list_ = std::move(list);
    items_.clear();
    if (!list_) return;
    const qreal h = list_->height;
    items_.reserve(list_->items.size());
    for (const DisplayItem& item : list_->items) {
        Cached c;
        c.kind = item.kind;
        c.color = ToQColor(item.color);
        c.lineWidth = item.lineWidth;
        switch (item.kind) {
            case ItemKind::Image:
                c.image = CachedImage(item.text);
                [[fallthrough]];
            case ItemKind::FillRect:
                c.bounds = QRectF(item.rect.x, h - item.rect.y - item.rect.height, item.rect.width,
                                  item.rect.height);
                break;
            case ItemKind::Stroke:
            case ItemKind::Fill: {
                // A point of the list sits on a pixel's lower left corner;
                // half a pixel in puts a one-pixel line on the pixel itself
                // instead of blurring it over two.
                const qreal dx = item.kind == ItemKind::Stroke ? 0.5 : 0.0;
                const qreal top = item.kind == ItemKind::Stroke ? h - 0.5 : h;
                for (const PathPoint& p : item.path.points) {
                    switch (p.op) {
                        case PathOp::Move:
                            c.path.moveTo(p.x + dx, top - p.y);
                            break;
                        case PathOp::Line:
                            c.path.lineTo(p.x + dx, top - p.y);
                            break;
                        case PathOp::Close:
                            c.path.closeSubpath();
                            break;
                    }
                }
                // Overlapping passes of one colour share a path: filled with
                // the non-zero rule they stay filled where they overlap.
                c.path.setFillRule(Qt::WindingFill);
                const qreal pad = std::max<qreal>(item.lineWidth, 1.0);
                c.bounds = c.path.boundingRect().adjusted(-pad, -pad, pad, pad);
                break;
            }
            case ItemKind::Spans: {
                const auto& pts = item.path.points;
                for (size_t i = 0; i + 1 < pts.size(); i += 2) {
                    const int x0 = static_cast<int>(std::min(pts[i].x, pts[i + 1].x));
                    const int x1 = static_cast<int>(std::max(pts[i].x, pts[i + 1].x));
                    const int row = static_cast<int>(h) - 1 - static_cast<int>(pts[i].y);
                    c.spans.emplace_back(x0, row, x1 - x0 + 1, 1);
                }
                std::sort(c.spans.begin(), c.spans.end(),
                          [](const QRect& a, const QRect& b) { return a.y() < b.y(); });
                QRect all;
                for (const QRect& r : c.spans) all = all.united(r);
                c.bounds = all;
                break;
            }
            case ItemKind::Text: {
                c.text = QString::fromStdString(item.text);
                c.font = QFont(QStringLiteral("Helvetica"));
                c.font.setPixelSize(std::max(1, static_cast<int>(item.fontSize + 0.5f)));
                c.baseline = QPointF(item.point.x, h - item.point.y - kDescent * item.fontSize);
                // Generous: the estimate only decides what to skip.
                const qreal w = item.fontSize * (0.7 * c.text.size() + 1.0);
                c.bounds = QRectF(c.baseline.x() - 2, c.baseline.y() - item.fontSize * 1.1, w,
                                  item.fontSize * 1.5);
                break;
            }
        }
        items_.push_back(std::move(c));
    }
}

void DisplayListPainter::paint(QPainter* painter, const QRectF& exposed, double scale) const {
    if (!list_ || scale <= 0) return;
    painter->save();
    painter->scale(scale, scale);
    const QRectF area(exposed.x() / scale, exposed.y() / scale, exposed.width() / scale,
                      exposed.height() / scale);
    for (const Cached& c : items_) {
        if (!c.bounds.intersects(area)) continue;
        switch (c.kind) {
            case ItemKind::Image:
                if (c.image) {
                    const QRectF part = c.bounds.intersected(area);
                    const qreal sx = c.image->width() / c.bounds.width();
                    const qreal sy = c.image->height() / c.bounds.height();
                    const QRectF source((part.x() - c.bounds.x()) * sx,
                                        (part.y() - c.bounds.y()) * sy, part.width() * sx,
                                        part.height() * sy);
                    painter->drawImage(part, *c.image, source);
                } else {
                    painter->fillRect(c.bounds.intersected(area), kMissingImageColor);
                }
                if (dimming_ > 0)
                    painter->fillRect(c.bounds.intersected(area),
                                      QColor::fromRgbF(0, 0, 0, static_cast<float>(dimming_)));
                break;
            case ItemKind::FillRect:
                painter->fillRect(c.bounds.intersected(area), c.color);
                break;
            case ItemKind::Stroke: {
                painter->setRenderHint(QPainter::Antialiasing, true);
                QPen pen(c.color, c.lineWidth);
                pen.setCapStyle(Qt::FlatCap);
                painter->setPen(pen);
                painter->setBrush(Qt::NoBrush);
                painter->drawPath(c.path);
                break;
            }
            case ItemKind::Fill:
                painter->setRenderHint(QPainter::Antialiasing, true);
                painter->fillPath(c.path, c.color);
                break;
            case ItemKind::Spans: {
                painter->setRenderHint(QPainter::Antialiasing, false);
                // Rows are sorted top to bottom: start at the first exposed one.
                const int top = static_cast<int>(area.top()) - 1;
                const int bottom = static_cast<int>(area.bottom()) + 1;
                auto it = std::lower_bound(c.spans.begin(), c.spans.end(), top,
                                           [](const QRect& r, int y) { return r.y() < y; });
                for (; it != c.spans.end() && it->y() <= bottom; ++it)
                    painter->fillRect(*it, c.color);
                break;
            }
            case ItemKind::Text:
                painter->setRenderHint(QPainter::Antialiasing, true);
                painter->setFont(c.font);
                painter->setPen(c.color);
                painter->drawText(c.baseline, c.text);
                break;
        }
    }
    if (overallDimming_ > 0)
        painter->fillRect(area, QColor::fromRgbF(0, 0, 0, static_cast<float>(overallDimming_)));
    painter->restore();
}

}  // namespace veloran

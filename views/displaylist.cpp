// Display list helpers and the Helvetica width estimate.

#include "views/displaylist.h"

#include <utility>

namespace veloran {

namespace {

// Helvetica advance widths for ASCII 32..126 in 1/1000 em, from Adobe's
// published AFM metrics for the font.
// clang-format off
constexpr int16_t kHelveticaWidths[95] = {
    278, 278, 355, 556, 556, 889, 667, 222, 333, 333, 389, 584, 278, 333, 278, 278,   //  !"#$%&'()*+,-./
    556, 556, 556, 556, 556, 556, 556, 556, 556, 556, 278, 278, 584, 584, 584, 556,   // 0-9 :;<=>?
    1015, 667, 667, 722, 722, 667, 611, 778, 722, 278, 500, 667, 556, 833, 722, 778,  // @A-O
    667, 778, 722, 667, 611, 722, 667, 944, 667, 667, 611, 278, 278, 278, 469, 556,   // P-Z [\]^_
    222, 556, 556, 500, 556, 556, 278, 556, 556, 222, 222, 500, 222, 833, 556, 556,   // `a-o
    556, 556, 333, 500, 278, 556, 500, 722, 500, 500, 500, 334, 260, 334, 584,        // p-z {|}~
};
// clang-format on
constexpr int16_t kUnknownWidth = 556;

}  // namespace

void DisplayList::clear() {
    items.clear();
    scrollToRect = false;
    centreOnPoint = false;
}

void DisplayList::addImage(const std::string& name, RectF rect, const std::string& cls) {
    DisplayItem item;
    item.kind = ItemKind::Image;
    item.text = name;
    item.rect = rect;
    item.cls = cls;
    items.push_back(std::move(item));
}

void DisplayList::addFillRect(RectF rect, Color color, const std::string& cls) {
    DisplayItem item;
    item.kind = ItemKind::FillRect;
    item.rect = rect;
    item.color = color;
    item.cls = cls;
    items.push_back(std::move(item));
}

void DisplayList::addStroke(Path* path, Color color, float lineWidth, const std::string& cls) {
    if (path->empty()) return;
    DisplayItem item;
    item.kind = ItemKind::Stroke;
    item.path = std::move(*path);
    path->clear();
    item.color = color;
    item.lineWidth = lineWidth;
    item.cls = cls;
    items.push_back(std::move(item));
}

void DisplayList::addFill(Path* path, Color color, const std::string& cls) {
    if (path->empty()) return;
    DisplayItem item;
    item.kind = ItemKind::Fill;
    item.path = std::move(*path);
    path->clear();
    item.color = color;
    item.cls = cls;
    items.push_back(std::move(item));
}

void DisplayList::addSpans(Path* path, Color color, const std::string& cls) {
    if (path->empty()) return;
    DisplayItem item;
    item.kind = ItemKind::Spans;
    item.path = std::move(*path);
    path->clear();
    item.color = color;
    item.cls = cls;
    items.push_back(std::move(item));
}

void DisplayList::addLabel(const MDLabel& label, float fontSize, const std::string& cls) {
    if (label.color < 0 || label.color > 3) return;
    DisplayItem item;
    item.kind = ItemKind::Text;
    item.text = label.name;
    item.point = label.point;
    item.colorCode = label.color;
    item.color = LabelColor(label.color);
    item.fontSize = fontSize;
    item.cls = cls;
    items.push_back(std::move(item));
}

Color LabelColor(int32_t code) {
    switch (code) {
        case 0:
            return {2.0f / 3.0f, 2.0f / 3.0f, 2.0f / 3.0f, 1.0f};  // light grey
        case 2:
            return {0.0f, 0.0f, 1.0f, 1.0f};
        case 3:
            return {1.0f, 0.0f, 0.0f, 1.0f};
        default:
            return {0.0f, 0.0f, 0.0f, 1.0f};
    }
}

double HelveticaEstimate::textWidth(const std::string& text, double pointSize) const {
    long units = 0;
    for (unsigned char c : text) {
        if ((c & 0xC0) == 0x80) continue;  // UTF-8 continuation byte: counted with its lead byte
        units += (c >= 32 && c <= 126) ? kHelveticaWidths[c - 32] : kUnknownWidth;
    }
    return units * pointSize / 1000.0;
}

}  // namespace veloran

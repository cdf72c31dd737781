// The display list the map and horizon builders produce: what to draw, in
// drawing order, with colours and widths, free of any window system. The Qt
// widgets and the SVG writer paint the same lists.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace veloran {

// Red, green, blue and alpha, each 0..1.
struct Color {
    float r, g, b, a;
};

struct PointF {
    float x, y;  // view pixels
};

struct RectF {
    float x, y, width, height;  // view pixels, origin at the lower left corner
};

enum class PathOp : uint8_t { Move, Line, Close };

struct PathPoint {
    PathOp op;
    float x, y;  // unused for Close
};

// A path of move/line/close steps, as a drawing framework's bezier path with
// straight segments only.
struct Path {
    std::vector<PathPoint> points;

    void moveTo(float x, float y) { points.push_back({PathOp::Move, x, y}); }
    void lineTo(float x, float y) { points.push_back({PathOp::Line, x, y}); }
    void close() { points.push_back({PathOp::Close, 0.0f, 0.0f}); }
    bool empty() const { return points.empty(); }
    void clear() { points.clear(); }
};

// A label: a satellite's or a grid mark's name at a point. Colour codes 0
// grey, 1 black, 2 blue, 3 red; a new label has code 33, which is never drawn.
struct MDLabel {
    int32_t color = 33;
    PointF point{0.0f, 0.0f};  // lower left corner of the text, view pixels
    std::string name;
};

enum class ItemKind : uint8_t {
    Image,     // the named image scaled into `rect`
    FillRect,  // `rect` filled with `color`
    Stroke,    // `path` stroked with `color` at `lineWidth`
    Fill,      // `path` filled with `color` (non-zero winding)
    Spans,     // `path` of move/line pairs along pixel rows: each pair covers
               // the whole pixels from its first to its last column on its
               // row, in `color` (a stroke one pixel wide, without the gaps
               // and half-pixel blur a stroked line leaves)
    Text,      // `text` at `point` in `fontSize` Helvetica, `color`
};

struct DisplayItem {
    ItemKind kind = ItemKind::Stroke;
    Color color{0.0f, 0.0f, 0.0f, 1.0f};
    float lineWidth = 1.0f;  // Stroke
    std::string cls;  // what the item shows ("night", "footprint", ...), for painters and tests
    Path path;        // Stroke, Fill
    RectF rect{0, 0, 0, 0};  // Image, FillRect
    PointF point{0, 0};      // Text: lower left corner of the text
    int32_t colorCode = 1;   // Text: the label's colour code
    float fontSize = 12.0f;  // Text, points (= pixels)
    std::string text;        // Text: the string; Image: the image's resource name
};

// One picture. The y axis grows upwards (the lower left corner is (0, 0)), as
// in the views the pictures come from; painters with a downward y axis flip it.
struct DisplayList {
    float width = 0.0f, height = 0.0f;  // the view's frame, pixels
    std::vector<DisplayItem> items;     // in drawing order
    bool scrollToRect = false;          // bring `scrollRect` into view
    RectF scrollRect{0, 0, 0, 0};
    bool centreOnPoint = false;  // centre the visible area on `centre`
    PointF centre{0, 0};

    void clear();
    void addImage(const std::string& name, RectF rect, const std::string& cls);
    void addFillRect(RectF rect, Color color, const std::string& cls);
    // Adds nothing for an empty path. The path is moved into the list.
    void addStroke(Path* path, Color color, float lineWidth, const std::string& cls);
    void addFill(Path* path, Color color, const std::string& cls);
    void addSpans(Path* path, Color color, const std::string& cls);
    // Labels with a colour code outside 0..3 are not drawn.
    void addLabel(const MDLabel& label, float fontSize, const std::string& cls);
};

// The label colours by code: 0 grey, 1 black, 2 blue, 3 red.
Color LabelColor(int32_t code);

// Measures the width of a text in Helvetica at a size in points. The
// application measures with its font metrics; the SVG writer estimates.
class TextMeasure {
  public:
    virtual ~TextMeasure() = default;
    // Width in pixels (one point is one pixel).
    virtual double textWidth(const std::string& text, double pointSize) const = 0;
};

// An estimate from Helvetica's published character widths (Adobe's font
// metrics, 1/1000 em); any other character counts as wide as an 'n'.
class HelveticaEstimate : public TextMeasure {
  public:
    double textWidth(const std::string& text, double pointSize) const override;
};

}  // namespace veloran

// SVG output for display lists.

#include "views/svgwriter.h"

#include <charconv>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <iterator>

namespace veloran {

namespace {

// Drawn where a map image is missing: a plain sea blue.
const Color kMissingImageColor{0.11f, 0.23f, 0.40f, 1.0f};
// From the lower left corner of a line of text to its baseline, in ems:
// Helvetica's descender.
constexpr double kDescent = 0.22;

// std::to_chars never looks at the locale, so a comma-decimal user still
// gets '.' in the file.
void AppendNumber(std::string* out, double value) {
    if (!std::isfinite(value)) value = 0.0;
    value = std::round(value * 1000.0) / 1000.0;
    if (value == 0.0) value = 0.0;  // no "-0"
    char buf[32];
    const auto result = std::to_chars(buf, buf + sizeof buf, value);
    out->append(buf, result.ptr);
}

void AppendAttribute(std::string* out, const char* name, double value) {
    out->push_back(' ');
    out->append(name);
    out->append("=\"");
    AppendNumber(out, value);
    out->push_back('"');
}

void AppendEscaped(std::string* out, const std::string& text) {
    for (unsigned char c : text) {
        switch (c) {
            case '&':
                out->append("&amp;");
                break;
            case '<':
                out->append("&lt;");
                break;
            case '>':
                out->append("&gt;");
                break;
            case '"':
                out->append("&quot;");
                break;
            case '\'':
                out->append("&apos;");
                break;
            default:
                // Control characters are not allowed in XML 1.0 text.
                if (c < 0x20 && c != '\t' && c != '\n' && c != '\r')
                    out->push_back('?');
                else
                    out->push_back(static_cast<char>(c));
        }
    }
}

void AppendColor(std::string* out, const char* name, const char* opacityName, Color c) {
    auto channel = [](float v) {
        const double clamped = std::fmin(1.0, std::fmax(0.0, std::isfinite(v) ? v : 0.0));
        return static_cast<int>(std::lround(clamped * 255.0));
    };
    char buf[16];
    std::snprintf(buf, sizeof buf, "#%02x%02x%02x", channel(c.r), channel(c.g), channel(c.b));
    out->push_back(' ');
    out->append(name);
    out->append("=\"");
    out->append(buf);
    out->push_back('"');
    if (c.a < 1.0f) AppendAttribute(out, opacityName, std::fmax(0.0, c.a));
}

void AppendClass(std::string* out, const std::string& cls) {
    if (cls.empty()) return;
    out->append(" class=\"");
    AppendEscaped(out, cls);
    out->push_back('"');
}

void AppendPathData(std::string* out, const Path& path, double height) {
    out->append(" d=\"");
    bool first = true;
    for (const PathPoint& p : path.points) {
        if (!first) out->push_back(' ');
        first = false;
        if (p.op == PathOp::Close) {
            out->push_back('Z');
            continue;
        }
        out->push_back(p.op == PathOp::Move ? 'M' : 'L');
        AppendNumber(out, p.x);
        out->push_back(' ');
        AppendNumber(out, height - p.y);
    }
    out->push_back('"');
}

// Each move/line pair on row r becomes the pixel cells from its first to
// its last column, r to r + 1 upwards.
void AppendSpanData(std::string* out, const Path& path, double height) {
    out->append(" d=\"");
    const auto& pts = path.points;
    for (size_t i = 0; i + 1 < pts.size(); i += 2) {
        const double x0 = std::fmin(pts[i].x, pts[i + 1].x), x1 = std::fmax(pts[i].x, pts[i + 1].x);
        if (i > 0) out->push_back(' ');
        out->push_back('M');
        AppendNumber(out, x0);
        out->push_back(' ');
        AppendNumber(out, height - pts[i].y - 1.0);
        out->append("h");
        AppendNumber(out, x1 - x0 + 1.0);
        out->append("v1h");
        AppendNumber(out, -(x1 - x0 + 1.0));
        out->push_back('Z');
    }
    out->push_back('"');
}

void AppendRect(std::string* out, const RectF& r, double height) {
    AppendAttribute(out, "x", r.x);
    AppendAttribute(out, "y", height - (r.y + r.height));
    AppendAttribute(out, "width", std::fmax(0.0, r.width));
    AppendAttribute(out, "height", std::fmax(0.0, r.height));
}

void AppendItem(std::string* out, const DisplayItem& item, double height,
                const SvgImageResolver& resolve) {
    switch (item.kind) {
        case ItemKind::Image: {
            const std::string href = resolve ? resolve(item.text) : std::string();
            if (href.empty()) {
                out->append("<rect");
                AppendClass(out, item.cls + " missing");
                AppendRect(out, item.rect, height);
                AppendColor(out, "fill", "fill-opacity", kMissingImageColor);
                out->append("/>\n");
                return;
            }
            out->append("<image");
            AppendClass(out, item.cls);
            AppendRect(out, item.rect, height);
            out->append(" preserveAspectRatio=\"none\" xlink:href=\"");
            AppendEscaped(out, href);
            out->append("\"/>\n");
            return;
        }
        case ItemKind::FillRect:
            out->append("<rect");
            AppendClass(out, item.cls);
            AppendRect(out, item.rect, height);
            AppendColor(out, "fill", "fill-opacity", item.color);
            out->append("/>\n");
            return;
        case ItemKind::Stroke:
            out->append("<path");
            AppendClass(out, item.cls);
            AppendPathData(out, item.path, height);
            out->append(" fill=\"none\"");
            AppendColor(out, "stroke", "stroke-opacity", item.color);
            AppendAttribute(out, "stroke-width", item.lineWidth);
            out->append("/>\n");
            return;
        case ItemKind::Fill:
            out->append("<path");
            AppendClass(out, item.cls);
            AppendPathData(out, item.path, height);
            AppendColor(out, "fill", "fill-opacity", item.color);
            out->append(" stroke=\"none\"/>\n");
            return;
        case ItemKind::Spans:
            out->append("<path");
            AppendClass(out, item.cls);
            AppendSpanData(out, item.path, height);
            AppendColor(out, "fill", "fill-opacity", item.color);
            out->append(" stroke=\"none\"/>\n");
            return;
        case ItemKind::Text:
            out->append("<text");
            AppendClass(out, item.cls);
            AppendAttribute(out, "x", item.point.x);
            AppendAttribute(out, "y", height - (item.point.y + kDescent * item.fontSize));
            out->append(" font-family=\"Helvetica, Arial, sans-serif\"");
            AppendAttribute(out, "font-size", item.fontSize);
            AppendColor(out, "fill", "fill-opacity", item.color);
            out->push_back('>');
            AppendEscaped(out, item.text);
            out->append("</text>\n");
            return;
    }
}

constexpr char kBase64[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

}  // namespace

std::string WriteSvg(const DisplayList& list, const SvgImageResolver& resolve) {
    std::string out;
    out.reserve(4096 + list.items.size() * 256);
    const double height = list.height;
    out.append("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n");
    out.append(
        "<svg xmlns=\"http://www.w3.org/2000/svg\" xmlns:xlink=\"http://www.w3.org/1999/xlink\"");
    AppendAttribute(&out, "width", list.width);
    AppendAttribute(&out, "height", list.height);
    out.append(" viewBox=\"0 0 ");
    AppendNumber(&out, list.width);
    out.push_back(' ');
    AppendNumber(&out, list.height);
    out.append("\">\n");
    for (const DisplayItem& item : list.items) AppendItem(&out, item, height, resolve);
    out.append("</svg>\n");
    return out;
}

int WriteTextFile(const std::string& path, const std::string& text) {
    FILE* f = std::fopen(path.c_str(), "wb");
    if (f == nullptr) return 0;
    const size_t written = std::fwrite(text.data(), 1, text.size(), f);
    const int closed = std::fclose(f);
    return written == text.size() && closed == 0 ? 1 : 0;
}

std::string ImageFileAsDataUri(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    if (!in) return "";
    const std::string bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    if (bytes.empty()) return "";
    const bool png = path.size() >= 4 && path.compare(path.size() - 4, 4, ".png") == 0;
    std::string out = png ? "data:image/png;base64," : "data:image/jpeg;base64,";
    out.reserve(out.size() + (bytes.size() + 2) / 3 * 4);
    size_t i = 0;
    for (; i + 2 < bytes.size(); i += 3) {
        const uint32_t v = (static_cast<unsigned char>(bytes[i]) << 16) |
                           (static_cast<unsigned char>(bytes[i + 1]) << 8) |
                           static_cast<unsigned char>(bytes[i + 2]);
        out.push_back(kBase64[(v >> 18) & 63]);
        out.push_back(kBase64[(v >> 12) & 63]);
        out.push_back(kBase64[(v >> 6) & 63]);
        out.push_back(kBase64[v & 63]);
    }
    if (i < bytes.size()) {
        uint32_t v = static_cast<unsigned char>(bytes[i]) << 16;
        if (i + 1 < bytes.size()) v |= static_cast<unsigned char>(bytes[i + 1]) << 8;
        out.push_back(kBase64[(v >> 18) & 63]);
        out.push_back(kBase64[(v >> 12) & 63]);
        out.push_back(i + 1 < bytes.size() ? kBase64[(v >> 6) & 63] : '=');
        out.push_back('=');
    }
    return out;
}

}  // namespace veloran

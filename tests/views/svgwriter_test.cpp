// SVG output: one map and one timeline written as test artefacts and read
// back, numbers with '.' under a comma locale, escaping, images.

#include "views/svgwriter.h"

#include <gtest/gtest.h>

#include <clocale>
#include <cstdio>
#include <fstream>
#include <sstream>

#include "engine/orbit.h"
#include "tests/views/viewtestutil.h"
#include "views/horizonview.h"
#include "views/map2dview.h"

namespace veloran {
namespace {

using testing::MakeSat;
using testing::ParseXml;
using testing::PlaceSat;
using testing::Utc;

std::string ReadFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    std::stringstream s;
    s << in.rdbuf();
    return s.str();
}

TEST(SvgExport, MapWrittenAndReadBack) {
    map_2D_view view;
    initWithFrame(&view, nullptr);
    setMapWidth(&view, 1024, RectF{0, 0, 0, 0}, false);
    const uint32_t now = Utc(2026, 11, 21, 12, 0);
    const double epoch = EpochTime(now);
    const char* names[] = {"AO-7", "FO-29", "SO-50", "ISS", "AO-91"};
    std::vector<std::unique_ptr<SatRec>> sats;
    for (int i = 0; i < 5; ++i) {
        sats.push_back(MakeSat(names[i], 12.5 + i * 0.7, 50.0 + 10 * i, 70.0 * i, 40.0 * i));
        OneShot(sats.back().get(), epoch);
        sats.back()->satAltitude = 500.0 + 200.0 * i;
    }
    for (int i = 1; i < 5; ++i) drawSatPath(&view, sats[i].get(), false);
    drawSatPath(&view, sats[0].get(), true);
    SiteRec site;
    std::memset(&site, 0, sizeof site);
    drawGroundTrack(&view, epoch, sats[0].get(), &site, true);
    drawSiteCross(&view, 43.7 * kDegreesToRadians, 79.2 * kDegreesToRadians, 1, false);
    DisplayList list;
    drawRect(&view, now, &list);

    const std::string svg = WriteSvg(list, [](const std::string& name) { return "maps/" + name; });
    ASSERT_EQ(WriteTextFile("views_map.svg", svg), 1);  // kept as a test artefact
    const auto doc = ParseXml(ReadFile("views_map.svg"));
    ASSERT_TRUE(doc.wellFormed) << doc.error;
    EXPECT_EQ(doc.count("svg"), 1);
    EXPECT_EQ(doc.count("image", "map"), 1);
    EXPECT_EQ(doc.count("path", "footprint"), 4);
    EXPECT_EQ(doc.count("path", "footprint main"), 1);
    EXPECT_EQ(doc.count("path", "night"), 1);
    EXPECT_EQ(doc.count("path", "track"), 1);
    EXPECT_EQ(doc.count("text", "label"), 5);
    EXPECT_NE(svg.find("xlink:href=\"maps/map_1024.jpg\""), std::string::npos);
    EXPECT_NE(svg.find("width=\"1024\" height=\"512\""), std::string::npos);
}

TEST(SvgExport, HorizonWrittenAndReadBack) {
    horizon_view view;
    initWithFrame(&view, RectF{0, 0, kHorizonDefaultWidth, kHorizonDefaultHeight}, nullptr);
    for (int i = 0; i < 4; ++i) {
        auto sat = MakeSat(i == 2 ? "R&D <2>" : "SAT", 15.0, 51.6);
        sat->satActivePass = 1;
        sat->secondsToAOS = 1800u * i;
        sat->secondsToMAXE = sat->secondsToAOS + 300;
        sat->maxElevation = 20.0 * (i + 1);
        sat->passElevCounter = 50;
        for (int k = 0; k < 50; ++k)
            sat->passElev[k] = static_cast<uint8_t>(sat->maxElevation * (k < 25 ? k : 49 - k) / 25);
        drawSat(&view, sat.get(), 5.0);
    }
    DisplayList list;
    drawRect(&view, &list);
    const std::string svg = WriteSvg(list, nullptr);
    ASSERT_EQ(WriteTextFile("views_horizon.svg", svg), 1);
    const auto doc = ParseXml(ReadFile("views_horizon.svg"));
    ASSERT_TRUE(doc.wellFormed) << doc.error;
    EXPECT_EQ(doc.count("text", "label"), 4);
    EXPECT_EQ(doc.count("text", "minute"), 16);
    EXPECT_EQ(doc.count("path", "pass low"), 2);   // 20 degrees: fill and stroke
    EXPECT_EQ(doc.count("path", "pass mid"), 2);   // 40
    EXPECT_EQ(doc.count("path", "pass high"), 2);  // 60 and 80 share one path
    EXPECT_NE(svg.find("R&amp;D &lt;2&gt;"), std::string::npos);
}

TEST(SvgExport, FlipsYAndPlacesTextAtItsBaseline) {
    DisplayList list;
    list.width = 100;
    list.height = 50;
    Path path;
    path.moveTo(10, 0);
    path.lineTo(20, 50);
    list.addStroke(&path, Color{1, 0, 0, 0.5f}, 2.0f, "line");
    MDLabel label;
    label.color = 2;
    label.point = {5, 10};
    label.name = "SO-50";
    list.addLabel(label, 10.0f, "label");
    const std::string svg = WriteSvg(list, nullptr);
    EXPECT_NE(svg.find("d=\"M10 50 L20 0\""), std::string::npos) << svg;
    EXPECT_NE(svg.find("stroke=\"#ff0000\" stroke-opacity=\"0.5\" stroke-width=\"2\""),
              std::string::npos);
    // Lower left corner at y = 10 up: baseline 2.2 higher (Helvetica's descender), 37.8 down.
    EXPECT_NE(svg.find("x=\"5\" y=\"37.8\""), std::string::npos) << svg;
    EXPECT_NE(svg.find("fill=\"#0000ff\">SO-50</text>"), std::string::npos);
}

TEST(SvgExport, SpansCoverWholePixelCells) {
    // Row 0 is the bottom pixel row; columns 2..4 are three pixels.
    DisplayList list;
    list.width = 10;
    list.height = 10;
    Path spans;
    spans.moveTo(2, 0);
    spans.lineTo(4, 0);
    spans.moveTo(0, 9);
    spans.lineTo(0, 9);
    list.addSpans(&spans, Color{0, 0, 0, 0.6f}, "night");
    const std::string svg = WriteSvg(list, nullptr);
    EXPECT_NE(svg.find("d=\"M2 9h3v1h-3Z M0 0h1v1h-1Z\""), std::string::npos) << svg;
    EXPECT_NE(svg.find("fill=\"#000000\" fill-opacity=\"0.6\" stroke=\"none\""), std::string::npos)
        << svg;
}

TEST(SvgExport, DecimalPointUnderACommaLocale) {
    const char* old = std::setlocale(LC_ALL, nullptr);
    const std::string saved = old ? old : "C";
    if (std::setlocale(LC_ALL, "de_DE.UTF-8") == nullptr) GTEST_SKIP() << "no de_DE.UTF-8 locale";
    char probe[16];
    std::snprintf(probe, sizeof probe, "%.1f", 0.5);
    DisplayList list;
    list.width = 10.5f;
    list.height = 10;
    Path path;
    path.moveTo(1.25f, 2.5f);
    path.lineTo(3, 4);
    list.addStroke(&path, Color{0, 0, 0, 0.6f}, 0.3f, "x");
    const std::string svg = WriteSvg(list, nullptr);
    std::setlocale(LC_ALL, saved.c_str());
    EXPECT_STREQ(probe, "0,5");  // the locale really uses a comma
    EXPECT_NE(svg.find("M1.25 7.5"), std::string::npos) << svg;
    EXPECT_NE(svg.find("stroke-width=\"0.3\""), std::string::npos);
    EXPECT_NE(svg.find("width=\"10.5\""), std::string::npos);
    EXPECT_EQ(svg.find("0,6"), std::string::npos);
}

TEST(SvgExport, MissingImageBecomesAPlainSea) {
    DisplayList list;
    list.width = 1024;
    list.height = 512;
    list.addImage("map_1024.jpg", RectF{0, 0, 1024, 512}, "map");
    const std::string svg = WriteSvg(list, [](const std::string&) { return std::string(); });
    const auto doc = ParseXml(svg);
    ASSERT_TRUE(doc.wellFormed) << doc.error;
    EXPECT_EQ(doc.count("image"), 0);
    EXPECT_EQ(doc.count("rect", "map missing"), 1);
}

TEST(SvgExport, ImagesEmbedAsBase64) {
    ASSERT_EQ(WriteTextFile("views_probe.jpg", "Man"), 1);
    // RFC 4648 section 10: "Man" -> "TWFu"; "Ma" -> "TWE=", "M" -> "TQ==".
    EXPECT_EQ(ImageFileAsDataUri("views_probe.jpg"), "data:image/jpeg;base64,TWFu");
    ASSERT_EQ(WriteTextFile("views_probe.png", "Ma"), 1);
    EXPECT_EQ(ImageFileAsDataUri("views_probe.png"), "data:image/png;base64,TWE=");
    ASSERT_EQ(WriteTextFile("views_probe.jpg", "M"), 1);
    EXPECT_EQ(ImageFileAsDataUri("views_probe.jpg"), "data:image/jpeg;base64,TQ==");
    EXPECT_EQ(ImageFileAsDataUri("no/such/file.jpg"), "");
    std::remove("views_probe.jpg");
    std::remove("views_probe.png");
    EXPECT_EQ(WriteTextFile("no/such/dir/x.svg", "x"), 0);
}

TEST(TextWidths, HelveticaEstimate) {
    // Adobe Helvetica AFM: I 278, S 667 -> "ISS" = 1612/1000 em; at 14 pt 22.568 px.
    HelveticaEstimate helvetica;
    EXPECT_NEAR(helvetica.textWidth("ISS", 14.0), 22.568, 1e-9);
    EXPECT_NEAR(helvetica.textWidth("000", 11.0), 3 * 0.556 * 11.0, 1e-9);
    EXPECT_DOUBLE_EQ(helvetica.textWidth("", 14.0), 0.0);
    // A two-byte UTF-8 letter counts once.
    EXPECT_NEAR(helvetica.textWidth("\xc3\xa9", 10.0), 5.56, 1e-9);
}

}  // namespace
}  // namespace veloran

// The places file, the sort order of places, and the bundled list.

#include "data/locations.h"

#include <gtest/gtest.h>

#include <clocale>
#include <cmath>
#include <set>

#include "scratch.h"

namespace veloran {
namespace {

using testing::ReadText;
using testing::Resource;
using testing::ScratchDir;
using testing::WriteText;

Location Place(const std::string& city, double lat = 0, double lon = 0) {
    Location p;
    p.city = city;
    p.state = "S";
    p.country = "C";
    p.latDegs = lat;
    p.lonDegs = lon;
    p.latRads = LocationRadians(lat);
    p.lonRads = LocationRadians(lon);
    p.fields = 5;
    return p;
}

TEST(CompareLocation, CaseIsIgnoredAndEmptyCitiesGoLast) {
    EXPECT_EQ(compareLocation(Place("toronto"), Place("Toronto")), 0);
    EXPECT_EQ(compareLocation(Place("Aachen"), Place("berlin")), -1);
    EXPECT_EQ(compareLocation(Place("berlin"), Place("Aachen")), 1);
    EXPECT_EQ(compareLocation(Place(""), Place("Zurich")), 1);
    EXPECT_EQ(compareLocation(Place("Zurich"), Place("")), -1);
}

TEST(PlacesFile, RewriteSortsAndReadsBackTheSamePlaces) {
    ScratchDir dir;
    std::vector<Location> places = {Place("zagreb", 45.815, 15.9819), Place("", 1, 2),
                                    Place("Aachen", 50.7753, 6.0839),
                                    Place("Wellington", -41.2865, 174.7762)};
    ASSERT_TRUE(RewritePlaces(dir.file("cities.dat"), &places));
    EXPECT_EQ(ReadText(dir.file("cities.dat")),
              "Aachen\tS\tC\t50.7753\t6.0839\n"
              "Wellington\tS\tC\t-41.2865\t174.7762\n"
              "zagreb\tS\tC\t45.8150\t15.9819\n"
              "\tS\tC\t1.0000\t2.0000\n");
    PlacesList back;
    ASSERT_TRUE(LoadPlaces(dir.file("cities.dat"), &back));
    ASSERT_EQ(back.places.size(), 4u);
    for (size_t i = 0; i < places.size(); ++i) {
        EXPECT_EQ(back.places[i].city, places[i].city);
        EXPECT_EQ(back.places[i].country, places[i].country);
        EXPECT_DOUBLE_EQ(back.places[i].latDegs, places[i].latDegs);
        EXPECT_DOUBLE_EQ(back.places[i].lonDegs, places[i].lonDegs);
        EXPECT_DOUBLE_EQ(back.places[i].latRads, places[i].latRads);
    }
    EXPECT_EQ(back.names[0], "Aachen S C");
    std::vector<Location> none;
    EXPECT_TRUE(RewritePlaces(dir.file("cities.dat"), &none));
    EXPECT_NE(ReadText(dir.file("cities.dat")).find("Aachen"),
              std::string::npos);  // an empty list writes nothing
}

TEST(PlacesFile, NumbersUseADecimalPointInAnyLocale) {
    const char* previous = std::setlocale(LC_ALL, nullptr);
    const std::string saved = previous != nullptr ? previous : "C";
    if (std::setlocale(LC_ALL, "de_DE.UTF-8") == nullptr)
        GTEST_SKIP() << "de_DE.UTF-8 is not installed";
    ScratchDir dir;
    std::vector<Location> places = {Place("Bern", 46.948, 7.4474)};
    const bool written = RewritePlaces(dir.file("cities.dat"), &places);
    PlacesList back;
    const bool read = LoadPlaces(dir.file("cities.dat"), &back);
    std::setlocale(LC_ALL, saved.c_str());
    ASSERT_TRUE(written);
    ASSERT_TRUE(read);
    EXPECT_EQ(ReadText(dir.file("cities.dat")), "Bern\tS\tC\t46.9480\t7.4474\n");
    EXPECT_DOUBLE_EQ(back.places[0].lonDegs, 7.4474);
}

// Whatever line ends the file was written with, and however long its lines,
// a rewrite keeps every place it read, byte for byte in its fields.
TEST(PlacesFile, RewriteKeepsEveryPlaceWhateverTheLineEnds) {
    const std::string longCity(3000, 'L');
    const std::vector<std::pair<std::string, std::string>> files = {
        {"CR LF", "Oslo\tN\tNO\t59.9139\t10.7522\r\nBern\tBE\tCH\t46.9480\t7.4474\r\n"},
        {"no final line end", "Oslo\tN\tNO\t59.9139\t10.7522\nBern\tBE\tCH\t46.9480\t7.4474"},
        {"lone CR", "Oslo\tN\tNO\t59.9139\t10.7522\rBern\tBE\tCH\t46.9480\t7.4474\r"},
        {"over-long line", longCity + "\tN\tNO\t59.9139\t10.7522\nBern\tBE\tCH\t46.9480\t7.4474\n"},
    };
    for (const auto& [what, text] : files) {
        ScratchDir dir;
        WriteText(dir.file("cities.dat"), text);
        PlacesList list;
        ASSERT_TRUE(LoadPlaces(dir.file("cities.dat"), &list)) << what;
        ASSERT_TRUE(RewritePlaces(dir.file("cities.dat"), &list.places)) << what;
        const std::string first = what == "over-long line" ? longCity : "Oslo";
        EXPECT_EQ(ReadText(dir.file("cities.dat")),
                  "Bern\tBE\tCH\t46.9480\t7.4474\n" + first + "\tN\tNO\t59.9139\t10.7522\n")
            << what;
    }
}

TEST(PlacesFile, ShortLinesYieldPartialPlacesWithoutNamesOrLights) {
    ScratchDir dir;
    WriteText(dir.file("cities.dat"), "Lonely\nHalf\tState\nFull\tS\tC\t10\t20\textra\n\n");
    PlacesList list;
    ASSERT_TRUE(LoadPlaces(dir.file("cities.dat"), &list));
    ASSERT_EQ(list.places.size(), 3u) << "the empty line is no place";
    EXPECT_EQ(list.places[0].fields, 1);
    EXPECT_EQ(list.places[1].state, "State");
    EXPECT_EQ(list.places[2].lonDegs, 20.0);
    ASSERT_EQ(list.names.size(), 1u);
    EXPECT_EQ(list.names[0], "Full S C");
    EXPECT_EQ(list.lightPoints.size(), 1u);
    EXPECT_FALSE(LoadPlaces(dir.file("missing.dat"), &list));
    EXPECT_TRUE(list.places.empty());
}

TEST(PlacesFile, LightPointsStopAt2048AndSitOnTheSphere) {
    std::string text;
    for (int i = 0; i < 2100; ++i)
        text += "P" + std::to_string(i) + "\tS\tC\t" + std::to_string(i % 90) + "\t10\n";
    ScratchDir dir;
    WriteText(dir.file("cities.dat"), text);
    PlacesList list;
    ASSERT_TRUE(LoadPlaces(dir.file("cities.dat"), &list));
    EXPECT_EQ(list.places.size(), 2100u);
    EXPECT_EQ(list.lightPoints.size(), static_cast<size_t>(kMaxLightPoints));
    for (const Point3F& p : list.lightPoints)
        EXPECT_NEAR(std::sqrt(p.x * p.x + p.y * p.y + p.z * p.z), 1.001, 1e-5);
}

TEST(PlacesFile, ChoosingAPlaceNegatesTheLongitude) {
    SiteRec site{};
    ApplyLocationToSite(Place("Cape Town", -33.9249, 18.4241), &site);
    EXPECT_STREQ(site.locationName, "Cape Town S C");
    EXPECT_DOUBLE_EQ(site.siteLatDegs, -33.9249);
    EXPECT_DOUBLE_EQ(site.siteLongDegs, -18.4241);
    EXPECT_DOUBLE_EQ(site.siteLongRads, -LocationRadians(18.4241));
}

TEST(BundledPlaces, ManyPlacesOnEveryContinent) {
    PlacesList list;
    ASSERT_TRUE(LoadPlaces(Resource("cities.dat"), &list));
    ASSERT_GE(list.places.size(), 300u);
    EXPECT_EQ(list.names.size(), list.places.size());
    std::set<std::string> countries;
    for (size_t i = 0; i < list.places.size(); ++i) {
        const Location& p = list.places[i];
        EXPECT_EQ(p.fields, 5) << p.city;
        EXPECT_LE(std::fabs(p.latDegs), 90.0) << p.city;
        EXPECT_LE(std::fabs(p.lonDegs), 180.0) << p.city;
        if (i > 0) {
            EXPECT_LE(compareLocation(list.places[i - 1], p), 0) << "sorted at " << p.city;
        }
        countries.insert(p.country);
    }
    for (const char* c :
         {"Canada", "Brazil", "United Kingdom", "Kenya", "Japan", "Australia", "Antarctica"})
        EXPECT_EQ(countries.count(c), 1u) << c;
}

}  // namespace
}  // namespace veloran

// The element-set converter and the replacement of the element-set file:
// every format gives the same records, catalogue numbers survive whole,
// short names are unique, merge and limit keep what they should, and bad
// input changes nothing.

#include <gtest/gtest.h>

#include <clocale>
#include <cmath>
#include <cstring>
#include <memory>
#include <vector>

#include "data/elementfile.h"
#include "data/kepsimport.h"
#include "data/kepssources.h"
#include "data/userdefaults.h"
#include "engine/live.h"
#include "engine/timebase.h"
#include "scratch.h"
#include "tests/support/element_sets.h"

namespace veloran {
namespace {

using testing::ReadText;
using testing::Resource;
using testing::ScratchDir;
using testing::WriteText;

// The satellites of an element-set file as the loader fills them.
std::vector<std::unique_ptr<SatRec>> LoadAll(const std::string& path, SiteRec* site) {
    std::vector<std::unique_ptr<SatRec>> sats;
    FILE* f = std::fopen(path.c_str(), "rb");
    if (f == nullptr) return sats;
    ElementFileScanner scanner(f);
    char name[kLineBufferSize];
    while (scanner.nextName(name, sizeof name)) {
        auto rec = testing::NewSatRec();
        InitSatRec(rec.get());
        std::strncpy(rec->name, name, sizeof rec->name - 1);
        if (!ReadElementLines(&scanner, rec.get())) break;
        ElementAnglesToRadians(&rec->satKep);
        CalcKepVals(rec.get(), site);
        sats.push_back(std::move(rec));
    }
    std::fclose(f);
    return sats;
}

KepsInstall Request(const ScratchDir& dir, const std::string& source, bool merge = false) {
    KepsInstall r;
    r.source = source;
    r.sourceLabel = source;
    r.keplerFile = dir.file("kepler.dat");
    r.merge = merge;
    r.namesTables = {Resource("satnames.dat")};
    return r;
}

TEST(Converter, EveryFormatLoadsTheSameRecordsAndLiveValues) {
    SiteRec site = testing::MakeSite(43.7064, 79.2442, 200.0);
    const uint32_t now = testing::Seconds(2026, 11, 20, 6, 0, 0);
    std::vector<std::vector<std::unique_ptr<SatRec>>> loaded;
    for (const char* sample :
         {"samples-short.tle", "samples-long.tle", "samples.csv", "samples.json", "samples.xml"}) {
        ScratchDir dir;
        KepsInstallResult result;
        ASSERT_TRUE(InstallElementSets(Request(dir, Resource("samples/") + sample), &result))
            << result.message;
        loaded.push_back(LoadAll(dir.file("kepler.dat"), &site));
        ASSERT_EQ(loaded.back().size(), 3u) << sample;
        auto sun = testing::LoadSun(&site);
        for (auto& rec : loaded.back())
            SatelliteCalculationsV(EpochTime(now), 1.0, rec.get(), &site, 0, now, sun.get());
    }
    for (size_t f = 1; f < loaded.size(); ++f) {
        for (size_t i = 0; i < 3; ++i) {
            const SatRec& a = *loaded[0][i];
            const SatRec& b = *loaded[f][i];
            EXPECT_STREQ(a.name, b.name);
            const KepRec& x = a.satKep;
            const KepRec& y = b.satKep;
            EXPECT_EQ(x.catalogNumber, y.catalogNumber);
            EXPECT_EQ(x.EpochYear, y.EpochYear);
            EXPECT_EQ(x.elementSet, y.elementSet);
            EXPECT_EQ(x.OrbitNum, y.OrbitNum);
            const double fields[][2] = {{x.kepsEpochDay, y.kepsEpochDay},
                                        {x.epochDay, y.epochDay},
                                        {x.inclination, y.inclination},
                                        {x.epochRAAN, y.epochRAAN},
                                        {x.eccentricity, y.eccentricity},
                                        {x.epochArgPerigee, y.epochArgPerigee},
                                        {x.epochMeanAnomaly, y.epochMeanAnomaly},
                                        {x.epochMeanMotion, y.epochMeanMotion},
                                        {x.orbitalDecay, y.orbitalDecay},
                                        {a.azimuthDegs, b.azimuthDegs},
                                        {a.elevationDegs, b.elevationDegs},
                                        {a.satRange, b.satRange},
                                        {a.satVelocity, b.satVelocity}};
            for (const auto& pair : fields) EXPECT_EQ(pair[0], pair[1]) << "file " << f;
            EXPECT_EQ(a.AOSTime, b.AOSTime);
        }
    }
    // The short names the loader sees; the six-digit number 123456 as Alpha-5.
    EXPECT_STREQ(loaded[1][0]->name, "VS-1");
    EXPECT_STREQ(loaded[1][1]->name, "SAMPLESAT");
    EXPECT_STREQ(loaded[1][2]->name, "SAMPLE-3");
}

// Alpha-5 as Space-Track defines it: A = 10 ... Z = 33, I and O skipped.
struct CatalogCase {
    int32_t number;
    const char* written;
};
class CatalogNumbers : public ::testing::TestWithParam<CatalogCase> {};

TEST_P(CatalogNumbers, WriteAndReadBack) {
    char buf[6];
    FormatCatalogNumber(GetParam().number, buf);
    EXPECT_STREQ(buf, GetParam().written);
    if (GetParam().number >= kAlpha5Limit) return;  // only the side table has it
    EXPECT_EQ(ParseCatalogNumber(buf), GetParam().number);
}

INSTANTIATE_TEST_SUITE_P(
    Alpha5, CatalogNumbers,
    ::testing::Values(CatalogCase{7530, "07530"}, CatalogCase{99999, "99999"},
                      CatalogCase{100000, "A0000"}, CatalogCase{123456, "C3456"},
                      CatalogCase{180001, "J0001"}, CatalogCase{230000, "P0000"},
                      CatalogCase{339999, "Z9999"}, CatalogCase{345678, "00000"}));

TEST(Converter, NumbersBeyondAlpha5LiveInTheSideTable) {
    ScratchDir dir;
    WriteText(dir.file("big.json"),
              R"([{"OBJECT_NAME":"BIG ONE","NORAD_CAT_ID":345678,"EPOCH":"2026-11-16T00:00:00",
                  "MEAN_MOTION":15.1,"ECCENTRICITY":0.001,"INCLINATION":97.0,
                  "RA_OF_ASC_NODE":1.0,"ARG_OF_PERICENTER":2.0,"MEAN_ANOMALY":3.0},
                 {"OBJECT_NAME":"ALPHA FIVE","NORAD_CAT_ID":"T0002","EPOCH":"2026-11-16T00:00:00",
                  "MEAN_MOTION":15.1,"ECCENTRICITY":0.001,"INCLINATION":97.0,
                  "RA_OF_ASC_NODE":1.0,"ARG_OF_PERICENTER":2.0,"MEAN_ANOMALY":3.0}])");
    KepsInstallResult result;
    ASSERT_TRUE(InstallElementSets(Request(dir, dir.file("big.json")), &result)) << result.message;
    const std::vector<OrbitElements> back = ReadInstalledSets(dir.file("kepler.dat"));
    ASSERT_EQ(back.size(), 2u);
    EXPECT_EQ(back[0].catalog, 345678);
    EXPECT_EQ(back[0].longName, "BIG ONE");
    EXPECT_EQ(back[0].shortName, "BIG-ONE");
    EXPECT_EQ(back[1].catalog, 270002);  // T = 27
    EXPECT_NE(ReadText(dir.file("kepler.dat")).find("\n1 T0002U"), std::string::npos);
}

OrbitElements Set(int32_t catalog, double day, double meanMotion) {
    OrbitElements e;
    e.catalog = catalog;
    e.longName = "SAT " + std::to_string(catalog);
    e.epochYear = 2026;
    e.epochDay = day;
    e.meanMotion = meanMotion;
    e.inclination = 51.6;
    return e;
}

TEST(Converter, WritesPointsUnderACommaLocale) {
    if (std::setlocale(LC_NUMERIC, "de_DE.UTF-8") == nullptr) GTEST_SKIP() << "no de_DE locale";
    OrbitElements e = Set(25544, 320.5, 15.5);
    const std::string two = FormatLineTwo(e);
    const std::string one = FormatLineOne(e);
    std::setlocale(LC_NUMERIC, "C");
    EXPECT_EQ(two.substr(8, 8), " 51.6000");
    EXPECT_EQ(one.substr(18, 14), "26320.50000000");
}

TEST(ShortNames, FollowTheTableThenTheLongNameAndStayUnique) {
    const struct {
        int32_t catalog;
        const char* longName;
        const char* expected;
    } cases[] = {
        {25544, "ISS (ZARYA)", "ISS"},                   // names table
        {27607, "SAUDISAT 1C (SO-50)", "SO-50"},         // table and bracket agree
        {90001, "FUNSAT 1C (FO-99)", "FO-99"},           // bracket
        {90002, "NOAA 19", "NOAA-19"},                   // blanks as hyphens
        {90003, "NOAA 19", "NOAA-19-2"},                 // taken: numbered
        {90004, "COSMOS 2545 DEB", "COSMOS"},            // first word
        {90005, "EXTRAORDINARY SATELLITE", "SAT90005"},  // nothing fits
        {90006, "BIG BIRD (BB 1)", "BIG-BIRD"},          // a bracket with a blank is no name
        {90007, "AB (ZZ-1)", "AB"},                      // the modes file knows AB
        {90008, "", "SAT90008"},                         // no name line at all
    };
    std::vector<OrbitElements> sets;
    for (const auto& c : cases) {
        OrbitElements e;
        e.catalog = c.catalog;
        e.longName = c.longName;
        sets.push_back(e);
    }
    NamesTable table;
    ASSERT_TRUE(LoadNamesTable(Resource("satnames.dat"), &table));
    AssignShortNames(&sets, table, {"AB", "SO-50"});
    for (size_t i = 0; i < sets.size(); ++i) EXPECT_EQ(sets[i].shortName, cases[i].expected);
}

std::string TwoLine(const std::vector<OrbitElements>& sets) {
    std::string text;
    for (const OrbitElements& e : sets)
        text += e.longName + "\n" + FormatLineOne(e) + "\n" + FormatLineTwo(e) + "\n";
    return text;
}

TEST(Install, MergeKeepsTheNewerEpochAndTheSetsNotInTheFile) {
    ScratchDir dir;
    WriteText(dir.file("first.txt"), TwoLine({Set(1001, 300.0, 15.0), Set(1002, 300.0, 14.0)}));
    KepsInstallResult result;
    ASSERT_TRUE(InstallElementSets(Request(dir, dir.file("first.txt")), &result));
    // 1001 older (ignored), 1002 newer (taken), 1003 new.
    WriteText(dir.file("second.txt"),
              TwoLine({Set(1001, 299.0, 13.0), Set(1002, 310.5, 13.5), Set(1003, 305.0, 12.0)}));
    ASSERT_TRUE(InstallElementSets(Request(dir, dir.file("second.txt"), true), &result));
    const std::vector<OrbitElements> sets = ReadInstalledSets(dir.file("kepler.dat"));
    ASSERT_EQ(sets.size(), 3u);
    EXPECT_EQ(sets[0].catalog, 1001);
    EXPECT_DOUBLE_EQ(sets[0].meanMotion, 15.0);
    EXPECT_EQ(sets[1].catalog, 1002);
    EXPECT_DOUBLE_EQ(sets[1].epochDay, 310.5);
    EXPECT_EQ(sets[1].shortName, "SAT-1002");  // keeps its name
    EXPECT_EQ(sets[2].catalog, 1003);
}

TEST(Install, TheLimitKeepsTheModesAndTrackListSatellitesAndSaysSo) {
    ScratchDir dir;
    std::vector<OrbitElements> many;
    for (int i = 0; i < 6; ++i) many.push_back(Set(2000 + i, 300.0, 15.0));
    WriteText(dir.file("many.txt"), TwoLine(many));
    KepsInstall request = Request(dir, dir.file("many.txt"));
    request.limit = 3;
    request.modesText = "Satellite:\tSAT-2005\nChannel:\tFM\n";
    request.trackList = {"SAT-2004"};
    KepsInstallResult result;
    ASSERT_TRUE(InstallElementSets(request, &result));
    EXPECT_EQ(result.leftOut, 3);
    EXPECT_NE(result.message.find("3 sets were left out"), std::string::npos);
    std::vector<int32_t> kept;
    for (const OrbitElements& e : ReadInstalledSets(dir.file("kepler.dat")))
        kept.push_back(e.catalog);
    EXPECT_EQ(kept, (std::vector<int32_t>{2000, 2004, 2005}));
}

TEST(Install, MalformedInputSaysWhyAndChangesNothing) {
    std::string good = ReadText(Resource("samples/samples-long.tle"));
    std::string badDigit = good;
    badDigit[good.find('\n') + 69] = badDigit[good.find('\n') + 69] == '0' ? '1' : '0';
    badDigit = badDigit.substr(0, good.find('\n', good.find('\n') + 1 + 70) + 1);  // one set only
    const struct {
        const char* label;
        std::string content;
        const char* says;
    } cases[] = {
        {"empty", "", "holds no element set"},
        {"prose", "Dear diary,\nno satellites today.\n", "holds no element set"},
        {"binary",
         std::string("\x7f"
                     "ELF\x02\x01\x01\0\0\0\xff\xfe\n\x01",
                     15),
         "holds no element set"},
        {"check digit", badDigit, "wrong check digit"},
        {"broken JSON", "[{\"NORAD_CAT_ID\": 25544,", "not valid JSON"},
        {"JSON record without number", "{\"OBJECT_NAME\": \"ISS\"}", "NORAD_CAT_ID is missing"},
        {"JSON without epoch",
         R"([{"NORAD_CAT_ID":25544,"MEAN_MOTION":15.5,"ECCENTRICITY":0.0001,"INCLINATION":51.6,
             "RA_OF_ASC_NODE":1,"ARG_OF_PERICENTER":2,"MEAN_ANOMALY":3}])",
         "EPOCH is missing"},
        {"JSON eccentricity",
         R"([{"NORAD_CAT_ID":25544,"EPOCH":"2026-11-16T00:00:00","MEAN_MOTION":15.5,
             "ECCENTRICITY":1.5,"INCLINATION":51.6,"RA_OF_ASC_NODE":1,"ARG_OF_PERICENTER":2,
             "MEAN_ANOMALY":3}])",
         "eccentricity is out of range"},
        {"broken XML", "<ndm><omm><body>", "not valid XML"},
        {"XML without OMM", "<html><body>Please log in</body></html>", "no <omm> element"},
        {"CSV without numbers", "OBJECT_NAME,EPOCH\nISS,2026-11-16T00:00:00\n",
         "no NORAD_CAT_ID column"},
        {"CSV text", "OBJECT_NAME,NORAD_CAT_ID,EPOCH,MEAN_MOTION\nISS,abc,x,y\n",
         "NORAD_CAT_ID is missing or not a number"},
    };
    for (const auto& c : cases) {
        ScratchDir dir;
        WriteText(dir.file("kepler.dat"), "OLD\n");
        WriteText(dir.file("kepler.names"), "OLD\t1\tOLD\n");
        WriteText(dir.file("input"), c.content);
        KepsInstallResult result;
        EXPECT_FALSE(InstallElementSets(Request(dir, dir.file("input")), &result)) << c.label;
        EXPECT_NE(result.message.find(c.says), std::string::npos)
            << c.label << ": " << result.message;
        EXPECT_EQ(ReadText(dir.file("kepler.dat")), "OLD\n") << c.label;
        EXPECT_EQ(ReadText(dir.file("kepler.names")), "OLD\t1\tOLD\n") << c.label;
    }
    ScratchDir dir;
    KepsInstallResult result;
    EXPECT_FALSE(InstallElementSets(Request(dir, dir.path()), &result));
    EXPECT_NE(result.message.find("not a regular file"), std::string::npos);
}

TEST(DownloadRules, HttpsSpacingAndTheStopAfterARefusal) {
    MemoryUserDefaults settings;
    const std::string url = "https://celestrak.org/NORAD/elements/gp.php?GROUP=amateur&FORMAT=tle";
    const int64_t t0 = 1'800'000'000;
    std::string why;
    EXPECT_FALSE(
        MayDownload(&settings, "http://celestrak.org/x", t0, DownloadTrigger::Forced, &why));
    EXPECT_NE(why.find("https only"), std::string::npos);
    EXPECT_TRUE(MayDownload(&settings, "http://127.0.0.1:8080/x", t0, DownloadTrigger::User, &why));

    ASSERT_TRUE(MayDownload(&settings, url, t0, DownloadTrigger::Automatic, &why));
    RecordDownloadStarted(&settings, url, t0);
    const struct {
        int64_t after;
        DownloadTrigger trigger;
        bool allowed;
    } spacing[] = {
        {60, DownloadTrigger::User, false},
        {7199, DownloadTrigger::Automatic, false},
        {60, DownloadTrigger::Forced, true},
        {7200, DownloadTrigger::Automatic, true},
    };
    for (const auto& s : spacing)
        EXPECT_EQ(MayDownload(&settings, url, t0 + s.after, s.trigger, &why), s.allowed) << s.after;
    EXPECT_TRUE(MayDownload(&settings, kAmsatKepsURL, t0 + 60, DownloadTrigger::User, &why))
        << "another address is not held back";

    // A 403 stops the automatic updates until the user downloads by hand.
    RecordDownloadAnswer(&settings, url, 403, "Forbidden");
    EXPECT_FALSE(MayDownload(&settings, url, t0 + 9000, DownloadTrigger::Automatic, &why));
    EXPECT_NE(why.find("Forbidden"), std::string::npos);
    EXPECT_TRUE(MayDownload(&settings, url, t0 + 9000, DownloadTrigger::User, &why));
    EXPECT_TRUE(MayDownload(&settings, url, t0 + 9000, DownloadTrigger::Automatic, &why));
    RecordDownloadAnswer(&settings, url, 0, "timed out");  // no answer: no stop
    EXPECT_TRUE(MayDownload(&settings, url, t0 + 9000, DownloadTrigger::Automatic, &why));
}

}  // namespace
}  // namespace veloran

// Scanning the element-set file: name lines, header lines, the checks made
// before a file replaces the element sets.

#include "data/elementfile.h"

#include <gtest/gtest.h>

#include <cstring>

#include "scratch.h"

namespace veloran {
namespace {

using testing::Resource;
using testing::ScratchDir;
using testing::WriteText;

// ISS as published, epoch 2026 day 320.5.
const char kLine1[] = "1 25544U 98067A   26320.50000000  .00012000  00000-0  10000-3 0  9995\n";
const char kLine2[] = "2 25544  51.6390 245.7770 0005800  42.2150 317.9220 15.50100000498305\n";

TEST(ElementFile, NameLinesHeadersAndTheFirstWord) {
    ScratchDir dir;
    WriteText(dir.file("k.dat"), std::string("KEPS FROM SOMEWHERE\nSO 50\n") + kLine1 + kLine2 +
                                     "ISS (ZARYA)\n" + kLine1 + kLine2 + "FROM\n");
    FILE* f = std::fopen(dir.file("k.dat").c_str(), "rb");
    ElementFileScanner scanner(f);
    char name[16];
    ASSERT_TRUE(scanner.nextName(name, sizeof name));
    EXPECT_STREQ(name, "SO");
    EXPECT_EQ(scanner.header(), "KEPS FROM SOMEWHERE\n");
    auto rec = testing::NewSatRec();
    bool decoded = false;
    ASSERT_TRUE(ReadElementLines(&scanner, rec.get(), &decoded));
    EXPECT_TRUE(decoded);
    EXPECT_EQ(rec->satKep.catalogNumber, 25544);
    // "ISS (ZARYA)" is too long for a name line; the short "FROM" line is
    // both a header and a name line.
    ASSERT_TRUE(scanner.nextName(name, sizeof name));
    EXPECT_STREQ(name, "FROM");
    EXPECT_EQ(scanner.header(), "FROM\n");
    EXPECT_FALSE(ReadElementLines(&scanner, rec.get()));
    EXPECT_FALSE(scanner.nextName(name, sizeof name));
    std::fclose(f);
}

TEST(ElementFile, CountsOnlySetsThatDecode) {
    EXPECT_EQ(CountElementSets(Resource("kepler.dat"), kMaxElementSets), 9);
    EXPECT_EQ(CountElementSets(Resource("kepler.dat"), 1), 1);
    ScratchDir dir;
    // Carriage returns end lines: the line feed after each becomes line 1.
    WriteText(dir.file("crlf.dat"), std::string("ISS\r\n") +
                                        "1 25544U 98067A   26320.50000000  .00012000  00000-0  "
                                        "10000-3 0  9995\r\n");
    EXPECT_EQ(CountElementSets(dir.file("crlf.dat"), 10), 0);
    WriteText(dir.file("html.dat"), "<html><body>Not found</body></html>\n");
    EXPECT_EQ(CountElementSets(dir.file("html.dat"), 10), 0);
    EXPECT_EQ(CountElementSets(dir.file("missing.dat"), 10), -1);
}

}  // namespace
}  // namespace veloran

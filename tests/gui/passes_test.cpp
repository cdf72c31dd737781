// The passes table's exports: CSV that a spreadsheet reads back, and an
// iCalendar file a calendar program accepts (RFC 5545: CRLF lines, UTC times).

#include <gtest/gtest.h>

#include <QRegularExpression>
#include <QStringList>

#include "gui/passesmodel.h"

namespace veloran {
namespace {

std::vector<PassRow> TwoPasses() {
    // 2026-11-21 18:30:00 UTC is 3878130600 s after 1904-01-01.
    PassRow a;
    a.satellite = "AO-7";
    a.satelliteIndex = 3;
    a.aos = 3878130600u;
    a.max = a.aos + 300;
    a.los = a.aos + 612;
    a.pass.aosAzimuthDegs = 201.25;
    a.pass.maxElevationDegs = 47.126;
    a.pass.maxAzimuthDegs = 130;
    a.pass.losAzimuthDegs = 55.5;
    a.pass.sunlitAtMax = 1;
    PassRow b = a;
    b.satellite = "ODD, NAME";
    b.aos += 7200;
    b.los += 7200;
    return {a, b};
}

TEST(PassesExport, CsvHasOneRowPerPassWithDotDecimals) {
    const QStringList lines = PassesCsv(TwoPasses()).split('\n', Qt::SkipEmptyParts);
    ASSERT_EQ(lines.size(), 3);
    EXPECT_EQ(lines[0].count(','), 11);
    EXPECT_EQ(lines[1],
              "AO-7,2026-11-21T18:30:00Z,201.3,2026-11-21T18:35:00Z,47.13,130.0,"
              "2026-11-21T18:40:12Z,55.5,612,0,1,0");
    EXPECT_TRUE(lines[2].startsWith("\"ODD, NAME\",2026-11-21T20:30:00Z,"))
        << lines[2].toStdString();
}

TEST(PassesExport, CalendarHasOneEventPerPass) {
    const QString text = PassesICalendar(TwoPasses(), 3878130000u);
    EXPECT_TRUE(text.startsWith("BEGIN:VCALENDAR\r\nVERSION:2.0\r\n"));
    EXPECT_TRUE(text.endsWith("END:VCALENDAR\r\n"));
    EXPECT_EQ(text.count("BEGIN:VEVENT\r\n"), 2);
    EXPECT_EQ(text.count("END:VEVENT\r\n"), 2);
    EXPECT_TRUE(text.contains("DTSTART:20261121T183000Z\r\nDTEND:20261121T184012Z\r\n"));
    EXPECT_TRUE(text.contains("SUMMARY:ODD\\, NAME pass\\, max 47 deg\r\n"));
    EXPECT_EQ(text.count("UID:"), 2);
    EXPECT_FALSE(text.contains(QRegularExpression("[^\r]\n")));
}

}  // namespace
}  // namespace veloran

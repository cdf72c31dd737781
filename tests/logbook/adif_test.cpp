// ADIF: the band edges, a LoTW satellite record against the field
// definitions of ADIF 3.1.4 (Date YYYYMMDD, Time HHMMSS, Number in MHz, the
// Band enumeration), the round trip field by field, malformed records, CSV.

#include "logbook/adif.h"

#include <gtest/gtest.h>

#include <map>

#include "sample.h"

namespace veloran {
namespace {

using testing::FullContact;

TEST(Adif, BandEdgesOfTheBandEnumeration) {
    // Edges from the ADIF 3.1.4 Band enumeration; both edges belong to the band.
    const struct {
        double mhz;
        const char* band;
    } cases[] = {
        {28.0, "10m"},     {29.45, "10m"},      {29.7, "10m"},     {29.71, ""},
        {50.0, "6m"},      {143.999, ""},       {144.0, "2m"},     {145.99, "2m"},
        {148.0, "2m"},     {148.001, ""},       {420.0, "70cm"},   {437.8, "70cm"},
        {450.0, "70cm"},   {1268.0, "23cm"},    {2400.05, "13cm"}, {5668.0, "6cm"},
        {10489.55, "3cm"}, {24048.0, "1.25cm"}, {1.8, "160m"},     {100.0, ""},
    };
    for (const auto& c : cases) EXPECT_EQ(AdifBand(c.mhz), c.band) << c.mhz;
}

// The fields of the first record of an .adi text, each tag's length checked
// against its data.
std::map<std::string, std::string> FirstRecord(const std::string& text) {
    std::map<std::string, std::string> fields;
    size_t pos = text.find("<EOH>");
    EXPECT_NE(pos, std::string::npos);
    while ((pos = text.find('<', pos)) != std::string::npos) {
        const size_t gt = text.find('>', pos);
        const std::string tag = text.substr(pos + 1, gt - pos - 1);
        pos = gt + 1;
        if (tag == "EOR") break;
        if (tag == "EOH") continue;
        const size_t colon = tag.find(':');
        const size_t length = std::stoul(tag.substr(colon + 1));
        fields[tag.substr(0, colon)] = text.substr(pos, length);
        pos += length;
        EXPECT_TRUE(pos >= text.size() || text[pos] == ' ') << tag << " length is wrong";
    }
    return fields;
}

TEST(Adif, SatelliteRecordCarriesWhatLotwNeeds) {
    SatNameTable names;
    names.names = {{"ISS", "ARISS"}};
    const std::string text =
        FormatAdif({FullContact()}, &names, testing::Utc(2026, 11, 22, 7, 5, 9));
    EXPECT_EQ(text.find("<ADIF_VER:5>3.1.4"), text.find('<'));
    EXPECT_NE(text.find("<CREATED_TIMESTAMP:15>20261122 070509"), std::string::npos);
    const auto f = FirstRecord(text);
    const std::map<std::string, std::string> expected = {
        {"CALL", "KH6ABC"},
        {"QSO_DATE", "20261121"},
        {"TIME_ON", "183005"},
        {"QSO_DATE_OFF", "20261121"},
        {"TIME_OFF", "183140"},
        {"PROP_MODE", "SAT"},
        {"SAT_NAME", "ARISS"},
        {"FREQ", "145.990000"},
        {"BAND", "2m"},
        {"FREQ_RX", "437.800000"},
        {"BAND_RX", "70cm"},
        {"MODE", "FM"},
        {"GRIDSQUARE", "BL11bh"},
        {"MY_GRIDSQUARE", "FN03gr"},
        {"STATION_CALLSIGN", "VE3XYZ"},
        {"RST_SENT", "59"},
        {"RST_RCVD", "57"},
        {"DXCC", "110"},
        {"LOTW_QSL_SENT", "Y"},
        {"APP_VELORAN_SATELLITE", "ISS"},
    };
    for (const auto& [name, value] : expected)
        EXPECT_EQ(f.count(name) ? f.at(name) : "(none)", value) << name;
}

TEST(Adif, ImportGivesBackWhatWasExported) {
    SatNameTable names;
    names.names = {{"ISS", "ARISS"}};
    ContactRec second = FullContact();
    second.call = "G4ABC";
    second.satellite = "RS-44";
    second.mode = "SSB";
    second.submode = "USB";
    second.uplinkMHz = 145.935123;
    second.downlinkMHz = 435.640877;
    second.endUTC = 0;
    second.name = "Åsa";  // UTF-8 travels as bytes
    const std::vector<ContactRec> original = {FullContact(), second};

    AdifImport imported;
    ParseAdif(FormatAdif(original, &names, 0), &names, &imported);
    EXPECT_TRUE(imported.messages.empty()) << imported.messages.front();
    ASSERT_EQ(imported.contacts.size(), 2u);
    for (size_t i = 0; i < 2; ++i) EXPECT_SAME_CONTACT(imported.contacts[i], original[i]);

    // Another program's file has only SAT_NAME: LoTW's name maps back to ours.
    AdifImport other;
    ParseAdif(
        "<call:6>W1AW/4<qso_date:8>20260101<time_on:4>0102<sat_name:5>ARISS<prop_mode:3>SAT<eor>",
        &names, &other);
    ASSERT_EQ(other.contacts.size(), 1u);
    EXPECT_EQ(other.contacts[0].satellite, "ISS");
    EXPECT_EQ(other.contacts[0].call, "W1AW/4");
}

TEST(Adif, MalformedRecordsAreReportedAndTheRestKept) {
    const std::string good1 = "<CALL:4>W1AW <QSO_DATE:8>20260101 <TIME_ON:6>120000 <EOR>\n";
    const std::string good2 = "<CALL:5>DL1AB <QSO_DATE:8>20260102 <TIME_ON:4>1300 <EOR>\n";
    const struct {
        const char* record;
        size_t kept;
        const char* message;
    } cases[] = {
        {"<CALL:7>G4ABC <QSO_DATE:8>20260101 <TIME_ON:4>1200 <EOR>", 2,
         "skipped: text after the data of CALL (wrong length?)"},
        {"<CALL:3>G4ABC <QSO_DATE:8>20260101 <TIME_ON:4>1200 <EOR>", 2,
         "record 2 (G4A): skipped: text after the data of CALL"},
        {"<CALL:5>G4ABC <QSO_DATE:8>20261345 <TIME_ON:4>1200 <EOR>", 2,
         "skipped: QSO_DATE '20261345' is not a date"},
        {"<CALL:5>G4ABC <QSO_DATE:8>20230229 <TIME_ON:4>1200 <EOR>", 2, "is not a date"},
        {"<CALL:5>G4ABC <QSO_DATE:8>2026-1-1 <TIME_ON:4>1200 <EOR>", 2, "is not a date"},
        {"<CALL:5>G4ABC <QSO_DATE:8>20260101 <TIME_ON:4>2460 <EOR>", 2, "TIME_ON '2460'"},
        {"<QSO_DATE:8>20260101 <TIME_ON:4>1200 <EOR>", 2, "skipped: no CALL"},
        {"<CALL:5>G4ABC <TIME_ON:4>1200 <EOR>", 2, "skipped: no QSO_DATE"},
        {"<CALL:5>G4ABC <QSO_DATE:8>20260101 <FREQ:7>14.07.0 <TIME_ON:4>1200 <EOR>", 2,
         "FREQ '14.07.0' is not a frequency"},
        {"<CALL:5>G4ABC <QSO_DATE:x>20260101 <TIME_ON:4>1200 <EOR>", 2,
         "tag <QSO_DATE:x> has no valid length"},
        {"<CALL:5>G4ABC <QSO_DATE:8>20260101 <TIME_ON:4>1200 <MY_RIG:6>IC-910 <TX_PWR:2>50 "
         "<EOR>",
         3, "record 2 (G4ABC): not kept: MY_RIG, TX_PWR"},
    };
    for (const auto& c : cases) {
        AdifImport out;
        ParseAdif("exported by hand\n<EOH>\n" + good1 + c.record + "\n" + good2, nullptr, &out);
        EXPECT_EQ(out.contacts.size(), c.kept) << c.record;
        EXPECT_EQ(out.records, 3) << c.record;
        ASSERT_EQ(out.messages.size(), 1u) << c.record;
        EXPECT_NE(out.messages[0].find(c.message), std::string::npos) << out.messages[0];
        EXPECT_EQ(out.contacts.back().call, "DL1AB");
    }

    AdifImport truncated;
    ParseAdif(good1 + "<CALL:5>G4ABC <COMMENT:200>cut short", nullptr, &truncated);
    EXPECT_EQ(truncated.contacts.size(), 1u);
    ASSERT_EQ(truncated.messages.size(), 1u);
    EXPECT_NE(truncated.messages[0].find("past the end of the file"), std::string::npos);
}

TEST(Adif, CsvQuotesWhatNeedsIt) {
    const std::string csv = FormatCsv({FullContact()});
    const std::string row = csv.substr(csv.find('\n') + 1);
    EXPECT_EQ(row.substr(0, 48), "2026-11-21T18:30:05Z,2026-11-21T18:31:40Z,KH6ABC");
    EXPECT_NE(row.find(",145.990000,437.800000,FM,,\"Keoni, \"\"Kai\"\"\",Honolulu,"),
              std::string::npos);
}

}  // namespace
}  // namespace veloran

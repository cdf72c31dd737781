// Call signs of known DXCC entities, slashed ones included, against the
// bundled table. Entities and numbers from the ARRL DXCC list.

#include "logbook/dxcc.h"

#include <gtest/gtest.h>

#include <set>

#include "../data/scratch.h"

namespace veloran {
namespace {

TEST(Dxcc, RealCallsGiveTheirEntities) {
    DxccTable table;
    int bad = -1;
    ASSERT_EQ(LoadDxccTable(testing::Resource(kDxccFileName), &table, &bad), 1);
    EXPECT_EQ(bad, 0);
    // Every current entity once: 340 in the list, ITU HQ counted apart.
    std::set<int32_t> codes;
    for (const DxccEntity& e : table.entities) EXPECT_TRUE(codes.insert(e.code).second) << e.code;
    EXPECT_GE(codes.size(), 340u);
    const struct {
        const char* call;
        const char* entity;  // null: no entity
        int code;
    } cases[] = {
        {"W1AW", "United States of America", 291},
        {"K1JT", "United States of America", 291},
        {"AA7BQ", "United States of America", 291},
        {"KH6BB", "Hawaii", 110},
        {"KL7RA", "Alaska", 6},
        {"KP4AO", "Puerto Rico", 202},
        {"KG4AW", "Guantanamo Bay", 105},
        {"KG4ABC", "United States of America", 291},
        {"VE3EJ", "Canada", 1},
        {"VY0ERC", "Canada", 1},
        {"G3VZV", "England", 223},
        {"M0ABC", "England", 223},
        {"GM4FZH", "Scotland", 279},
        {"MW0ABC", "Wales", 294},
        {"DL1ABC", "Federal Republic of Germany", 230},
        {"F6AGR", "France", 227},
        {"EA8AH", "Canary Islands", 29},
        {"JA1XYZ", "Japan", 339},
        {"VK3ABC", "Australia", 150},
        {"ZL2AB", "New Zealand", 170},
        {"UA9ABC", "Asiatic Russia", 15},
        {"RA3ABC", "European Russia", 54},
        {"UA2FF", "Kaliningrad", 126},
        {"PY2ABC", "Brazil", 108},
        {"LU1ABC", "Argentina", 100},
        {"ZS6ABC", "South Africa", 462},
        {"4X6ABC", "Israel", 336},
        {"BV2ABC", "Taiwan", 386},
        {"4U1UN", "United Nations HQ", 289},
        {"4U1ITU", "ITU HQ", 117},
        {"KC4AAA", "Antarctica", 13},
        {"RI1ANC", "Antarctica", 13},
        {"FT4YM", "Antarctica", 13},
        // Rare entities, many inside another one's block.
        {"1A0KM", "Sovereign Military Order of Malta", 246},
        {"OJ0B", "Market Reef", 167},
        {"R1FJL", "Franz Josef Land", 61},
        {"SV2ASP/A", "Mount Athos", 180},
        {"E44M", "Palestine", 510},
        {"BS7H", "Scarborough Reef", 506},
        {"BQ9P", "Pratas Island", 505},
        {"9M0S", "Spratly Islands", 247},
        {"9M2ABC", "West Malaysia", 299},
        {"JD1BMM", "Minami Torishima", 177},
        {"JD1BIA", "Ogasawara", 192},
        {"VQ9LA", "Chagos Islands", 33},
        {"FT5ZM", "Amsterdam & St. Paul Islands", 10},
        {"FT4JA", "Juan de Nova & Europa", 124},
        {"FT4TA", "Tromelin Island", 276},
        {"FT5WQ", "Crozet Island", 41},
        {"FT5XO", "Kerguelen Islands", 131},
        {"FT4GL", "Glorioso Islands", 99},
        {"FR5DX", "Reunion Island", 453},
        {"VK0EK", "Heard Island", 111},
        {"VK0AI", "Macquarie Island", 153},
        {"3D2AG", "Fiji", 176},
        {"3D2CR", "Conway Reef", 489},
        {"3D2Y", "Rotuma Island", 460},
        {"H40GC", "Temotu Province", 507},
        {"H44MS", "Solomon Islands", 185},
        {"T33T", "Banaba Island", 490},
        {"ZK3A", "Tokelau Islands", 270},
        {"FO5RK", "French Polynesia", 175},
        {"TX7T", "Marquesas Islands", 509},
        {"TX7W", "Austral Islands", 508},
        {"TX5S", "Clipperton Island", 36},
        {"TX3A", "Chesterfield Islands", 512},
        {"TI9A", "Cocos Island", 37},
        {"VP8LP", "Falkland Islands", 141},
        {"VP8ORK", "South Orkney Islands", 238},
        {"VP8STI", "South Sandwich Islands", 240},
        {"HF0ARC", "South Shetland Islands", 241},
        {"W8S", "Swains Island", 515},
        // Portable, mobile and slashed calls.
        {"G4ABC/P", "England", 223},
        {"dl1abc/m", "Federal Republic of Germany", 230},
        {"W1AW/4", "United States of America", 291},
        {"W1AW/VE3", "Canada", 1},
        {"VE3/W1AW", "Canada", 1},
        {"DL/G4ABC", "Federal Republic of Germany", 230},
        {"DL/G4ABC/P", "Federal Republic of Germany", 230},
        {"KH6/W1AW", "Hawaii", 110},
        {"VP2E/W1AW", "Anguilla", 12},
        {"MM/G4ABC", "Scotland", 279},
        {"KP5/NP3VI", "Desecheo Island", 43},
        {"W1AW/KH8", "American Samoa", 9},
        {"VP8/G4ABC", "Falkland Islands", 141},
        {"HB0/DL1ABC", "Liechtenstein", 251},
        {"OH0/DL1ABC/P", "Aland Islands", 5},
        {"JD1BMM/P", "Minami Torishima", 177},
        {"G4ABC/MM", nullptr, 0},
        {"W1AW/AM", nullptr, 0},
        {"Q1ABC", nullptr, 0},
        {"", nullptr, 0},
    };
    for (const auto& c : cases) {
        const DxccEntity* e = LookupDxcc(&table, c.call);
        if (!c.entity) {
            EXPECT_EQ(e, nullptr) << c.call << " gave " << e->name;
            continue;
        }
        ASSERT_NE(e, nullptr) << c.call;
        EXPECT_EQ(e->name, c.entity) << c.call;
        EXPECT_EQ(e->code, c.code) << c.call;
    }
}

TEST(Dxcc, AUserTableReplacesTheBundledOneAndBadLinesAreCounted) {
    testing::ScratchDir dir;
    EXPECT_EQ(DxccPath(dir.path(), "/res"), "/res/dxcc.dat");
    testing::WriteText(dir.file(kDxccFileName),
                       "# test\n999 | Testland | EU | Q[1-3] =XX1X\n"
                       "12 | no prefix column | NA\n"
                       "x | bad number | EU | A\n"
                       "13 | unclosed | EU | K[A\n");
    const std::string path = DxccPath(dir.path(), "/res");
    EXPECT_EQ(path, dir.file(kDxccFileName));
    DxccTable table;
    int bad = 0;
    ASSERT_EQ(LoadDxccTable(path, &table, &bad), 1);
    EXPECT_EQ(bad, 3);
    ASSERT_NE(LookupDxcc(&table, "Q2AB"), nullptr);
    EXPECT_EQ(LookupDxcc(&table, "XX1X")->name, "Testland");
    EXPECT_EQ(LookupDxcc(&table, "Q4AB"), nullptr);
    EXPECT_EQ(LoadDxccTable(dir.file("missing.dat"), &table, &bad), 0);
}

}  // namespace
}  // namespace veloran

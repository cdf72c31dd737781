// The line reader and the text helpers shared by the file readers.

#include "data/textline.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <string>

namespace veloran {
namespace {

FILE* MemoryFile(const std::string& text) {
    FILE* f = std::tmpfile();
    std::fwrite(text.data(), 1, text.size(), f);
    std::rewind(f);
    return f;
}

TEST(LineReader, KeepsTheTerminatorAndTreatsCarriageReturnAsALineEnd) {
    FILE* f = MemoryFile("AO-7\nFO-29\r\nlast");
    char line[kLineBufferSize];
    ASSERT_NE(my_fgets(line, sizeof line, f), nullptr);
    EXPECT_STREQ(line, "AO-7\n");
    ASSERT_NE(my_fgets(line, sizeof line, f), nullptr);
    EXPECT_STREQ(line, "FO-29\r");
    ASSERT_NE(my_fgets(line, sizeof line, f), nullptr);
    EXPECT_STREQ(line, "\n");
    // A last line without a terminator is lost.
    EXPECT_EQ(my_fgets(line, sizeof line, f), nullptr);
    EXPECT_TRUE(std::feof(f));
    std::fclose(f);
}

TEST(LineReader, ALineTooLongFailsAndReadingGoesOnAfterIt) {
    FILE* f = MemoryFile(std::string(kLineBufferSize - 1, 'x') + "tail\nnext\n");
    char line[kLineBufferSize];
    EXPECT_EQ(my_fgets(line, sizeof line, f), nullptr);
    EXPECT_FALSE(std::feof(f));
    ASSERT_NE(my_fgets(line, sizeof line, f), nullptr);
    EXPECT_STREQ(line, "tail\n");
    ASSERT_NE(my_fgets(line, sizeof line, f), nullptr);
    EXPECT_STREQ(line, "next\n");
    std::fclose(f);
}

TEST(MatchFileStr, TellsWhetherTheLineBeginsWithTheKeywordAndConsumesIt) {
    FILE* f = MemoryFile("Uplink:  \t145.9\nUp\nDownlink:");
    EXPECT_EQ(MatchFileStr(f, "Uplink:"), 1);
    EXPECT_EQ(std::ftell(f), 7);
    EXPECT_EQ(MatchFileStr(f, "Uplink:"), 0);
    std::fseek(f, 16, SEEK_SET);
    // "Up\n" stops at the line end.
    EXPECT_EQ(MatchFileStr(f, "Uplink:"), 0);
    EXPECT_EQ(std::ftell(f), 19);
    EXPECT_EQ(MatchFileStr(f, "Downlink:"), 1);
    EXPECT_EQ(MatchFileStr(f, "X"), 0);  // end of file
    std::fclose(f);
}

TEST(CleanUpLocationStr, CutsAtTheLineEndTurnsTabsIntoBlanksAndTrims) {
    char text[] = "  Fox\t 1B  \t\nignored";
    EXPECT_EQ(CleanUpLocationStr(text), 7);
    EXPECT_STREQ(text, "Fox  1B");
    char blank[] = " \t \r\n";
    EXPECT_EQ(CleanUpLocationStr(blank), 0);
    EXPECT_STREQ(blank, "");
    EXPECT_EQ(CleanUpLocationStr(nullptr), 0);
}

TEST(NonBlank, OnlyLettersAndDigitsCount) {
    EXPECT_EQ(nonBlank("-"), 0);
    EXPECT_EQ(nonBlank(" +. \t\n"), 0);
    EXPECT_EQ(nonBlank(""), 0);
    EXPECT_EQ(nonBlank(nullptr), 0);
    EXPECT_EQ(nonBlank(" 0 "), 1);
    EXPECT_EQ(nonBlank("-FM"), 1);
}

}  // namespace
}  // namespace veloran

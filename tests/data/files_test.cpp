// Folders, seeding and whole-file rewrites.

#include "data/files.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>

#include "scratch.h"

namespace veloran {
namespace {

using testing::ReadText;
using testing::ScratchDir;
using testing::WriteText;

size_t FilesIn(const std::string& dir) {
    size_t n = 0;
    for ([[maybe_unused]] const auto& entry : std::filesystem::directory_iterator(dir)) ++n;
    return n;
}

TEST(AtomicWrite, ReplacesTheFileWhole) {
    ScratchDir dir;
    const std::string path = dir.file("modes.txt");
    WriteText(path, "old\n");
    ASSERT_TRUE(AtomicWriteFile(path, [](FILE* f) { return std::fputs("new\n", f) >= 0; }));
    EXPECT_EQ(ReadText(path), "new\n");
    EXPECT_EQ(FilesIn(dir.path()), 1u);
}

TEST(AtomicWrite, KeepsThePermissionsOfTheFileItReplaces) {
    ScratchDir dir;
    const std::string path = dir.file("Veloran.conf");
    WriteText(path, "old\n");
    std::filesystem::permissions(
        path, std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
    ASSERT_TRUE(AtomicWriteFile(path, [](FILE* f) { return std::fputs("new\n", f) >= 0; }));
    EXPECT_EQ(std::filesystem::status(path).permissions() & std::filesystem::perms::all,
              std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
    ASSERT_TRUE(AtomicWriteFile(dir.file("fresh.txt"), [](FILE*) { return true; }));
    EXPECT_EQ(
        std::filesystem::status(dir.file("fresh.txt")).permissions() & std::filesystem::perms::all,
        std::filesystem::perms::owner_read | std::filesystem::perms::owner_write |
            std::filesystem::perms::group_read | std::filesystem::perms::others_read);
}

TEST(AtomicWrite, AWriteThatFailsMidwayLeavesTheOldFile) {
    ScratchDir dir;
    const std::string path = dir.file("modes.txt");
    WriteText(path, "hours of hand work\n");
    EXPECT_FALSE(AtomicWriteFile(path, [](FILE* f) {
        std::fputs("half a fi", f);
        return false;
    }));
    EXPECT_EQ(ReadText(path), "hours of hand work\n");
    EXPECT_EQ(FilesIn(dir.path()), 1u);  // no temporary left behind
    // A folder that does not exist: nothing is written anywhere.
    EXPECT_FALSE(AtomicWriteFile(dir.file("no/such/dir/x"), [](FILE*) { return true; }));
}

TEST(AtomicWrite, AFullDiskLeavesTheOldFile) {
    if (!std::filesystem::exists("/dev/full")) GTEST_SKIP() << "no /dev/full";
    // Writing through a stream on /dev/full fails at the flush, as a full
    // disk does; the rename must not happen.
    ScratchDir dir;
    const std::string path = dir.file("cities.dat");
    WriteText(path, "old\n");
    EXPECT_FALSE(AtomicWriteFile(path, [](FILE* f) {
        FILE* full = std::fopen("/dev/full", "w");
        const bool ok = std::fputs("x", full) >= 0 && std::fflush(full) == 0;
        std::fclose(full);
        std::fputs("partial", f);
        return ok;
    }));
    EXPECT_EQ(ReadText(path), "old\n");
}

TEST(DataFolders, OverridesThenEnvironmentThenXdg) {
    ScratchDir dir;
    setenv("VELORAN_DATA_DIR", "/v/data", 1);
    setenv("VELORAN_CONFIG_DIR", "/v/config", 1);
    DataPaths p = ResolveDataPaths({"/given/data", ""});
    EXPECT_EQ(p.dataDir, "/given/data");
    EXPECT_EQ(p.configDir, "/v/config");
    EXPECT_EQ(p.keplerFile, "/given/data/kepler.dat");
    EXPECT_EQ(p.userModesFile, "/v/config/org.veloran.Veloran.mode.txt");
    EXPECT_EQ(p.settingsFile, "/v/config/Veloran.conf");
    unsetenv("VELORAN_DATA_DIR");
    unsetenv("VELORAN_CONFIG_DIR");
    setenv("XDG_DATA_HOME", "/x/data", 1);
    setenv("XDG_CONFIG_HOME", "relative", 1);  // ignored: not absolute
    setenv("HOME", "/home/op", 1);
    p = ResolveDataPaths({});
    EXPECT_EQ(p.dataDir, "/x/data/veloran");
    EXPECT_EQ(p.configDir, "/home/op/.config/veloran");
    unsetenv("XDG_DATA_HOME");
    unsetenv("XDG_CONFIG_HOME");
    EXPECT_TRUE(FileExists(p.defaultModesFile));
    EXPECT_TRUE(FileExists(p.resourceDir + "/kepler.dat"));
}

TEST(DataFolders, SeedingCopiesMissingFilesAndNeverOverwrites) {
    ScratchDir dir;
    DataPaths p =
        DataPaths::InFolders(VELORAN_RESOURCE_DIR, dir.file("data/deep"), dir.file("config"));
    std::string error;
    ASSERT_TRUE(SeedDataFiles(p, &error)) << error;
    EXPECT_EQ(ReadText(p.keplerFile), ReadText(testing::Resource("kepler.dat")));
    EXPECT_EQ(ReadText(p.placesFile), ReadText(testing::Resource("cities.dat")));
    EXPECT_TRUE(std::filesystem::is_directory(p.configDir));
    EXPECT_FALSE(FileExists(p.userModesFile));  // the bundled modes are read in place

    WriteText(p.keplerFile, "the user's own sets\n");
    ASSERT_TRUE(SeedDataFiles(p, &error));
    EXPECT_EQ(ReadText(p.keplerFile), "the user's own sets\n");

    DataPaths broken =
        DataPaths::InFolders("/nonexistent/resources", dir.file("d2"), dir.file("c2"));
    EXPECT_FALSE(SeedDataFiles(broken, &error));
    EXPECT_NE(error.find("kepler.dat"), std::string::npos);
}

}  // namespace
}  // namespace veloran

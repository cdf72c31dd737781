// Replacing the element-set file by import or download: a file replaces the
// current one only when it holds element sets.

#include <gtest/gtest.h>

#include "data/elementfile.h"
#include "fakes.h"

namespace veloran {
namespace {

using testing::ControllerRig;
using testing::ElementSets;
using testing::ReadText;
using testing::WriteText;

TEST(ImportKeps, AGoodFileReplacesTheElementSetsAndReloads) {
    ControllerRig rig;
    rig.app->loadKepsAndModes();
    WriteText(rig.dir.file("new.txt"), ElementSets(3));
    rig.files.answer = rig.dir.file("new.txt");
    rig.app->importKeps();
    // Rewritten by the converter: the sets are there, under unique names.
    EXPECT_EQ(CountElementSets(rig.paths.keplerFile, 100), 3);
    EXPECT_EQ(rig.app->GetTotalSats(), 5);
    EXPECT_TRUE(rig.ui.alerts.empty());
}

TEST(ImportKeps, AFileWithoutElementSetsIsRefusedAndTheTableStays) {
    ControllerRig rig;
    rig.app->loadKepsAndModes();
    const std::string before = ReadText(rig.paths.keplerFile);
    WriteText(rig.dir.file("notes.txt"), "Dear diary,\nno satellites today.\n");
    rig.files.answer = rig.dir.file("notes.txt");
    rig.app->importKeps();
    EXPECT_EQ(ReadText(rig.paths.keplerFile), before);
    EXPECT_EQ(rig.app->GetTotalSats(), 11);
    ASSERT_EQ(rig.ui.alerts.size(), 1u);
    EXPECT_NE(rig.ui.alerts[0].find("holds no element set"), std::string::npos);
}

TEST(ImportKeps, CancelChangesNothingAndAVanishedFileJustReloads) {
    ControllerRig rig;
    rig.app->importKeps();  // cancelled
    EXPECT_EQ(rig.app->GetTotalSats(), 0);
    rig.files.answer = rig.dir.file("gone.txt");
    rig.app->importKeps();
    EXPECT_EQ(rig.app->GetTotalSats(), 11);
}

TEST(Download, GoesToASideFileAndReplacesOnlyWhenItHoldsSets) {
    ControllerRig rig;
    rig.setSite([](SiteRec* s) { s->wants_speech = 1; });
    rig.app->loadKepsAndModes();
    rig.announcer.spoken.clear();
    rig.app->startDownloadingURL();
    EXPECT_EQ(rig.downloader.url, "https://www.amsat.org/amsat/ftp/keps/current/nasa.all");
    EXPECT_EQ(rig.downloader.destination, rig.paths.downloadFile);
    EXPECT_DOUBLE_EQ(rig.downloader.timeout, 60.0);

    // A captive portal's page instead of the bulletin.
    const std::string before = ReadText(rig.paths.keplerFile);
    WriteText(rig.paths.downloadFile, "<html>Please log in</html>\n");
    rig.app->downloadDidFinish();
    EXPECT_EQ(ReadText(rig.paths.keplerFile), before);
    EXPECT_FALSE(FileExists(rig.paths.downloadFile));
    EXPECT_EQ(rig.ui.alerts.size(), 1u);
    EXPECT_TRUE(rig.announcer.spoken.empty());

    WriteText(rig.paths.downloadFile, ElementSets(4));
    rig.app->setCycleSatNum(7);
    rig.app->downloadDidFinish();
    EXPECT_EQ(CountElementSets(rig.paths.keplerFile, 100), 4);
    EXPECT_FALSE(FileExists(rig.paths.downloadFile));
    EXPECT_EQ(rig.app->GetTotalSats(), 6);
    EXPECT_EQ(rig.app->cycleSatNum(), 1);
    // Epoch 26320.5 is 16 November 12:00 UTC, five days before the fake clock.
    ASSERT_FALSE(rig.ui.notices.empty());
    EXPECT_NE(rig.ui.notices.back().find("; element sets 5 days old"), std::string::npos)
        << rig.ui.notices.back();
    ASSERT_EQ(rig.announcer.spoken.size(), 2u);
    EXPECT_EQ(rig.announcer.spoken[0], "keplerian elements downloaded from the internet.");
    EXPECT_EQ(rig.announcer.spoken[1], "Keplerian elements for 6 satellites loaded");
}

TEST(Download, FailuresAreSpokenAndLogged) {
    ControllerRig rig;
    rig.setSite([](SiteRec* s) {
        s->wants_speech = 1;
        s->debug = 1;
    });
    rig.downloader.accept = false;
    rig.app->startDownloadingURL();
    rig.downloader.accept = true;
    WriteText(rig.paths.downloadFile, "partial");
    rig.app->downloadDidFail("The request timed out.",
                             "https://www.amsat.org/amsat/ftp/keps/current/nasa.all");
    EXPECT_EQ(rig.announcer.spoken,
              (std::vector<std::string>{"keplerian element download connection failed.",
                                        "keplerian element download failed."}));
    EXPECT_FALSE(FileExists(rig.paths.downloadFile));
    const std::string log = rig.logText();
    EXPECT_NE(log.find("Download connection failed!"), std::string::npos);
    EXPECT_NE(log.find("Download failed! Error - The request timed out. https://www.amsat.org/"),
              std::string::npos);
    EXPECT_EQ(rig.app->GetTotalSats(), 0);
    // Said on the message line in words, never a dialog.
    EXPECT_EQ(rig.ui.notices, (std::vector<std::string>{
                                  "The element sets were not downloaded (The request timed out); "
                                  "the current ones are kept."}));
    EXPECT_TRUE(rig.ui.alerts.empty());
}

TEST(ImportKeps, MoreSetsThanTheTableHoldsAreFilteredAndTold) {
    ControllerRig rig;
    rig.defaults.setString(prefkeys::kTrackListString, "S1099 ");
    WriteText(rig.dir.file("many.txt"), ElementSets(1100));
    rig.files.answer = rig.dir.file("many.txt");
    rig.app->importKeps();
    EXPECT_EQ(rig.app->GetTotalSats(), 1023);  // 1021 sets, the Moon and the Sun
    ASSERT_EQ(rig.ui.alerts.size(), 1u);
    EXPECT_NE(rig.ui.alerts[0].find("79 sets were left out"), std::string::npos)
        << rig.ui.alerts[0];
    EXPECT_NE(ReadText(rig.paths.keplerFile).find("\nS1099\n"), std::string::npos)
        << "the track list's satellite is kept";
}

// The converter's every format, through the menu action: the same three
// sample satellites, told on the message line, their long names kept.
TEST(ImportKeps, EveryFormatLoadsTheSameSatellitesWithTheirNames) {
    for (const char* sample :
         {"samples-short.tle", "samples-long.tle", "samples.csv", "samples.json", "samples.xml"}) {
        ControllerRig rig;
        rig.files.answer = std::string(VELORAN_RESOURCE_DIR) + "/samples/" + sample;
        rig.app->importKeps();
        EXPECT_EQ(rig.app->GetTotalSats(), 5) << sample;  // and the Moon and the Sun
        EXPECT_TRUE(rig.ui.alerts.empty()) << sample;
        ASSERT_EQ(rig.ui.notices.size(), 1u) << sample;
        EXPECT_EQ(rig.ui.notices[0].rfind("3 element sets installed from ", 0), 0u)
            << rig.ui.notices[0];
        ASSERT_EQ(rig.ui.names.size(), 3u) << sample;
        EXPECT_EQ(rig.ui.names[2].catalog, 123456) << sample;
    }
}

TEST(Download, MergesWhenAskedAndAOneOffAddressIsNotChosen) {
    ControllerRig rig;
    rig.app->loadKepsAndModes();
    const int before = rig.app->GetTotalSats();
    const std::string one = CelestrakCatalogURL(99901, false);
    rig.app->startDownloadingURL(one, DownloadTrigger::User, true);
    EXPECT_EQ(rig.downloader.url, one);
    EXPECT_EQ(ChosenKepsURL(&rig.defaults), kKeplerDownloadURL);
    WriteText(rig.paths.downloadFile,
              ReadText(std::string(VELORAN_RESOURCE_DIR) + "/samples/samples-long.tle"));
    rig.app->downloadDidFinish();
    EXPECT_EQ(rig.app->GetTotalSats(), before + 3);
    ASSERT_FALSE(rig.ui.notices.empty());
    EXPECT_EQ(rig.ui.notices.back().rfind("Element sets downloaded: ", 0), 0u);
    EXPECT_NE(rig.ui.notices.back().find("merged"), std::string::npos);
}

TEST(Download, AnyAnswerButOkSaysAutomaticUpdatesStopped) {
    ControllerRig rig;
    rig.app->startDownloadingURL();
    rig.downloader.status = 403;
    rig.app->downloadDidFail("Forbidden", kKeplerDownloadURL);
    ASSERT_EQ(rig.ui.notices.size(), 1u);
    EXPECT_NE(rig.ui.notices[0].find("HTTP 403"), std::string::npos);
    EXPECT_NE(rig.ui.notices[0].find("Automatic updates are stopped"), std::string::npos);
    EXPECT_FALSE(rig.defaults.stringForKey(prefkeys::kKepsAutoStopped).empty());
}

TEST(Download, TheSameAddressWaitsTwoHoursUnlessForced) {
    ControllerRig rig;
    rig.app->startDownloadingURL();
    EXPECT_EQ(rig.downloader.url, kKeplerDownloadURL);
    rig.downloader.url.clear();
    rig.app->startDownloadingURL();
    EXPECT_TRUE(rig.downloader.url.empty());
    ASSERT_EQ(rig.ui.alerts.size(), 1u);
    EXPECT_NE(rig.ui.alerts[0].find("at most once every 2 hours"), std::string::npos);
    rig.app->startDownloadingURL(DownloadTrigger::Forced);
    EXPECT_EQ(rig.downloader.url, kKeplerDownloadURL);
}

}  // namespace
}  // namespace veloran

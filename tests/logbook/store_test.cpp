// The SQLite contact store: every field kept, changes, the migration of a
// first-version logbook, files it must refuse, and a writer killed at random
// points losing nothing it had saved.

#include "logbook/store.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <sqlite3.h>
#include <sys/wait.h>
#include <unistd.h>

#include "../data/scratch.h"
#include "sample.h"

namespace veloran {
namespace {

using testing::FullContact;
using testing::ScratchDir;

TEST(LogStore, KeepsEveryFieldAndChangesInPlace) {
    ScratchDir dir;
    LogStore store;
    ASSERT_EQ(OpenLogStore(LogbookPath(dir.path()), &store), 1) << store.error;
    ContactRec saved = FullContact();
    ASSERT_EQ(AddContact(&store, &saved), 1) << store.error;
    EXPECT_GT(saved.id, 0);
    CloseLogStore(&store);

    ASSERT_EQ(OpenLogStore(LogbookPath(dir.path()), &store), 1);
    std::vector<ContactRec> read;
    ASSERT_EQ(ListContacts(&store, 0, &read), 1);
    EXPECT_EQ(read[0].id, saved.id);
    EXPECT_SAME_CONTACT(read[0], saved);

    saved.rstRcvd = "55";
    saved.lotwRcvd = "Y";
    ASSERT_EQ(UpdateContact(&store, &saved), 1) << store.error;
    read.clear();
    ASSERT_EQ(FindContacts(&store, "KH6ABC", "ISS", saved.startUTC - 60, saved.startUTC, &read), 1);
    EXPECT_SAME_CONTACT(read[0], saved);
    EXPECT_EQ(ListContacts(&store, saved.startUTC + 1, &read), 0);  // --since after it

    ASSERT_EQ(DeleteContact(&store, saved.id), 1);
    EXPECT_EQ(DeleteContact(&store, saved.id), 0);
    EXPECT_EQ(UpdateContact(&store, &saved), 0);
    read.clear();
    EXPECT_EQ(ListContacts(&store, 0, &read), 0);
    CloseLogStore(&store);
}

TEST(LogStore, MigratesAFirstVersionLogbook) {
    ScratchDir dir;
    const std::string path = LogbookPath(dir.path());
    // The first logbook's table, as that release created it.
    sqlite3* db = nullptr;
    ASSERT_EQ(sqlite3_open(path.c_str(), &db), SQLITE_OK);
    ASSERT_EQ(sqlite3_exec(db,
                           "CREATE TABLE contacts (id INTEGER PRIMARY KEY, start_utc INTEGER NOT "
                           "NULL, call TEXT NOT NULL, grid TEXT NOT NULL DEFAULT '', rst_sent TEXT "
                           "NOT NULL DEFAULT '', rst_rcvd TEXT NOT NULL DEFAULT '', my_call TEXT "
                           "NOT NULL DEFAULT '', my_grid TEXT NOT NULL DEFAULT '', satellite TEXT "
                           "NOT NULL DEFAULT '', transponder TEXT NOT NULL DEFAULT '', uplink_mhz "
                           "REAL NOT NULL DEFAULT 0, downlink_mhz REAL NOT NULL DEFAULT 0, mode "
                           "TEXT NOT NULL DEFAULT '', name TEXT NOT NULL DEFAULT '', qth TEXT NOT "
                           "NULL DEFAULT '', comment TEXT NOT NULL DEFAULT '');"
                           "INSERT INTO contacts (start_utc, call, satellite, uplink_mhz, "
                           "downlink_mhz, mode) VALUES (3846767400, 'G4ABC', 'SO-50', 145.85, "
                           "436.795, 'FM');"
                           "PRAGMA user_version=1;",
                           nullptr, nullptr, nullptr),
              SQLITE_OK);
    sqlite3_close(db);

    LogStore store;
    ASSERT_EQ(OpenLogStore(path, &store), 1) << store.error;
    EXPECT_EQ(LogSchemaVersion(&store), kLogSchemaVersion);
    std::vector<ContactRec> read;
    ASSERT_EQ(ListContacts(&store, 0, &read), 1);
    EXPECT_EQ(read[0].call, "G4ABC");
    EXPECT_EQ(read[0].startUTC, 3846767400u);
    EXPECT_DOUBLE_EQ(read[0].downlinkMHz, 436.795);
    EXPECT_EQ(read[0].endUTC, 0u);
    EXPECT_EQ(read[0].country, "");
    ContactRec more = FullContact();
    EXPECT_EQ(AddContact(&store, &more), 1) << store.error;
    CloseLogStore(&store);
}

TEST(LogStore, RefusesWhatIsNotItsLogbookAndLeavesItAlone) {
    ScratchDir dir;
    const std::string notSqlite = dir.file("kepler.dat");
    testing::WriteText(notSqlite, "AO-7\n1 07530U ...\n");
    const std::string newer = dir.file("newer.sqlite");
    sqlite3* db = nullptr;
    ASSERT_EQ(sqlite3_open(newer.c_str(), &db), SQLITE_OK);
    sqlite3_exec(db, "CREATE TABLE t (x); PRAGMA user_version=99;", nullptr, nullptr, nullptr);
    sqlite3_close(db);

    const struct {
        std::string path;
        const char* message;
    } cases[] = {
        {notSqlite, "is not a logbook"},
        {newer, "newer version"},
        {dir.file("no/such/folder/logbook.sqlite"), "cannot open"},
    };
    for (const auto& c : cases) {
        LogStore store;
        EXPECT_EQ(OpenLogStore(c.path, &store), 0) << c.path;
        EXPECT_NE(store.error.find(c.message), std::string::npos) << store.error;
        EXPECT_EQ(store.db, nullptr);
    }
    EXPECT_EQ(testing::ReadText(notSqlite), "AO-7\n1 07530U ...\n");
}

// A child saves contacts one by one and reports each saved id on a pipe; it
// is killed after a varying number of saves, in the middle of whatever write
// comes next. Every reported contact must be there afterwards, intact.
TEST(LogStore, AWriterKilledMidWriteLosesNothingSaved) {
    ScratchDir dir;
    const std::string path = LogbookPath(dir.path());
    int64_t acknowledged = 0;
    for (int round = 0; round < 6; ++round) {
        int fds[2];
        ASSERT_EQ(pipe(fds), 0);
        const pid_t child = fork();
        ASSERT_GE(child, 0);
        if (child == 0) {
            close(fds[0]);
            LogStore store;
            if (!OpenLogStore(path, &store)) _exit(2);
            for (int i = 0;; ++i) {
                ContactRec c = FullContact();
                c.call = "W" + std::to_string(i % 10) + "KIL";
                c.comment.assign(static_cast<size_t>(200 + 37 * i % 3000), 'x');
                if (!AddContact(&store, &c)) _exit(3);
                if (write(fds[1], &c.id, sizeof c.id) != sizeof c.id) _exit(4);
            }
        }
        close(fds[1]);
        const int wanted = 1 + (round * 7) % 13;  // a different point each round
        int64_t id = 0;
        for (int n = 0; n < wanted; ++n) {
            ASSERT_EQ(read(fds[0], &id, sizeof id), static_cast<ssize_t>(sizeof id));
            acknowledged = std::max(acknowledged, id);
        }
        kill(child, SIGKILL);
        int status = 0;
        waitpid(child, &status, 0);
        close(fds[0]);
        ASSERT_TRUE(WIFSIGNALED(status)) << "the writer stopped by itself: " << status;

        LogStore store;
        ASSERT_EQ(OpenLogStore(path, &store), 1) << store.error;
        std::vector<ContactRec> read;
        ASSERT_GE(ListContacts(&store, 0, &read), acknowledged);
        for (int64_t want = 1; want <= acknowledged; ++want) {
            const bool found = std::any_of(read.begin(), read.end(), [&](const ContactRec& c) {
                return c.id == want && c.satellite == "ISS" && c.call.size() == 5 &&
                       c.myGrid == "FN03gr";
            });
            EXPECT_TRUE(found) << "contact " << want << " lost in round " << round;
        }
        sqlite3_stmt* st = nullptr;
        ASSERT_EQ(sqlite3_prepare_v2(store.db, "PRAGMA integrity_check", -1, &st, nullptr),
                  SQLITE_OK);
        ASSERT_EQ(sqlite3_step(st), SQLITE_ROW);
        EXPECT_STREQ(reinterpret_cast<const char*>(sqlite3_column_text(st, 0)), "ok");
        sqlite3_finalize(st);
        CloseLogStore(&store);
    }
}

}  // namespace
}  // namespace veloran

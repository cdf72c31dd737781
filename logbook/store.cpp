// The contact log in SQLite. The schema is numbered in the file's
// user_version; each step of kMigrations takes a file one version forward, so
// a logbook written by any earlier release opens and keeps its contacts.

#include "logbook/store.h"

#include <sqlite3.h>

#include <cstring>

namespace veloran {

namespace {

// Step i takes a file from version i to version i + 1, inside one transaction.
const char* const kMigrations[kLogSchemaVersion] = {
    // 1: the first logbook.
    "CREATE TABLE contacts ("
    " id INTEGER PRIMARY KEY,"
    " start_utc INTEGER NOT NULL,"
    " call TEXT NOT NULL,"
    " grid TEXT NOT NULL DEFAULT '',"
    " rst_sent TEXT NOT NULL DEFAULT '',"
    " rst_rcvd TEXT NOT NULL DEFAULT '',"
    " my_call TEXT NOT NULL DEFAULT '',"
    " my_grid TEXT NOT NULL DEFAULT '',"
    " satellite TEXT NOT NULL DEFAULT '',"
    " transponder TEXT NOT NULL DEFAULT '',"
    " uplink_mhz REAL NOT NULL DEFAULT 0,"
    " downlink_mhz REAL NOT NULL DEFAULT 0,"
    " mode TEXT NOT NULL DEFAULT '',"
    " name TEXT NOT NULL DEFAULT '',"
    " qth TEXT NOT NULL DEFAULT '',"
    " comment TEXT NOT NULL DEFAULT '');",
    // 2: end time, submode, confirmations, country, and an index for the
    // duplicate check.
    "ALTER TABLE contacts ADD COLUMN end_utc INTEGER NOT NULL DEFAULT 0;"
    "ALTER TABLE contacts ADD COLUMN submode TEXT NOT NULL DEFAULT '';"
    "ALTER TABLE contacts ADD COLUMN lotw_sent TEXT NOT NULL DEFAULT '';"
    "ALTER TABLE contacts ADD COLUMN lotw_rcvd TEXT NOT NULL DEFAULT '';"
    "ALTER TABLE contacts ADD COLUMN qsl_sent TEXT NOT NULL DEFAULT '';"
    "ALTER TABLE contacts ADD COLUMN qsl_rcvd TEXT NOT NULL DEFAULT '';"
    "ALTER TABLE contacts ADD COLUMN country TEXT NOT NULL DEFAULT '';"
    "ALTER TABLE contacts ADD COLUMN dxcc INTEGER NOT NULL DEFAULT 0;"
    "CREATE INDEX contacts_by_call ON contacts (call, satellite, start_utc);"
    "CREATE INDEX contacts_by_time ON contacts (start_utc);",
};

// The text columns in the order they follow start_utc, end_utc in kColumns.
std::string ContactRec::*const kTextFields[] = {
    &ContactRec::call,   &ContactRec::grid,   &ContactRec::rstSent,   &ContactRec::rstRcvd,
    &ContactRec::myCall, &ContactRec::myGrid, &ContactRec::satellite, &ContactRec::transponder};
std::string ContactRec::*const kMoreTextFields[] = {
    &ContactRec::mode,    &ContactRec::submode,  &ContactRec::name,     &ContactRec::qth,
    &ContactRec::comment, &ContactRec::lotwSent, &ContactRec::lotwRcvd, &ContactRec::qslSent,
    &ContactRec::qslRcvd, &ContactRec::country};

// Bound and read in this order: 2 times, kTextFields, 2 frequencies,
// kMoreTextFields, dxcc.
constexpr const char* kColumns =
    "start_utc, end_utc, call, grid, rst_sent, rst_rcvd, my_call, my_grid, satellite, "
    "transponder, uplink_mhz, downlink_mhz, mode, submode, name, qth, comment, lotw_sent, "
    "lotw_rcvd, qsl_sent, qsl_rcvd, country, dxcc";
constexpr int kColumnCount = 23;

int Fail(LogStore* store, const char* what) {
    store->error =
        std::string(what) + ": " + (store->db ? sqlite3_errmsg(store->db) : "no database");
    return 0;
}

int Exec(LogStore* store, const char* sql) {
    char* message = nullptr;
    if (sqlite3_exec(store->db, sql, nullptr, nullptr, &message) == SQLITE_OK) return 1;
    store->error = message ? message : "SQLite error";
    sqlite3_free(message);
    return 0;
}

// Runs body between BEGIN IMMEDIATE and COMMIT; rolls back when it fails.
template <typename Body>
int InTransaction(LogStore* store, Body body) {
    if (!Exec(store, "BEGIN IMMEDIATE")) return 0;
    if (body() && Exec(store, "COMMIT")) return 1;
    const std::string reason = store->error;
    sqlite3_exec(store->db, "ROLLBACK", nullptr, nullptr, nullptr);
    store->error = reason;
    return 0;
}

// Binds the contact's fields to parameters 1..kColumnCount.
void BindContact(sqlite3_stmt* st, const ContactRec* c) {
    int i = 1;
    sqlite3_bind_int64(st, i++, c->startUTC);
    sqlite3_bind_int64(st, i++, c->endUTC);
    for (auto field : kTextFields)
        sqlite3_bind_text(st, i++, (c->*field).c_str(), -1, SQLITE_TRANSIENT);
    sqlite3_bind_double(st, i++, c->uplinkMHz);
    sqlite3_bind_double(st, i++, c->downlinkMHz);
    for (auto field : kMoreTextFields)
        sqlite3_bind_text(st, i++, (c->*field).c_str(), -1, SQLITE_TRANSIENT);
    sqlite3_bind_int(st, i++, c->dxcc);
}

std::string Text(sqlite3_stmt* st, int column) {
    const unsigned char* text = sqlite3_column_text(st, column);
    return text ? reinterpret_cast<const char*>(text) : "";
}

// Reads a row of "SELECT id, <kColumns>".
void ReadContact(sqlite3_stmt* st, ContactRec* c) {
    int i = 0;
    c->id = sqlite3_column_int64(st, i++);
    c->startUTC = static_cast<uint32_t>(sqlite3_column_int64(st, i++));
    c->endUTC = static_cast<uint32_t>(sqlite3_column_int64(st, i++));
    for (auto field : kTextFields) c->*field = Text(st, i++);
    c->uplinkMHz = sqlite3_column_double(st, i++);
    c->downlinkMHz = sqlite3_column_double(st, i++);
    for (auto field : kMoreTextFields) c->*field = Text(st, i++);
    c->dxcc = sqlite3_column_int(st, i++);
}

int Insert(LogStore* store, ContactRec* contact) {
    std::string sql = std::string("INSERT INTO contacts (") + kColumns + ") VALUES (?";
    for (int i = 1; i < kColumnCount; ++i) sql += ",?";
    sql += ")";
    sqlite3_stmt* st = nullptr;
    if (sqlite3_prepare_v2(store->db, sql.c_str(), -1, &st, nullptr) != SQLITE_OK)
        return Fail(store, "cannot save the contact");
    BindContact(st, contact);
    const int rc = sqlite3_step(st);
    sqlite3_finalize(st);
    if (rc != SQLITE_DONE) return Fail(store, "cannot save the contact");
    contact->id = sqlite3_last_insert_rowid(store->db);
    return 1;
}

// Runs a SELECT of "id, <kColumns>" with the given bindings already applied
// by `bind`, appending every row.
template <typename Bind>
int Select(LogStore* store, const std::string& where, Bind bind, std::vector<ContactRec>* out) {
    const std::string sql = std::string("SELECT id, ") + kColumns + " FROM contacts WHERE " +
                            where + " ORDER BY start_utc, id";
    sqlite3_stmt* st = nullptr;
    if (sqlite3_prepare_v2(store->db, sql.c_str(), -1, &st, nullptr) != SQLITE_OK) {
        Fail(store, "cannot read the logbook");
        return -1;
    }
    bind(st);
    int count = 0, rc = 0;
    while ((rc = sqlite3_step(st)) == SQLITE_ROW) {
        ContactRec c;
        ReadContact(st, &c);
        out->push_back(std::move(c));
        ++count;
    }
    sqlite3_finalize(st);
    if (rc != SQLITE_DONE) {
        Fail(store, "cannot read the logbook");
        return -1;
    }
    return count;
}

}  // namespace

std::string LogbookPath(const std::string& dataDir) {
    return dataDir + "/" + kLogbookFileName;
}

int LogSchemaVersion(LogStore* store) {
    sqlite3_stmt* st = nullptr;
    int version = -1;
    if (sqlite3_prepare_v2(store->db, "PRAGMA user_version", -1, &st, nullptr) == SQLITE_OK &&
        sqlite3_step(st) == SQLITE_ROW)
        version = sqlite3_column_int(st, 0);
    sqlite3_finalize(st);
    return version;
}

int OpenLogStore(const std::string& path, LogStore* store) {
    CloseLogStore(store);
    store->error.clear();
    if (sqlite3_open_v2(path.c_str(), &store->db, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE,
                        nullptr) != SQLITE_OK) {
        Fail(store, ("cannot open the logbook " + path).c_str());
        CloseLogStore(store);
        return 0;
    }
    // Another instance (the command-line tool during an import) may hold the
    // write lock for a moment.
    sqlite3_busy_timeout(store->db, 5000);
    const int version = LogSchemaVersion(store);
    if (version < 0) {
        store->error = path + " is not a logbook";
        CloseLogStore(store);
        return 0;
    }
    // The write-ahead log keeps every committed contact through a crash;
    // synchronous=FULL also syncs it at each commit, so a pulled plug keeps
    // them too.
    if (!Exec(store, "PRAGMA journal_mode=WAL") || !Exec(store, "PRAGMA synchronous=FULL")) {
        store->error = "cannot set up the logbook " + path + ": " + store->error;
        CloseLogStore(store);
        return 0;
    }
    if (version > kLogSchemaVersion) {
        store->error = path + " was written by a newer version of Veloran (logbook version " +
                       std::to_string(version) + "); it is left as it is";
        CloseLogStore(store);
        return 0;
    }
    for (int step = version; step < kLogSchemaVersion; ++step) {
        const std::string bump = "PRAGMA user_version=" + std::to_string(step + 1);
        if (!InTransaction(store, [&] {
                return Exec(store, kMigrations[step]) && Exec(store, bump.c_str());
            })) {
            store->error = "cannot bring the logbook " + path + " up to date: " + store->error;
            CloseLogStore(store);
            return 0;
        }
    }
    return 1;
}

void CloseLogStore(LogStore* store) {
    if (store->db) sqlite3_close(store->db);
    store->db = nullptr;
}

int AddContact(LogStore* store, ContactRec* contact) {
    if (!store->db) return Fail(store, "the logbook is not open");
    return InTransaction(store, [&] { return Insert(store, contact); });
}

int AddContacts(LogStore* store, std::vector<ContactRec>* contacts) {
    if (!store->db) return Fail(store, "the logbook is not open");
    const int ok = InTransaction(store, [&] {
        for (ContactRec& c : *contacts)
            if (!Insert(store, &c)) return 0;
        return 1;
    });
    if (!ok)
        for (ContactRec& c : *contacts) c.id = 0;
    return ok;
}

int UpdateContact(LogStore* store, const ContactRec* contact) {
    if (!store->db) return Fail(store, "the logbook is not open");
    std::string sql = "UPDATE contacts SET (";
    sql += kColumns;
    sql += ") = (?";
    for (int i = 1; i < kColumnCount; ++i) sql += ",?";
    sql += ") WHERE id = ?";
    return InTransaction(store, [&] {
        sqlite3_stmt* st = nullptr;
        if (sqlite3_prepare_v2(store->db, sql.c_str(), -1, &st, nullptr) != SQLITE_OK)
            return Fail(store, "cannot change the contact");
        BindContact(st, contact);
        sqlite3_bind_int64(st, kColumnCount + 1, contact->id);
        const int rc = sqlite3_step(st);
        sqlite3_finalize(st);
        if (rc != SQLITE_DONE) return Fail(store, "cannot change the contact");
        if (sqlite3_changes(store->db) != 1) {
            store->error = "no contact " + std::to_string(contact->id) + " in the logbook";
            return 0;
        }
        return 1;
    });
}

int DeleteContact(LogStore* store, int64_t id) {
    if (!store->db) return Fail(store, "the logbook is not open");
    return InTransaction(store, [&] {
        sqlite3_stmt* st = nullptr;
        if (sqlite3_prepare_v2(store->db, "DELETE FROM contacts WHERE id = ?", -1, &st, nullptr) !=
            SQLITE_OK)
            return Fail(store, "cannot delete the contact");
        sqlite3_bind_int64(st, 1, id);
        const int rc = sqlite3_step(st);
        sqlite3_finalize(st);
        if (rc != SQLITE_DONE) return Fail(store, "cannot delete the contact");
        if (sqlite3_changes(store->db) != 1) {
            store->error = "no contact " + std::to_string(id) + " in the logbook";
            return 0;
        }
        return 1;
    });
}

int ListContacts(LogStore* store, uint32_t sinceUTC, std::vector<ContactRec>* out) {
    if (!store->db) {
        Fail(store, "the logbook is not open");
        return -1;
    }
    return Select(
        store, "start_utc >= ?", [&](sqlite3_stmt* st) { sqlite3_bind_int64(st, 1, sinceUTC); },
        out);
}

int FindContacts(LogStore* store, const std::string& call, const std::string& satellite,
                 uint32_t fromUTC, uint32_t toUTC, std::vector<ContactRec>* out) {
    if (!store->db) {
        Fail(store, "the logbook is not open");
        return -1;
    }
    return Select(
        store, "call = ? AND satellite = ? AND start_utc BETWEEN ? AND ?",
        [&](sqlite3_stmt* st) {
            sqlite3_bind_text(st, 1, call.c_str(), -1, SQLITE_TRANSIENT);
            sqlite3_bind_text(st, 2, satellite.c_str(), -1, SQLITE_TRANSIENT);
            sqlite3_bind_int64(st, 3, fromUTC);
            sqlite3_bind_int64(st, 4, toUTC);
        },
        out);
}

}  // namespace veloran

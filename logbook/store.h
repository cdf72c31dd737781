// The contact log on disk: one SQLite database in the data folder, its schema
// versioned and brought forward on open, every change in its own transaction
// with a write-ahead log synced to disk, so a crash or a pulled plug loses at
// most the contact being saved.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "logbook/contact.h"

struct sqlite3;

namespace veloran {

// The schema this build writes; older files are migrated forward on open.
constexpr int kLogSchemaVersion = 2;

// The database file's name in the data folder.
constexpr const char* kLogbookFileName = "logbook.sqlite";

struct LogStore {
    sqlite3* db = nullptr;
    std::string error;  // the last failure, in words, for the user
};

// "<dataDir>/logbook.sqlite".
std::string LogbookPath(const std::string& dataDir);

// Opens (creating when missing) the database and migrates it to
// kLogSchemaVersion. 0 with store->error set when the file cannot be opened,
// is not a logbook, or comes from a newer version (left untouched).
int OpenLogStore(const std::string& path, LogStore* store);
void CloseLogStore(LogStore* store);

// The schema version stored in the file (0 for an empty file).
int LogSchemaVersion(LogStore* store);

// Saves a new contact and puts its row id into contact->id. 1, or 0 with
// store->error set and nothing written.
int AddContact(LogStore* store, ContactRec* contact);
// Saves all of them in one transaction: all or nothing. Sets each id.
int AddContacts(LogStore* store, std::vector<ContactRec>* contacts);
// Rewrites the row contact->id. 0 when it does not exist.
int UpdateContact(LogStore* store, const ContactRec* contact);
int DeleteContact(LogStore* store, int64_t id);

// Contacts that started at or after sinceUTC (seconds since 1904), oldest
// first, appended to *out. The count read, or -1 on failure.
int ListContacts(LogStore* store, uint32_t sinceUTC, std::vector<ContactRec>* out);

// Contacts with this call (capitals) on this satellite that started within
// [fromUTC, toUTC], appended to *out; the count, or -1 on failure.
int FindContacts(LogStore* store, const std::string& call, const std::string& satellite,
                 uint32_t fromUTC, uint32_t toUTC, std::vector<ContactRec>* out);

}  // namespace veloran

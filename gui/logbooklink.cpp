// The contact log on the core thread: opened on first use, every request
// answered through the feed.

#include "gui/logbooklink.h"

#include <QPointer>
#include <cstdio>

#include "app/appcontroller.h"
#include "data/files.h"
#include "engine/timebase.h"
#include "gui/uibridge.h"
#include "logbook/adif.h"
#include "logbook/callbook.h"
#include "logbook/dxcc.h"
#include "logbook/satnames.h"
#include "logbook/store.h"
#include "platform/qtcallbook.h"

namespace veloran {

struct LogbookCore {
    bool tried = false;
    bool open = false;
    std::string error;
    LogStore store;
    DxccTable dxcc;
    bool haveDxcc = false;
    SatNameTable names;
    std::string dataDir;
    QPointer<QtCallbook> callbook;      // a child of the bridge, so it dies on the core thread
    CallbookSettings callbookSettings;  // what it was made with

    ~LogbookCore() { CloseLogStore(&store); }
};

namespace {

QString Q(const std::string& text) {
    return QString::fromStdString(text);
}

// Opens the store and reads the tables once; 0 after telling the window why.
int Ready(LogbookCore* core, CoreSide& s, LogbookFeed* feed) {
    if (!core->tried) {
        core->tried = true;
        const DataPaths& paths = s.app->paths();
        core->dataDir = paths.dataDir;
        core->haveDxcc =
            LoadDxccTable(DxccPath(paths.dataDir, paths.resourceDir), &core->dxcc, nullptr) != 0;
        int bad = 0;
        LoadSatNames(SatNamesPath(paths.dataDir, paths.resourceDir), &core->names, &bad);
        if (!MakeDirectories(paths.dataDir))
            core->error = "Cannot create the data folder " + paths.dataDir;
        else if (OpenLogStore(LogbookPath(paths.dataDir), &core->store))
            core->open = true;
        else
            core->error = "The logbook cannot be opened: " + core->store.error;
    }
    if (!core->open) emit feed->failed(Q(core->error));
    return core->open ? 1 : 0;
}

void ListAll(LogbookCore* core, LogbookFeed* feed) {
    std::vector<ContactRec> contacts;
    if (ListContacts(&core->store, 0, &contacts) < 0) {
        emit feed->failed(Q("The logbook cannot be read: " + core->store.error));
        return;
    }
    emit feed->contactsListed(contacts);
}

bool WriteText(const std::string& path, const std::string& text) {
    return AtomicWriteFile(path, [&text](FILE* out) {
        return std::fwrite(text.data(), 1, text.size(), out) == text.size();
    });
}

}  // namespace

LogbookLink::LogbookLink(CorePost post, QObject* parent)
    : QObject(parent),
      post_(std::move(post)),
      feed_(new LogbookFeed, [](LogbookFeed* f) { f->deleteLater(); }),
      core_(std::make_shared<LogbookCore>()) {}

void LogbookLink::save(const ContactEntry& entry) {
    post_([core = core_, feed = feed_, entry](CoreSide& s) {
        if (!Ready(core.get(), s, feed.get())) return;
        LiveContactState state;
        s.app->fillLiveContact(&state);
        ContactRec contact, earlier;
        const LiveSave result =
            SaveLiveContact(&core->store, &state, &entry, core->haveDxcc ? &core->dxcc : nullptr,
                            &contact, &earlier);
        if (result == LiveSave::NoCall) return;
        if (result == LiveSave::Failed) {
            emit feed->failed(Q("Not logged: " + core->store.error));
            return;
        }
        QString duplicate;
        if (result == LiveSave::Duplicate) duplicate = Q(earlier.call) + " worked this pass";
        emit feed->contactSaved(contact, duplicate);
        ListAll(core.get(), feed.get());
    });
}

void LogbookLink::findCountry(const QString& call) {
    post_([core = core_, feed = feed_, call](CoreSide& s) {
        Ready(core.get(), s, feed.get());
        const DxccEntity* e =
            core->haveDxcc ? LookupDxcc(&core->dxcc, call.toStdString()) : nullptr;
        emit feed->countryFound(call, e != nullptr ? Q(e->name) : QString());
    });
}

void LogbookLink::lookUp(const QString& call) {
    post_([core = core_, feed = feed_, call](CoreSide& s) {
        CallbookSettings settings;
        ReadCallbookSettings(s.defaults, s.app->paths().configDir, &settings);
        if (!settings.enabled || settings.user.empty()) return;
        // Changed settings (a new password) take a fresh client.
        const CallbookSettings& was = core->callbookSettings;
        if (!core->callbook.isNull() &&
            (was.user != settings.user || was.password != settings.password ||
             was.url != settings.url)) {
            core->callbook->deleteLater();
            core->callbook = nullptr;
        }
        if (core->callbook.isNull()) {
            core->callbook =
                new QtCallbook(settings, s.app->paths().dataDir + "/callbook-answer.xml", s.ui);
            core->callbookSettings = settings;
        }
        // One lookup at a time: a call typed while another is under way waits
        // for the operator's next pause.
        core->callbook->lookup(
            call.toStdString(), s.app->timeBaseSecs(),
            [feed, call](QtCallbook::Result result, const CallbookRecord& r,
                         const std::string& error) {
                if (result == QtCallbook::Result::Found)
                    emit feed->callbookAnswered(call, Q(r.name), Q(r.qth), Q(r.grid), QString());
                else if (result == QtCallbook::Result::NotFound)
                    emit feed->callbookAnswered(call, {}, {}, {}, "not in the callbook");
                else
                    emit feed->callbookAnswered(call, {}, {}, {}, Q("callbook: " + error));
            });
    });
}

void LogbookLink::readCallbookSettings() {
    post_([feed = feed_](CoreSide& s) {
        CallbookSettings settings;
        ReadCallbookSettings(s.defaults, s.app->paths().configDir, &settings);
        emit feed->callbookSettingsRead(settings.enabled, Q(settings.user), Q(settings.url),
                                        !settings.password.empty());
    });
}

void LogbookLink::writeCallbookSettings(const CallbookSettings& settings, bool passwordChanged) {
    post_([feed = feed_, settings, passwordChanged](CoreSide& s) {
        std::string error;
        if (!WriteCallbookSettings(s.defaults, s.app->paths().configDir, &settings, passwordChanged,
                                   &error)) {
            emit feed->callbookSettingsWritten(Q("The callbook settings were not saved: " + error));
            return;
        }
        // The next lookup reads them again and makes a fresh client for a
        // changed account or address.
        emit feed->callbookSettingsWritten(QString());
    });
}

void LogbookLink::list() {
    post_([core = core_, feed = feed_](CoreSide& s) {
        if (Ready(core.get(), s, feed.get())) ListAll(core.get(), feed.get());
    });
}

void LogbookLink::update(const ContactRec& contact) {
    post_([core = core_, feed = feed_, contact](CoreSide& s) {
        if (!Ready(core.get(), s, feed.get())) return;
        ContactRec c = contact;
        if (core->haveDxcc) {
            const DxccEntity* e = LookupDxcc(&core->dxcc, c.call);
            c.country = e != nullptr ? e->name : "";
            c.dxcc = e != nullptr ? e->code : 0;
        }
        if (!UpdateContact(&core->store, &c))
            emit feed->failed(Q("The change was not saved: " + core->store.error));
        ListAll(core.get(), feed.get());
    });
}

void LogbookLink::remove(const std::vector<int64_t>& ids) {
    post_([core = core_, feed = feed_, ids](CoreSide& s) {
        if (!Ready(core.get(), s, feed.get())) return;
        for (int64_t id : ids)
            if (!DeleteContact(&core->store, id))
                emit feed->failed(Q("Not deleted: " + core->store.error));
        ListAll(core.get(), feed.get());
    });
}

void LogbookLink::importAdif(const QString& path) {
    post_([core = core_, feed = feed_, path](CoreSide& s) {
        if (!Ready(core.get(), s, feed.get())) return;
        std::string text;
        if (!ReadWholeFile(path.toStdString(), &text)) {
            emit feed->failed("Cannot read " + path);
            return;
        }
        AdifImport imported;
        ParseAdif(text, &core->names, &imported);
        // A file imported twice adds nothing the second time.
        std::vector<ContactRec> fresh;
        int already = 0;
        for (ContactRec& c : imported.contacts) {
            std::vector<ContactRec> same;
            if (FindContacts(&core->store, c.call, c.satellite, c.startUTC, c.startUTC, &same) >
                0) {
                ++already;
                continue;
            }
            if (c.country.empty() && core->haveDxcc)
                if (const DxccEntity* e = LookupDxcc(&core->dxcc, c.call)) {
                    c.country = e->name;
                    if (c.dxcc == 0) c.dxcc = e->code;
                }
            fresh.push_back(c);
        }
        QStringList messages;
        for (const std::string& m : imported.messages) messages << Q(m);
        if (!AddContacts(&core->store, &fresh)) {
            emit feed->failed(Q(core->store.error + "; nothing was imported"));
            return;
        }
        emit feed->importReported(path, imported.records, static_cast<int>(fresh.size()), already,
                                  messages);
        ListAll(core.get(), feed.get());
    });
}

void LogbookLink::exportAdif(const QString& path) {
    post_([core = core_, feed = feed_, path](CoreSide& s) {
        if (!Ready(core.get(), s, feed.get())) return;
        std::vector<ContactRec> contacts;
        if (ListContacts(&core->store, 0, &contacts) < 0) {
            emit feed->failed(Q("The logbook cannot be read: " + core->store.error));
            return;
        }
        const std::string text = FormatAdif(contacts, &core->names, QFGetDateTimeUTC());
        if (!WriteText(path.toStdString(), text))
            emit feed->failed("Cannot write " + path);
        else
            emit feed->exported(path, static_cast<int>(contacts.size()));
    });
}

void LogbookLink::exportCsv(const QString& path) {
    post_([core = core_, feed = feed_, path](CoreSide& s) {
        if (!Ready(core.get(), s, feed.get())) return;
        std::vector<ContactRec> contacts;
        if (ListContacts(&core->store, 0, &contacts) < 0) {
            emit feed->failed(Q("The logbook cannot be read: " + core->store.error));
            return;
        }
        if (!WriteText(path.toStdString(), FormatCsv(contacts)))
            emit feed->failed("Cannot write " + path);
        else
            emit feed->exported(path, static_cast<int>(contacts.size()));
    });
}

}  // namespace veloran

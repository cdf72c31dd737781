// The contact log as the window reaches it. The store, the DXCC and LoTW
// tables and the callsign lookup live on the core thread and are opened there
// on first use; the strip and the logbook window post their requests through
// LogbookLink and get value copies back through LogbookFeed's signals.
#pragma once

#include <QObject>
#include <QString>
#include <QStringList>
#include <cstdint>
#include <memory>
#include <vector>

#include "gui/corethread.h"
#include "logbook/callbook.h"
#include "logbook/contact.h"
#include "logbook/livecontact.h"

namespace veloran {

struct LogbookCore;

// Carries the core's answers to the GUI thread.
class LogbookFeed : public QObject {
    Q_OBJECT
  signals:
    void contactsListed(std::vector<veloran::ContactRec> contacts);
    // A contact saved from the strip; `duplicate` says when and on which
    // pass the same station was already worked ("" for a new one).
    void contactSaved(veloran::ContactRec contact, QString duplicate);
    void countryFound(QString call, QString country);
    void callbookAnswered(QString call, QString name, QString qth, QString grid, QString error);
    void importReported(QString file, int records, int added, int already, QStringList messages);
    void exported(QString file, int count);
    void failed(QString message);
    // The callsign lookup's settings as stored; the password itself never
    // leaves the core, only whether one is stored.
    void callbookSettingsRead(bool enabled, QString user, QString url, bool passwordStored);
    // The settings were stored ("") or why not.
    void callbookSettingsWritten(QString error);
};

class LogbookLink : public QObject {
    Q_OBJECT
  public:
    explicit LogbookLink(CorePost post, QObject* parent = nullptr);

    LogbookFeed* feed() const { return feed_.get(); }

    // Makes a contact from what the station knows now and saves it.
    void save(const ContactEntry& entry);
    void findCountry(const QString& call);
    // Asks the callsign service when the settings have it on; silent otherwise.
    void lookUp(const QString& call);
    void readCallbookSettings();
    // `passwordChanged` false keeps the stored password whatever
    // settings.password holds; true with an empty one removes it.
    void writeCallbookSettings(const CallbookSettings& settings, bool passwordChanged);
    void list();
    void update(const ContactRec& contact);
    void remove(const std::vector<int64_t>& ids);
    void importAdif(const QString& path);
    void exportAdif(const QString& path);
    void exportCsv(const QString& path);

  private:
    CorePost post_;
    std::shared_ptr<LogbookFeed> feed_;
    std::shared_ptr<LogbookCore> core_;  // touched only on the core thread
};

}  // namespace veloran

// The callsign lookup over the network: opens a session with the service,
// looks calls up through the platform's downloader, renews an expired
// session once, and answers repeated calls from the cache.
#pragma once

#include <QObject>
#include <cstdint>
#include <functional>
#include <string>

#include "logbook/callbook.h"
#include "platform/qtdownloader.h"

namespace veloran {

class QtCallbook : public QObject {
    Q_OBJECT
  public:
    enum class Result { Found, NotFound, Failed };
    // Called once per lookup; `error` says what went wrong when Failed.
    using Done =
        std::function<void(Result result, const CallbookRecord& record, const std::string& error)>;

    // Answers are fetched into scratchFile (a file in the data folder),
    // which is removed after each one is read.
    QtCallbook(const CallbookSettings& settings, const std::string& scratchFile,
               QObject* parent = nullptr);

    // Looks `call` up; `done` runs later on this thread, or before this
    // returns when the cache has the answer. False, and `done` never runs,
    // when the lookup is off, has no user name, or another one is under way.
    bool lookup(const std::string& call, uint32_t nowUTC, Done done);

    const CallbookCache& cache() const { return cache_; }

  private:
    enum class Step { Idle, Login, Search };

    void fetched(bool ok, const std::string& error);
    bool fetch(Step step, const std::string& url);
    void finish(Result result, const CallbookRecord& record, const std::string& error);

    CallbookSettings settings_;
    std::string scratchFile_;
    QtDownloader downloader_;
    CallbookCache cache_;
    std::string session_;
    std::string call_;
    uint32_t nowUTC_ = 0;
    Done done_;
    Step step_ = Step::Idle;
    bool renewed_ = false;  // the session was already renewed for this lookup
};

}  // namespace veloran

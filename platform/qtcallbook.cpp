// The callsign lookup's conversation with the service: login, search, and
// one fresh login when the service says the session has expired.

#include "platform/qtcallbook.h"

#include <cstdio>

#include "data/files.h"

namespace veloran {

QtCallbook::QtCallbook(const CallbookSettings& settings, const std::string& scratchFile,
                       QObject* parent)
    : QObject(parent),
      settings_(settings),
      scratchFile_(scratchFile),
      downloader_(
          [this](bool ok, const std::string& error, const std::string&) { fetched(ok, error); }) {}

bool QtCallbook::lookup(const std::string& call, uint32_t nowUTC, Done done) {
    if (!settings_.enabled || settings_.user.empty() || step_ != Step::Idle || call.empty())
        return false;
    if (const CallbookCache::Entry* hit = CachedCall(&cache_, call, nowUTC)) {
        done(hit->found ? Result::Found : Result::NotFound, hit->record, "");
        return true;
    }
    call_ = call;
    nowUTC_ = nowUTC;
    done_ = std::move(done);
    renewed_ = false;
    if (session_.empty()) return fetch(Step::Login, CallbookLoginUrl(&settings_));
    return fetch(Step::Search, CallbookSearchUrl(&settings_, session_, call_));
}

bool QtCallbook::fetch(Step step, const std::string& url) {
    step_ = step;
    if (downloader_.start(url, scratchFile_, kCallbookTimeoutSeconds)) return true;
    step_ = Step::Idle;
    done_ = nullptr;
    return false;
}

void QtCallbook::fetched(bool ok, const std::string& error) {
    if (!ok) {
        finish(Result::Failed, {}, "callsign lookup failed: " + error);
        return;
    }
    std::string answer;
    const bool read = ReadWholeFile(scratchFile_, &answer);
    std::remove(scratchFile_.c_str());
    if (!read) {
        finish(Result::Failed, {}, "callsign lookup failed: cannot read " + scratchFile_);
        return;
    }
    CallbookRecord record;
    std::string text;
    const CallbookReply reply = ParseCallbookReply(answer, &record, &text);
    switch (reply) {
        case CallbookReply::Session:
            session_ = text;
            if (step_ == Step::Login &&
                fetch(Step::Search, CallbookSearchUrl(&settings_, session_, call_)))
                return;
            finish(Result::Failed, {}, "callsign lookup failed: the search could not start");
            return;
        case CallbookReply::SessionExpired:
            session_.clear();
            if (!renewed_) {
                renewed_ = true;
                if (fetch(Step::Login, CallbookLoginUrl(&settings_))) return;
            }
            finish(Result::Failed, {}, "callsign lookup failed: " + text);
            return;
        case CallbookReply::Found:
            CacheCall(&cache_, call_, true, &record, nowUTC_);
            finish(Result::Found, record, "");
            return;
        case CallbookReply::NotFound:
            CacheCall(&cache_, call_, false, nullptr, nowUTC_);
            finish(Result::NotFound, {}, "");
            return;
        case CallbookReply::Error:
            // A refused login leaves no session to reuse.
            if (step_ == Step::Login) session_.clear();
            finish(Result::Failed, {}, "callsign lookup failed: " + text);
            return;
    }
}

void QtCallbook::finish(Result result, const CallbookRecord& record, const std::string& error) {
    step_ = Step::Idle;
    Done done = std::move(done_);
    done_ = nullptr;
    if (done) done(result, record, error);
}

}  // namespace veloran

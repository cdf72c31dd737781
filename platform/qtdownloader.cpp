// The element-set download. The body is written through a temporary file and
// a rename, so an interrupted transfer never leaves half a file where the
// controller looks for the new element sets. Redirects are followed by hand,
// so that every hop passes the same address test as the first request (no
// Qt redirect policy expresses "https, or plain http on loopback only").

#include "platform/qtdownloader.h"

#include <QNetworkReply>
#include <QNetworkRequest>
#include <cstdio>

#include "data/files.h"
#include "data/kepssources.h"

namespace veloran {

namespace {

constexpr int kMaxRedirects = 5;
constexpr int kHttpOk = 200;

}  // namespace

QtDownloader::QtDownloader(Completion done, QObject* parent)
    : QObject(parent), done_(std::move(done)) {}

bool QtDownloader::start(const std::string& url, const std::string& destination,
                         double timeoutSeconds) {
    const QUrl address(QString::fromStdString(url));
    std::string why;
    if (busy_ || !address.isValid() || !CheckDownloadURL(url, &why)) return false;
    busy_ = true;
    cancelled_ = false;
    oversized_ = false;
    lastStatus_ = 0;
    redirects_ = 0;
    if (timeoutLimit_ > 0.0 && (timeoutSeconds <= 0.0 || timeoutSeconds > timeoutLimit_))
        timeoutSeconds = timeoutLimit_;
    timeoutMs_ = static_cast<int>(timeoutSeconds * 1000.0);
    url_ = url;
    destination_ = destination;
    fetch(address);
    if (progress_) progress_(0, -1);
    return true;
}

void QtDownloader::fetch(const QUrl& address) {
    QNetworkRequest request(address);
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute,
                         QNetworkRequest::ManualRedirectPolicy);
    request.setTransferTimeout(timeoutMs_);
    QNetworkReply* reply = manager_.get(request);
    // An oversized answer is cut off as soon as it shows: by its announced
    // length, or by what has arrived.
    connect(reply, &QNetworkReply::metaDataChanged, this, [this, reply]() {
        const QVariant length = reply->header(QNetworkRequest::ContentLengthHeader);
        if (length.isValid() && length.toLongLong() > kMaxDownloadBytes) {
            oversized_ = true;
            reply->abort();
        }
    });
    reply_ = reply;
    connect(reply, &QNetworkReply::downloadProgress, this,
            [this, reply](qint64 received, qint64 total) {
                if (received > kMaxDownloadBytes) {
                    oversized_ = true;
                    reply->abort();
                    return;
                }
                if (progress_) progress_(received, total > 0 ? total : -1);
            });
    connect(reply, &QNetworkReply::finished, this, [this, reply]() { finished(reply); });
}

void QtDownloader::fail(const std::string& why) {
    busy_ = false;
    if (done_) done_(false, why, url_);
}

void QtDownloader::cancel() {
    if (!busy_ || reply_ == nullptr) return;
    cancelled_ = true;
    reply_->abort();
}

void QtDownloader::finished(QNetworkReply* reply) {
    reply->deleteLater();
    reply_ = nullptr;
    if (cancelled_) {
        fail("cancelled");
        return;
    }
    const QVariant status = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute);
    lastStatus_ = status.isValid() ? status.toInt() : 0;
    const QVariant length = reply->header(QNetworkRequest::ContentLengthHeader);
    if (oversized_ || (length.isValid() && length.toLongLong() > kMaxDownloadBytes) ||
        reply->bytesAvailable() > kMaxDownloadBytes) {
        fail("the answer is larger than 32 MB");
        return;
    }
    // Nothing else aborts a request: Qt ends one that stays silent for the
    // time-out that way.
    if (reply->error() == QNetworkReply::OperationCanceledError ||
        reply->error() == QNetworkReply::TimeoutError) {
        char seconds[32];
        std::snprintf(seconds, sizeof seconds, "%g", timeoutMs_ / 1000.0);
        fail(std::string("no answer from the server within ") + seconds + " seconds");
        return;
    }
    if (lastStatus_ >= 300 && lastStatus_ < 400) {
        const QUrl target = reply->url().resolved(
            reply->attribute(QNetworkRequest::RedirectionTargetAttribute).toUrl());
        std::string why;
        if (!target.isValid() || target.isEmpty()) {
            fail("a redirect without a target");
        } else if (!CheckDownloadURL(target.toString().toStdString(), &why)) {
            fail("redirected: " + why);
        } else if (++redirects_ > kMaxRedirects) {
            fail("too many redirects");
        } else {
            fetch(target);
        }
        return;
    }
    if (lastStatus_ != kHttpOk) {
        fail(lastStatus_ != 0 ? "the server answered " + std::to_string(lastStatus_) + " " +
                                    reply->attribute(QNetworkRequest::HttpReasonPhraseAttribute)
                                        .toString()
                                        .toStdString()
                              : reply->errorString().toStdString());
        return;
    }
    const QByteArray body = reply->readAll();
    const bool written = AtomicWriteFile(destination_, [&body](FILE* out) {
        return std::fwrite(body.constData(), 1, static_cast<size_t>(body.size()), out) ==
               static_cast<size_t>(body.size());
    });
    busy_ = false;
    if (!done_) return;
    if (written)
        done_(true, "", url_);
    else
        done_(false, "cannot write " + destination_, url_);
}

}  // namespace veloran

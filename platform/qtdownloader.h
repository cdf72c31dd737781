// The element-set download on QNetworkAccessManager.
#pragma once

#include <QNetworkAccessManager>
#include <QObject>
#include <QUrl>
#include <cstdint>
#include <functional>
#include <string>

#include "app/interfaces.h"

class QNetworkReply;

namespace veloran {

// Fetches a URL into a file within the download rules: https only (plain
// http only on the loopback host), redirects followed only to addresses that
// pass the same test, only a 200 answer taken, at most 32 MB, and the
// time-out. Lives on the core thread, where its completion is called.
class QtDownloader : public QObject, public Downloader {
    Q_OBJECT
  public:
    // ok, and for a failure the reason and the URL that failed.
    using Completion =
        std::function<void(bool ok, const std::string& error, const std::string& url)>;

    explicit QtDownloader(Completion done, QObject* parent = nullptr);

    // False when a download is already under way or the URL is not one the
    // rules allow.
    bool start(const std::string& url, const std::string& destination,
               double timeoutSeconds) override;
    int lastStatus() const override { return lastStatus_; }
    void cancel() override;
    // Waits at most `seconds` for the server whatever start() asks for (a
    // test's silent server need not take a minute); 0 lifts the limit.
    void limitTimeout(double seconds) { timeoutLimit_ = seconds; }
    // Bytes received and expected (-1 while unknown), as they arrive.
    using Progress = std::function<void(int64_t received, int64_t total)>;
    void setProgress(Progress progress) { progress_ = std::move(progress); }

  private:
    void fetch(const QUrl& address);
    void finished(QNetworkReply* reply);
    void fail(const std::string& why);

    QNetworkAccessManager manager_;
    Completion done_;
    Progress progress_;
    QNetworkReply* reply_ = nullptr;  // the request under way
    bool cancelled_ = false;
    bool oversized_ = false;  // cut off for its size
    bool busy_ = false;
    int lastStatus_ = 0;
    int redirects_ = 0;
    int timeoutMs_ = 60000;
    double timeoutLimit_ = 0.0;
    std::string url_;
    std::string destination_;
};

}  // namespace veloran

// The element-set download on QNetworkAccessManager.
#pragma once

#include <QNetworkAccessManager>
#include <QObject>
#include <functional>
#include <string>

#include "app/interfaces.h"

namespace veloran {

// Fetches a URL into a file over HTTP or HTTPS, following redirects that do
// not lower the security, and gives up after the time-out. Lives on the core
// thread, where its completion is called.
class QtDownloader : public QObject, public Downloader {
    Q_OBJECT
  public:
    // ok, and for a failure the reason and the URL that failed.
    using Completion =
        std::function<void(bool ok, const std::string& error, const std::string& url)>;

    explicit QtDownloader(Completion done, QObject* parent = nullptr);

    // False when a download is already under way or the URL is not valid.
    bool start(const std::string& url, const std::string& destination,
               double timeoutSeconds) override;

  private:
    QNetworkAccessManager manager_;
    Completion done_;
    bool busy_ = false;
};

}  // namespace veloran

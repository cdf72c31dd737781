// The element-set download. The body is written through a temporary file and
// a rename, so an interrupted transfer never leaves half a file where the
// controller looks for the new element sets.

#include "platform/qtdownloader.h"

#include <QNetworkReply>
#include <QNetworkRequest>
#include <QUrl>
#include <cstdio>

#include "data/files.h"

namespace veloran {

QtDownloader::QtDownloader(Completion done, QObject* parent)
    : QObject(parent), done_(std::move(done)) {}

bool QtDownloader::start(const std::string& url, const std::string& destination,
                         double timeoutSeconds) {
    const QUrl address(QString::fromStdString(url));
    if (busy_ || !address.isValid() || address.scheme().isEmpty()) return false;
    QNetworkRequest request(address);
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute,
                         QNetworkRequest::NoLessSafeRedirectPolicy);
    request.setTransferTimeout(static_cast<int>(timeoutSeconds * 1000.0));
    QNetworkReply* reply = manager_.get(request);
    busy_ = true;
    connect(reply, &QNetworkReply::finished, this, [this, reply, url, destination]() {
        busy_ = false;
        reply->deleteLater();
        if (reply->error() != QNetworkReply::NoError) {
            if (done_) done_(false, reply->errorString().toStdString(), url);
            return;
        }
        const QByteArray body = reply->readAll();
        const bool written = AtomicWriteFile(destination, [&body](FILE* out) {
            return std::fwrite(body.constData(), 1, static_cast<size_t>(body.size()), out) ==
                   static_cast<size_t>(body.size());
        });
        if (done_) {
            if (written)
                done_(true, "", url);
            else
                done_(false, "cannot write " + destination, url);
        }
    });
    return true;
}

}  // namespace veloran

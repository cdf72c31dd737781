// The element-set download end to end: the controller, the Qt downloader and
// an HTTP server on 127.0.0.1. Only a good bulletin replaces the element-set
// file; a 404, a page without sets, a Cancel or a server that never answers
// leaves the old one, and the operator is told why.

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QEventLoop>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTimer>
#include <memory>

#include "data/elementfile.h"
#include "data/kepssources.h"
#include "fakes.h"
#include "platform/qtdownloader.h"

namespace veloran {
namespace {

using testing::ElementSets;
using testing::ReadText;

// Answers every request with `response`; an empty response never answers
// (it accepts the connection and stays silent).
class LoopbackServer {
  public:
    explicit LoopbackServer(QByteArray response = {}) : response_(std::move(response)) {
        server_.listen(QHostAddress::LocalHost, 0);
        QObject::connect(&server_, &QTcpServer::newConnection, [this]() {
            QTcpSocket* socket = server_.nextPendingConnection();
            QObject::connect(socket, &QTcpSocket::readyRead, [this, socket]() {
                request_ += socket->readAll();
                if (response_.isEmpty() || !request_.contains("\r\n\r\n")) return;
                socket->write(response_);
                socket->disconnectFromHost();
            });
        });
    }
    std::string url() const {
        return "http://127.0.0.1:" + std::to_string(server_.serverPort()) + "/nasa.all";
    }

  private:
    QTcpServer server_;
    QByteArray response_;
    QByteArray request_;
};

QByteArray Answer(const char* status, const std::string& body) {
    return QByteArray(status) +
           "\r\nContent-Length: " + QByteArray::number(qsizetype(body.size())) +
           "\r\nConnection: close\r\n\r\n" + QByteArray::fromStdString(body);
}

// The controller of a scratch station with the Qt downloader in place of
// the fake one, pointed at `url`.
struct Download {
    testing::ControllerRig rig;
    std::string before;  // the element-set file before the download
    bool done = false;   // a completion can come at once, before any loop runs
    QEventLoop loop;
    std::unique_ptr<AppController> controller;
    QtDownloader downloader{[this](bool ok, const std::string& why, const std::string& url) {
        if (ok)
            controller->downloadDidFinish();
        else
            controller->downloadDidFail(why, url);
        done = true;
        loop.quit();
    }};

    explicit Download(const std::string& url) {
        rig.defaults.setString(prefkeys::kKepsSourceURL, url);
        rig.app->loadKepsAndModes();
        before = ReadText(rig.paths.keplerFile);
        const Services s{.ui = &rig.ui,
                         .defaults = &rig.defaults,
                         .files = &rig.files,
                         .downloader = &downloader,
                         .clock = &rig.clock,
                         .announcer = &rig.announcer,
                         .log = rig.log};
        controller = std::make_unique<AppController>(s, rig.paths);
    }
    // Runs the event loop until the download has completed; half a minute
    // at most, a bound only against a hang.
    void finish() {
        QTimer::singleShot(30000, &loop, &QEventLoop::quit);
        if (!done) loop.exec();
        EXPECT_TRUE(done);
        EXPECT_FALSE(FileExists(rig.paths.downloadFile));
    }
    std::string notice() const { return rig.ui.notices.empty() ? "" : rig.ui.notices.back(); }
};

TEST(DownloadThroughTheController, OnlyAGoodBulletinReplacesTheFile) {
    struct Case {
        const char* label;
        QByteArray answer;
        int setsAfter;       // 0: the old file must be untouched
        const char* notice;  // what the operator is told
    };
    const Case cases[] = {
        {"success", Answer("HTTP/1.1 200 OK", ElementSets(4)), 4, nullptr},
        {"404", Answer("HTTP/1.1 404 Not Found", ElementSets(4)), 0,
         "The element sets were not downloaded (the server answered HTTP 404); the current ones "
         "are kept. Automatic updates are stopped until you download by hand or resume them."},
        {"no element sets", Answer("HTTP/1.1 200 OK", "<html>Please log in</html>\n"), 0, nullptr},
    };
    for (const Case& c : cases) {
        LoopbackServer server(c.answer);
        Download d(server.url());
        d.controller->startDownloadingURL(DownloadTrigger::Forced);
        d.finish();
        if (c.setsAfter > 0) {
            EXPECT_EQ(CountElementSets(d.rig.paths.keplerFile, 100), c.setsAfter) << c.label;
        } else {
            EXPECT_EQ(ReadText(d.rig.paths.keplerFile), d.before) << c.label;
        }
        if (c.notice != nullptr) EXPECT_EQ(d.notice(), c.notice) << c.label;
    }
}

// Cancel stops a download that has not answered yet, and a server that never
// answers is given up after the time-out: the old file stays either way, and
// the operator is told why.
TEST(DownloadThroughTheController, CancelAndTimeOutKeepTheOldFile) {
    {
        LoopbackServer silent;
        Download d(silent.url());
        d.controller->startDownloadingURL(DownloadTrigger::Forced);
        d.controller->cancelDownload();
        d.finish();
        EXPECT_EQ(ReadText(d.rig.paths.keplerFile), d.before);
        EXPECT_EQ(d.notice(),
                  "The element sets were not downloaded (cancelled); the current ones are kept.");
    }
    {
        LoopbackServer silent;
        Download d(silent.url());
        d.downloader.limitTimeout(1.5);
        d.controller->startDownloadingURL(DownloadTrigger::Forced);
        d.finish();
        EXPECT_EQ(ReadText(d.rig.paths.keplerFile), d.before);
        EXPECT_EQ(d.notice(),
                  "The element sets were not downloaded (no answer from the server within 1.5 "
                  "seconds); the current ones are kept.");
    }
}

}  // namespace
}  // namespace veloran

// The element-set download end to end: the controller, the Qt downloader and
// a one-request HTTP server on 127.0.0.1. Only a good bulletin replaces the
// element-set file; a 404 or a page without sets leaves the old one.

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QEventLoop>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTimer>

#include "data/elementfile.h"
#include "data/kepssources.h"
#include "fakes.h"
#include "platform/qtdownloader.h"

namespace veloran {
namespace {

using testing::ElementSets;
using testing::ReadText;

class OneAnswerServer {
  public:
    explicit OneAnswerServer(QByteArray response) : response_(std::move(response)) {
        server_.listen(QHostAddress::LocalHost, 0);
        QObject::connect(&server_, &QTcpServer::newConnection, [this]() {
            QTcpSocket* socket = server_.nextPendingConnection();
            QObject::connect(socket, &QTcpSocket::readyRead, [this, socket]() {
                request_ += socket->readAll();
                if (!request_.contains("\r\n\r\n")) return;
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

TEST(DownloadThroughTheController, OnlyAGoodBulletinReplacesTheFile) {
    struct Case {
        const char* label;
        QByteArray answer;
        int setsAfter;  // 0: the old file must be untouched
    };
    const Case cases[] = {
        {"success", Answer("HTTP/1.1 200 OK", ElementSets(4)), 4},
        {"404", Answer("HTTP/1.1 404 Not Found", ElementSets(4)), 0},
        {"no element sets", Answer("HTTP/1.1 200 OK", "<html>Please log in</html>\n"), 0},
    };
    for (const Case& c : cases) {
        testing::ControllerRig rig;
        OneAnswerServer server(c.answer);
        rig.defaults.setString(prefkeys::kKepsSourceURL, server.url());
        rig.app->loadKepsAndModes();
        const std::string before = ReadText(rig.paths.keplerFile);

        QEventLoop loop;
        AppController* app = nullptr;
        QtDownloader downloader([&](bool ok, const std::string& why, const std::string& url) {
            if (ok)
                app->downloadDidFinish();
            else
                app->downloadDidFail(why, url);
            loop.quit();
        });
        const Services s{.ui = &rig.ui,
                         .defaults = &rig.defaults,
                         .files = &rig.files,
                         .downloader = &downloader,
                         .clock = &rig.clock,
                         .announcer = &rig.announcer,
                         .log = rig.log};
        AppController controller(s, rig.paths);
        app = &controller;
        controller.startDownloadingURL(DownloadTrigger::Forced);
        // Only a guard against a hang: the server is local and answers at once.
        QTimer::singleShot(20000, &loop, &QEventLoop::quit);
        loop.exec();

        if (c.setsAfter > 0) {
            EXPECT_EQ(CountElementSets(rig.paths.keplerFile, 100), c.setsAfter) << c.label;
        } else {
            EXPECT_EQ(ReadText(rig.paths.keplerFile), before) << c.label;
        }
        EXPECT_FALSE(FileExists(rig.paths.downloadFile)) << c.label;
    }
}

// Cancel stops a download that has not answered yet; the old file stays and
// the operator is told.
TEST(DownloadThroughTheController, CancelKeepsTheOldFile) {
    testing::ControllerRig rig;
    QTcpServer silent;  // accepts and never answers
    ASSERT_TRUE(silent.listen(QHostAddress::LocalHost, 0));
    rig.defaults.setString(prefkeys::kKepsSourceURL,
                           "http://127.0.0.1:" + std::to_string(silent.serverPort()) + "/nasa.all");
    rig.app->loadKepsAndModes();
    const std::string before = ReadText(rig.paths.keplerFile);
    QEventLoop loop;
    bool done = false;  // an abort may complete at once, before the loop runs
    AppController* app = nullptr;
    QtDownloader downloader([&](bool ok, const std::string& why, const std::string& url) {
        EXPECT_FALSE(ok);
        app->downloadDidFail(why, url);
        done = true;
        loop.quit();
    });
    const Services s{.ui = &rig.ui,
                     .defaults = &rig.defaults,
                     .files = &rig.files,
                     .downloader = &downloader,
                     .clock = &rig.clock,
                     .announcer = &rig.announcer,
                     .log = rig.log};
    AppController controller(s, rig.paths);
    app = &controller;
    controller.startDownloadingURL(DownloadTrigger::Forced);
    controller.cancelDownload();
    QTimer::singleShot(20000, &loop, &QEventLoop::quit);
    if (!done) loop.exec();
    EXPECT_EQ(ReadText(rig.paths.keplerFile), before);
    EXPECT_EQ(rig.ui.notices.back(),
              "The element sets were not downloaded (cancelled); the current ones are kept.");
}

}  // namespace
}  // namespace veloran

// The callsign lookup against a small HTTP server on 127.0.0.1 that answers
// as the XML service does: login, an expired session renewed once, a found
// call, an unknown call, a refused password, the cache, a dead server.

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QEventLoop>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTimer>
#include <QUrlQuery>
#include <map>
#include <vector>

#include "../data/scratch.h"
#include "data/files.h"
#include "platform/qtcallbook.h"

namespace veloran {
namespace {

const char kHead[] = "<?xml version=\"1.0\"?><HamQTH version=\"2.8\">";

// Answers each GET from the query string; remembers the queries.
class FakeService {
  public:
    FakeService() {
        server_.listen(QHostAddress::LocalHost, 0);
        QObject::connect(&server_, &QTcpServer::newConnection, [this] {
            QTcpSocket* socket = server_.nextPendingConnection();
            QObject::connect(socket, &QTcpSocket::readyRead, [this, socket] {
                request_ += socket->readAll();
                if (!request_.contains("\r\n\r\n")) return;
                const QByteArray target = request_.split(' ').value(1);
                request_.clear();
                const QUrlQuery query(QUrl(QString::fromLatin1(target)).query());
                queries.push_back(query.toString().toStdString());
                const std::string body = kHead + answer(query) + "</HamQTH>";
                socket->write(
                    "HTTP/1.1 200 OK\r\nContent-Type: text/xml\r\nConnection: close\r\n"
                    "Content-Length: " +
                    QByteArray::number(static_cast<int>(body.size())) + "\r\n\r\n" +
                    QByteArray::fromStdString(body));
                socket->disconnectFromHost();
            });
        });
    }
    std::string url() const {
        return "http://127.0.0.1:" + std::to_string(server_.serverPort()) + "/xml.php";
    }
    std::vector<std::string> queries;

  private:
    std::string answer(const QUrlQuery& q) {
        if (q.hasQueryItem("u")) {
            if (q.queryItemValue("p") != "s3cret")
                return "<session><error>Wrong user name or password</error></session>";
            return "<session><session_id>S" + std::to_string(++sessions_) +
                   "</session_id></session>";
        }
        // The first session has already expired when it is used.
        if (q.queryItemValue("id") != "S2")
            return "<session><error>Session does not exist or expired</error></session>";
        if (q.queryItemValue("callsign") != "OK7AN")
            return "<session><error>Callsign not found</error></session>";
        return "<search><callsign>ok7an</callsign><nick>Petr</nick><qth>Neratovice</qth>"
               "<grid>JO70GG</grid></search>";
    }
    QTcpServer server_;
    QByteArray request_;
    int sessions_ = 0;
};

struct Answer {
    QtCallbook::Result result = QtCallbook::Result::Failed;
    CallbookRecord record;
    std::string error;
    bool came = false;
};

Answer Lookup(QtCallbook* callbook, const std::string& call) {
    Answer answer;
    QEventLoop loop;
    const bool started = callbook->lookup(
        call, 1000, [&](QtCallbook::Result r, const CallbookRecord& rec, const std::string& e) {
            answer = {r, rec, e, true};
            loop.quit();
        });
    EXPECT_TRUE(started) << call;
    // Only a guard against a hang: the server is local and answers at once.
    QTimer::singleShot(30000, &loop, &QEventLoop::quit);
    if (started && !answer.came) loop.exec();
    EXPECT_TRUE(answer.came) << call;
    return answer;
}

TEST(QtCallbook, TalksToTheServiceAndCaches) {
    FakeService service;
    testing::ScratchDir dir;
    CallbookSettings settings;
    settings.enabled = true;
    settings.user = "ve3xyz";
    settings.password = "s3cret";
    settings.url = service.url();
    QtCallbook callbook(settings, dir.file("callbook.xml"));

    Answer a = Lookup(&callbook, "ok7an");
    ASSERT_EQ(a.result, QtCallbook::Result::Found) << a.error;
    EXPECT_EQ(a.record.name, "Petr");
    EXPECT_EQ(a.record.grid, "JO70GG");
    // Login, search refused as expired, login again, search.
    EXPECT_EQ(service.queries.size(), 4u);
    EXPECT_EQ(Lookup(&callbook, "OK7AN").record.qth, "Neratovice");
    EXPECT_EQ(service.queries.size(), 4u);  // from the cache
    EXPECT_EQ(Lookup(&callbook, "Q1XYZ").result, QtCallbook::Result::NotFound);
    EXPECT_EQ(service.queries.back(), "id=S2&callsign=Q1XYZ&prg=Veloran");
    EXPECT_FALSE(FileExists(dir.file("callbook.xml")));

    settings.password = "wrong";
    QtCallbook refused(settings, dir.file("callbook.xml"));
    a = Lookup(&refused, "OK7AN");
    EXPECT_EQ(a.result, QtCallbook::Result::Failed);
    EXPECT_EQ(a.error, "callsign lookup failed: Wrong user name or password");

    settings.url = "http://127.0.0.1:1/xml.php";  // nothing listens there
    QtCallbook dead(settings, dir.file("callbook.xml"));
    a = Lookup(&dead, "OK7AN");
    EXPECT_EQ(a.result, QtCallbook::Result::Failed);
    EXPECT_NE(a.error.find("callsign lookup failed: "), std::string::npos);

    settings.enabled = false;
    QtCallbook off(settings, dir.file("callbook.xml"));
    EXPECT_FALSE(off.lookup("OK7AN", 1000, [](auto, const auto&, const auto&) {}));
}

}  // namespace
}  // namespace veloran

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}

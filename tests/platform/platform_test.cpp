// The Qt platform services: the settings file, the port list, the download
// over loopback HTTP, silent speech and sounds on a machine without audio,
// and the decimal point under a German desktop locale.

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTemporaryDir>
#include <clocale>
#include <cstdio>
#include <cstring>
#include <string>

#include "data/files.h"
#include "data/kepsimport.h"
#include "data/kepssources.h"
#include "platform/numericlocale.h"
#include "platform/qtdownloader.h"
#include "platform/qtserialports.h"
#include "platform/qtsounds.h"
#include "platform/qtspeech.h"
#include "platform/qtuserdefaults.h"

namespace veloran {
namespace {

// Runs the event loop until `done` or about ten seconds have passed; the
// bound only keeps a broken build from hanging the suite.
template <typename Done>
bool SpinUntil(Done done) {
    QElapsedTimer timer;
    timer.start();
    while (!done() && timer.elapsed() < 10000)
        QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
    return done();
}

TEST(NumericLocale, DecimalPointIsAPointAgain) {
    // main() created the application under LC_ALL=de_DE.UTF-8 and then
    // restored LC_NUMERIC, as the programs do.
    char text[32];
    std::snprintf(text, sizeof text, "%.1f", 145.9);
    EXPECT_STREQ(text, "145.9");
    if (std::setlocale(LC_NUMERIC, "de_DE.UTF-8") == nullptr)
        GTEST_SKIP() << "de_DE locale not installed";
    std::snprintf(text, sizeof text, "%.1f", 145.9);
    EXPECT_STREQ(text, "145,9") << "the hazard the platform layer guards against";
    UseCNumericLocale();
    std::snprintf(text, sizeof text, "%.1f", 145.9);
    EXPECT_STREQ(text, "145.9");
}

TEST(Settings, ValuesSurviveAReopenAndKeepTheirPoint) {
    QTemporaryDir dir;
    const std::string path = dir.path().toStdString() + "/Veloran.conf";
    {
        QtUserDefaults defaults(path);
        defaults.setDouble("site_latitude", 43.7064);
        defaults.setBool("vfo_enabled", true);
        defaults.setInteger("radio", 7);
        defaults.setString("userCallSign", "VE3XYZ");
        defaults.setString("2D_Visible_Rect", "0.000000 0.000000 1024.000000 512.000000");
        defaults.setString("tweaks/AO-7", "0.001000 -0.002000 0.000000\t");
        std::string error;
        ASSERT_TRUE(defaults.sync(&error)) << error;
    }
    QFile file(QString::fromStdString(path));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const QByteArray text = file.readAll();
    EXPECT_TRUE(text.contains("43.7064")) << text.constData();
    EXPECT_FALSE(text.contains("43,7064"));

    QtUserDefaults again(path);
    double latitude = 0;
    ASSERT_TRUE(again.readDouble("site_latitude", &latitude));
    EXPECT_DOUBLE_EQ(latitude, 43.7064);
    EXPECT_TRUE(again.boolForKey("vfo_enabled"));
    EXPECT_EQ(again.integerForKey("radio"), 7);
    EXPECT_EQ(again.stringForKey("userCallSign"), "VE3XYZ");
    EXPECT_EQ(again.stringForKey("2D_Visible_Rect"), "0.000000 0.000000 1024.000000 512.000000");
    EXPECT_EQ(again.stringForKey("tweaks/AO-7"), "0.001000 -0.002000 0.000000\t");
    EXPECT_FALSE(again.contains("rotor"));
    again.removeKey("radio");
    EXPECT_FALSE(again.contains("radio"));
}

TEST(Settings, UnwritableFolderIsReportedNotLost) {
    // A "folder" that is a plain file cannot hold the settings, even for root.
    QTemporaryDir dir;
    const std::string notAFolder = dir.path().toStdString() + "/plain-file";
    ASSERT_TRUE(AtomicWriteFile(notAFolder, [](FILE*) { return true; }));
    QtUserDefaults defaults(notAFolder + "/Veloran.conf");
    defaults.setInteger("radio", 3);
    std::string error;
    EXPECT_FALSE(defaults.sync(&error));
    EXPECT_FALSE(error.empty());
    EXPECT_EQ(defaults.integerForKey("radio"), 3) << "kept in memory";
}

TEST(SerialPorts, AtMostTheTableAndInAStableOrder) {
    PortNameRecord ports[kMaxSerialPorts]{};
    QtSerialPortList list;
    const int n = list.findPorts(ports, kMaxSerialPorts);
    EXPECT_GE(n, 0);
    EXPECT_LE(n, kMaxSerialPorts);
    for (int i = 1; i < n; ++i) EXPECT_LT(std::strcmp(ports[i - 1].bsdPath, ports[i].bsdPath), 0);
    EXPECT_LE(list.findPorts(ports, 1), 1);
}

// A one-request HTTP server on loopback.
class TinyHttp {
  public:
    explicit TinyHttp(QByteArray response) : response_(std::move(response)) {
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
    std::string url(const char* path) const {
        return "http://127.0.0.1:" + std::to_string(server_.serverPort()) + path;
    }

  private:
    QTcpServer server_;
    QByteArray response_;
    QByteArray request_;
};

TEST(Download, WritesTheBodyOnlyWhenTheServerSaysOk) {
    QTemporaryDir dir;
    const std::string target = dir.path().toStdString() + "/nasa.all";
    const QByteArray body = "AO-7\n1 07530U ...\n";
    TinyHttp ok("HTTP/1.1 200 OK\r\nContent-Length: " + QByteArray::number(body.size()) +
                "\r\nConnection: close\r\n\r\n" + body);
    int calls = 0;
    bool succeeded = false;
    std::string error;
    QtDownloader downloader([&](bool good, const std::string& why, const std::string&) {
        ++calls;
        succeeded = good;
        error = why;
    });
    ASSERT_TRUE(downloader.start(ok.url("/amsat/ftp/keps/current/nasa.all"), target, 60.0));
    EXPECT_FALSE(downloader.start(ok.url("/again"), target, 60.0)) << "one download at a time";
    ASSERT_TRUE(SpinUntil([&] { return calls > 0; }));
    EXPECT_TRUE(succeeded) << error;
    std::string written;
    ASSERT_TRUE(ReadWholeFile(target, &written));
    EXPECT_EQ(written, body.toStdString());

    // A missing file on the server leaves the earlier download as it was.
    TinyHttp missing("HTTP/1.1 404 Not Found\r\nContent-Length: 0\r\nConnection: close\r\n\r\n");
    calls = 0;
    ASSERT_TRUE(downloader.start(missing.url("/nasa.all"), target, 60.0));
    ASSERT_TRUE(SpinUntil([&] { return calls > 0; }));
    EXPECT_FALSE(succeeded);
    EXPECT_FALSE(error.empty());
    ASSERT_TRUE(ReadWholeFile(target, &written));
    EXPECT_EQ(written, body.toStdString());

    EXPECT_FALSE(downloader.start("not a url", target, 60.0));
}

TEST(Download, FollowsARedirect) {
    QTemporaryDir dir;
    const std::string target = dir.path().toStdString() + "/nasa.all";
    TinyHttp final("HTTP/1.1 200 OK\r\nContent-Length: 5\r\nConnection: close\r\n\r\nkeps\n");
    TinyHttp moved(QByteArray("HTTP/1.1 301 Moved Permanently\r\nLocation: ") +
                   QByteArray::fromStdString(final.url("/new/nasa.all")) +
                   "\r\nContent-Length: 0\r\nConnection: close\r\n\r\n");
    bool done = false, good = false;
    QtDownloader downloader([&](bool ok, const std::string&, const std::string&) {
        done = true;
        good = ok;
    });
    ASSERT_TRUE(downloader.start(moved.url("/nasa.all"), target, 60.0));
    ASSERT_TRUE(SpinUntil([&] { return done; }));
    EXPECT_TRUE(good);
    std::string written;
    ASSERT_TRUE(ReadWholeFile(target, &written));
    EXPECT_EQ(written, "keps\n");
}

// Every answer but a plain 200 within 32 MB is refused and leaves the
// destination alone; the status is kept for the automatic-update rule.
TEST(Download, RefusesWhatTheRulesDoNotAllow) {
    const QByteArray huge(kMaxDownloadBytes + 1, 'x');
    const struct {
        const char* label;
        QByteArray answer;
        const char* says;
        int status;
    } cases[] = {
        {"missing", "HTTP/1.1 404 Not Found\r\nContent-Length: 0\r\n\r\n", "404", 404},
        {"no content", "HTTP/1.1 204 No Content\r\n\r\n", "204", 204},
        {"to plain http",
         "HTTP/1.1 302 Found\r\nLocation: http://example.invalid/nasa.all\r\n"
         "Content-Length: 0\r\n\r\n",
         "https only", 302},
        {"announced too big", "HTTP/1.1 200 OK\r\nContent-Length: 40000000\r\n\r\n",
         "larger than 32 MB", 200},
        {"too big", "HTTP/1.1 200 OK\r\nConnection: close\r\n\r\n" + huge, "larger than 32 MB",
         200},
    };
    for (const auto& c : cases) {
        QTemporaryDir dir;
        const std::string target = dir.path().toStdString() + "/nasa.all";
        QFile old(QString::fromStdString(target));
        ASSERT_TRUE(old.open(QIODevice::WriteOnly));
        old.write("old\n");
        old.close();
        TinyHttp server(c.answer);
        bool done = false, ok = true;
        std::string why;
        QtDownloader downloader([&](bool good, const std::string& reason, const std::string&) {
            done = true;
            ok = good;
            why = reason;
        });
        ASSERT_TRUE(downloader.start(server.url("/nasa.all"), target, 60.0)) << c.label;
        ASSERT_TRUE(SpinUntil([&] { return done; })) << c.label;
        EXPECT_FALSE(ok) << c.label;
        EXPECT_NE(why.find(c.says), std::string::npos) << c.label << ": " << why;
        EXPECT_EQ(downloader.lastStatus(), c.status) << c.label;
        std::string written;
        ASSERT_TRUE(ReadWholeFile(target, &written));
        EXPECT_EQ(written, "old\n") << c.label;
    }
    QtDownloader downloader(nullptr);
    EXPECT_FALSE(downloader.start("http://example.invalid/nasa.all", "/tmp/x", 60.0))
        << "plain http off the loopback host";
}

// An empty 200 is a download, but not an element-set file: the install
// refuses it and the current sets stay.
TEST(Download, AnEmptyAnswerInstallsNothing) {
    QTemporaryDir dir;
    const std::string folder = dir.path().toStdString();
    TinyHttp empty("HTTP/1.1 200 OK\r\nContent-Length: 0\r\n\r\n");
    bool done = false, ok = false;
    QtDownloader downloader([&](bool good, const std::string&, const std::string&) {
        done = true;
        ok = good;
    });
    ASSERT_TRUE(downloader.start(empty.url("/nasa.all"), folder + "/download", 60.0));
    ASSERT_TRUE(SpinUntil([&] { return done; }));
    ASSERT_TRUE(ok);
    EXPECT_EQ(downloader.lastStatus(), 200);
    QFile current(QString::fromStdString(folder + "/kepler.dat"));
    ASSERT_TRUE(current.open(QIODevice::WriteOnly));
    current.write("current\n");
    current.close();
    KepsInstall request;
    request.source = folder + "/download";
    request.sourceLabel = empty.url("/nasa.all");
    request.keplerFile = folder + "/kepler.dat";
    KepsInstallResult result;
    EXPECT_FALSE(InstallElementSets(request, &result));
    EXPECT_NE(result.message.find("holds no element set"), std::string::npos) << result.message;
    std::string kept;
    ASSERT_TRUE(ReadWholeFile(folder + "/kepler.dat", &kept));
    EXPECT_EQ(kept, "current\n");
}

TEST(Speech, NeverLeavesTheAnnouncementThreadWaitingForever) {
    // With or without an audio device, speaking ends: a machine without one
    // stays silent instead of blocking the queue.
    QtSpeech speech;
    // Any voice, known or not, and a rate out of range are taken calmly,
    // before the engine is up as after.
    speech.setVoice("no such voice", 5.0);
    for (const std::string& voice : speech.voices()) speech.setVoice(voice, -0.5);
    speech.speak("AO-7 is visible.");
    EXPECT_TRUE(speech.isSpeaking()) << "busy from the moment it is asked";
    speech.stop();
    EXPECT_TRUE(SpinUntil([&] { return !speech.isSpeaking(); }));
}

TEST(Sounds, MissingOrUnplayableSoundsAreSilence) {
    QtSoundPlayer missing("/nonexistent/sounds");
    missing.play(2);
    EXPECT_TRUE(SpinUntil([&] { return !missing.isPlaying(); }));
    missing.play(0);
    missing.play(9);
    EXPECT_FALSE(missing.isPlaying()) << "only the four chimes exist";

    QtSoundPlayer bundled(std::string(VELORAN_RESOURCE_DIR) + "/sounds");
    bundled.play(4);
    EXPECT_TRUE(SpinUntil([&] { return !bundled.isPlaying(); }));
}

}  // namespace
}  // namespace veloran

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    veloran::UseCNumericLocale();
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}

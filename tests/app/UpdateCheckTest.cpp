#include "AppFixture.h"

#include "app/UpdateCheck.h"
#include "codec/PropertyList.h"

#include <QElapsedTimer>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTimer>
#include <tuple>

namespace korvane {

namespace {

// Answers a request on 127.0.0.1 with one HTTP/1.0 response, never (Silent), or with a body that
// does not end (Endless: a piece whenever the last one has gone out, up to 128 MB). sent counts
// what reached the connection.
class VersionServer {
public:
    enum Mode { Answer, Silent, Endless };
    explicit VersionServer(const QByteArray &body, int status = 200, Mode mode = Answer)
    {
        QByteArray response = "HTTP/1.0 " + QByteArray::number(status) + " X\r\n";
        if (mode != Endless)
            response += "Content-Length: " + QByteArray::number(body.size()) + "\r\n";
        response += "\r\n" + body;
        m_server.listen(QHostAddress::LocalHost, 0);
        QObject::connect(&m_server, &QTcpServer::newConnection, [this, response, mode] {
            QTcpSocket *socket = m_server.nextPendingConnection();
            ++requests;
            QObject::connect(socket, &QTcpSocket::bytesWritten, [this, socket, mode](qint64 n) {
                if ((sent += n) < 128 << 20 && mode == Endless && socket->bytesToWrite() == 0)
                    socket->write(QByteArray(64 * 1024, '<'));
            });
            QObject::connect(socket, &QTcpSocket::readyRead, [socket, response, mode] {
                if (mode == Silent || !socket->peek(4096).contains("\r\n\r\n"))
                    return;
                socket->readAll();
                socket->write(response);
                if (mode == Answer)
                    socket->disconnectFromHost();
            });
        });
    }
    QByteArray url() const
    {
        return "http://127.0.0.1:" + QByteArray::number(m_server.serverPort()) + "/v.plist";
    }
    int requests = 0;
    qint64 sent = 0;

private:
    QTcpServer m_server;
};

QByteArray listing(const QString &version)
{
    return PropertyList::toXml(QVariantMap{{"KorvaneOSX", version}});
}

const QString kNoConnection = "Could not connect to the internet";
const QString kUpToDate = "You have the most recent version of \"Korvane\".";
const QString kNewVersion = "A new version of \"Korvane\" is available (version %1). Would you "
                            "like to download the new version now?";
const QUrl kDownload("http://127.0.0.1:9/download.html");

} // namespace

class UpdateCheckTest : public AppTest {
protected:
    // The message of the one alert a check against a server with this body showed.
    QString check(const QByteArray &body, const QString &installed = "1.2", int status = 200,
                  VersionServer::Mode mode = VersionServer::Answer)
    {
        ui.alerts.clear();
        VersionServer server(body, status, mode);
        UpdateCheck update(ui);
        update.setVersionListUrl(QUrl(server.url()));
        update.setDownloadUrl(kDownload);
        update.setInstalledVersion(installed);
        if (mode == VersionServer::Silent)
            update.setTimeoutMs(300);
        update.run();
        EXPECT_EQ(server.requests, 1);
        EXPECT_LT(server.sent, 16 * 1024 * 1024); // an endless reply is cut off early
        EXPECT_EQ(ui.alerts.size(), 1);
        return ui.alerts.value(0).messageText;
    }
};

TEST_F(UpdateCheckTest, ComparesTheListedVersionAsAnExactStringAndOnlyOKOpensTheDownload)
{
    EXPECT_EQ(check(listing("1.2")), kUpToDate);
    EXPECT_EQ(check(listing("1.1")), kNewVersion.arg("1.1"));
    EXPECT_EQ(check(listing("1.2.0")), kNewVersion.arg("1.2.0"));
    EXPECT_EQ(check(listing("1.2"), "1.2.0"), kNewVersion.arg("1.2"));
    EXPECT_EQ(check(PropertyList::toXml(QVariantMap{{"Other", "1.2"}})),
              kNewVersion.arg("")); // no key
    // A long version is cut short; markup is text like any other.
    EXPECT_EQ(check(listing(QString(1000, '9'))),
              kNewVersion.arg(QString(64, '9') + QChar(0x2026)));
    ui.alertAnswers << AlertAnswer::Alternate;
    EXPECT_EQ(check(listing("<b>2.0</b>")), kNewVersion.arg("<b>2.0</b>"));
    // Every "new version" panel but the last was answered with OK; Cancel opens nothing.
    EXPECT_EQ(ui.openedUrls, QList<QUrl>(5, kDownload));
}

TEST_F(UpdateCheckTest, AnythingButAVersionDictionaryInTimeIsNoConnection)
{
    using Mode = VersionServer::Mode;
    EXPECT_EQ(check(PropertyList::toXml(QVariantList{"KorvaneOSX", "1.2"})), kNoConnection);
    EXPECT_EQ(check("<html>\x01\xff not a list"), kNoConnection);
    EXPECT_EQ(check(listing("1.2"), "1.2", 404), kNoConnection);
    // Too long to be a version list, however well formed.
    EXPECT_EQ(check(listing(QString(5 * 1024 * 1024, '1'))), kNoConnection);
    EXPECT_EQ(check("<", "1.2", 200, Mode::Endless), kNoConnection);
    QElapsedTimer clock;
    clock.start();
    EXPECT_EQ(check(listing("1.2"), "1.2", 200, Mode::Silent), kNoConnection);
    EXPECT_LT(clock.elapsed(), 5000);
    UpdateCheck refused(ui); // nothing listens on port 1
    refused.setVersionListUrl(QUrl("http://127.0.0.1:1/v.plist"));
    ui.alerts.clear();
    refused.run();
    EXPECT_EQ(ui.alerts.value(0).messageText, kNoConnection);
}

// The command once froze the window for the whole time-out; now the event loop runs on, Cancel
// ends the wait, and a check at start-up speaks only of a newer version.
TEST_F(UpdateCheckTest, TheFetchLeavesTheEventLoopRunningCancelEndsItAndStartUpSpeaksOnlyOfNews)
{
    VersionServer silent(listing("1.2"), 200, VersionServer::Silent);
    UpdateCheck update(ui);
    update.setVersionListUrl(QUrl(silent.url()));
    int answers = 0;
    update.start([&](const std::optional<QVariantMap> &) { ++answers; });
    EXPECT_TRUE(update.isRunning());
    QEventLoop loop;
    bool ticked = false;
    QTimer::singleShot(200, &loop, [&] {
        ticked = true; // the loop is free while the server keeps silent
        update.cancel();
        loop.quit();
    });
    loop.exec();
    EXPECT_TRUE(ticked);
    EXPECT_EQ(silent.requests, 1);
    EXPECT_FALSE(update.isRunning());
    QCoreApplication::processEvents();
    EXPECT_EQ(answers, 0); // cancelled: nothing is said

    using Asked = UpdateCheck::Asked;
    for (const auto &[body, status, alerts] :
         {std::tuple{listing("1.2"), 200, 0}, {listing("1.1"), 404, 0}, {listing("1.3"), 200, 1}}) {
        VersionServer server(body, status);
        update.setVersionListUrl(QUrl(server.url()));
        update.setInstalledVersion("1.2");
        ui.alerts.clear();
        update.run(Asked::AtStartup);
        EXPECT_EQ(server.requests, 1);
        EXPECT_EQ(ui.alerts.size(), alerts) << body.toStdString();
    }
    EXPECT_EQ(ui.alertMessages(), QStringList{kNewVersion.arg("1.3")});
}

// A build without an update address asks no server: its updates come from the distribution or
// the vendor, and "Could not connect to the internet" was a lie told to every user.
TEST_F(UpdateCheckTest, WithoutAConfiguredAddressTheCommandSaysWhereUpdatesComeFrom)
{
    UpdateCheck builtIn(ui);
    if (builtIn.isConfigured())
        GTEST_SKIP() << "this build names an update address";
    builtIn.run(UpdateCheck::Asked::AtStartup);
    EXPECT_TRUE(ui.alerts.isEmpty());
    builtIn.run();
    EXPECT_EQ(ui.alertMessages(),
              QStringList{"Updates of Korvane come from your distribution or vendor"});
}

} // namespace korvane

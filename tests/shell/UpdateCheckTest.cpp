#include "ShellFixture.h"

#include "platform/PropertyList.h"
#include "shell/MyMainObj.h"
#include "shell/UpdateCheck.h"

#include <QElapsedTimer>
#include <QTcpServer>
#include <QTcpSocket>

namespace korvane {

namespace {

QByteArray urlOn(quint16 port)
{
    return "http://127.0.0.1:" + QByteArray::number(port) + "/v.plist";
}

// Answers each request on 127.0.0.1 with one HTTP/1.0 response, or never when silent.
class VersionServer {
public:
    explicit VersionServer(const QByteArray &body, int status = 200, bool silent = false)
    {
        const QByteArray response = "HTTP/1.0 " + QByteArray::number(status)
                                    + " X\r\nContent-Length: " + QByteArray::number(body.size())
                                    + "\r\n\r\n" + body;
        m_server.listen(QHostAddress::LocalHost, 0);
        QObject::connect(&m_server, &QTcpServer::newConnection, [this, response, silent] {
            while (QTcpSocket *socket = m_server.nextPendingConnection()) {
                ++requests;
                if (!silent)
                    QObject::connect(socket, &QTcpSocket::readyRead, socket, [socket, response] {
                        if (socket->peek(4096).contains("\r\n\r\n")) {
                            socket->write(response);
                            socket->disconnectFromHost();
                        }
                    });
            }
        });
        qputenv("KORVANE_UPDATE_URL", urlOn(m_server.serverPort()));
    }
    int requests = 0;

private:
    QTcpServer m_server;
};

// Answers with a body that does not end: a piece whenever the last one has gone out, until the
// client hangs up or cap bytes went. sent counts what reached the connection.
class StreamingServer {
public:
    explicit StreamingServer(qint64 cap) : m_piece(64 * 1024, '<')
    {
        m_server.listen(QHostAddress::LocalHost, 0);
        QObject::connect(&m_server, &QTcpServer::newConnection, [this, cap] {
            while (QTcpSocket *socket = m_server.nextPendingConnection()) {
                const auto pump = [this, socket, cap] {
                    if (socket->state() == QAbstractSocket::ConnectedState
                        && socket->bytesToWrite() == 0 && queued < cap)
                        queued += socket->write(m_piece);
                };
                QObject::connect(socket, &QTcpSocket::bytesWritten, socket, [this, pump](qint64 n) {
                    sent += n;
                    pump();
                });
                QObject::connect(socket, &QTcpSocket::readyRead, socket, [socket, pump] {
                    if (socket->readAll().contains("\r\n\r\n")) {
                        socket->write("HTTP/1.0 200 OK\r\nContent-Type: text/xml\r\n\r\n");
                        pump();
                    }
                });
            }
        });
        qputenv("KORVANE_UPDATE_URL", urlOn(m_server.serverPort()));
    }
    qint64 sent = 0;
    qint64 queued = 0;

private:
    QTcpServer m_server;
    QByteArray m_piece;
};

QByteArray listing(const QString &version)
{
    return PropertyList::toXml(QVariantMap{{"KorvaneOSX", version}});
}

const QStringList kNoConnection = {"Update check", "Could not connect to the internet", "", "Ok"};
const QStringList kUpToDate = {"Your Software is up-to-date",
                               "You have the most recent version of \"Korvane\".", "", "OK"};
QStringList newVersion(const QString &version)
{
    return {"A New Version is Available",
            QStringLiteral("A new version of \"Korvane\" is available (version %1). Would you like "
                           "to download the new version now?")
                .arg(version),
            "", "OK|Cancel"};
}

} // namespace

class UpdateCheckTest : public ShellTest {
protected:
    void SetUp() override
    {
        ShellTest::SetUp();
        qputenv("KORVANE_DOWNLOAD_URL", "http://127.0.0.1:9/download.html");
    }

    // The texts of the one alert a check against a server with this body showed.
    QStringList check(const QByteArray &body, const QString &installed = "1.2", int status = 200,
                      bool silent = false)
    {
        ui.alerts.clear();
        VersionServer server(body, status, silent);
        UpdateCheck update(ui);
        update.setInstalledVersion(installed);
        if (silent)
            update.setTimeoutMs(300);
        update.run();
        EXPECT_EQ(server.requests, 1);
        EXPECT_EQ(ui.alerts.size(), 1);
        return texts(ui.alerts.value(0));
    }
};

TEST_F(UpdateCheckTest, ComparesTheListedVersionAsAnExactStringAndOnlyOKOpensTheDownload)
{
    EXPECT_EQ(check(listing("1.2")), kUpToDate);
    EXPECT_EQ(check(listing("1.1")), newVersion("1.1"));
    EXPECT_EQ(check(listing("1.2.0")), newVersion("1.2.0"));
    EXPECT_EQ(check(listing("1.2"), "1.2.0"), newVersion("1.2"));
    EXPECT_EQ(check(PropertyList::toXml(QVariantMap{{"Other", "1.2"}})), newVersion("")); // no key
    // A long version is cut short; markup is text like any other.
    EXPECT_EQ(check(listing(QString(1000, '9'))), newVersion(QString(64, '9') + QChar(0x2026)));
    ui.alertAnswers << AlertAlternate;
    EXPECT_EQ(check(listing("<b>2.0</b>")), newVersion("<b>2.0</b>"));
    // Each "new version" panel above was answered with OK; Cancel opens nothing.
    EXPECT_EQ(ui.openedUrls, QList<QUrl>(5, QUrl("http://127.0.0.1:9/download.html")));
    ui.alertAnswers << AlertAlternate;
    EXPECT_EQ(check(listing("2.0")), newVersion("2.0"));
    EXPECT_EQ(ui.openedUrls.size(), 5);

    // The menu command compares with the program's own version.
    VersionServer server(listing(UpdateCheck::programVersion()));
    makeContext().main()->checkForUpdate();
    EXPECT_EQ(texts(ui.alerts.last()), kUpToDate);
    EXPECT_EQ(ui.alerts.size(), 2);
}

TEST_F(UpdateCheckTest, AnythingButAVersionDictionaryInTimeIsNoConnection)
{
    EXPECT_EQ(check(PropertyList::toXml(QVariantList{"KorvaneOSX", "1.2"})), kNoConnection);
    EXPECT_EQ(check("<html>\x01\xff not a list"), kNoConnection);
    EXPECT_EQ(check(listing("1.2"), "1.2", 404), kNoConnection);
    // Too long to be a version list, however well formed.
    EXPECT_EQ(check(listing(QString(5 * 1024 * 1024, '1'))), kNoConnection);
    QElapsedTimer clock;
    clock.start();
    EXPECT_EQ(check(listing("1.2"), "1.2", 200, true), kNoConnection); // accepts, never answers
    EXPECT_LT(clock.elapsed(), 5000);

    quint16 port = 0;
    {
        QTcpServer probe; // free a moment ago, and nothing listens there now
        ASSERT_TRUE(probe.listen(QHostAddress::LocalHost, 0));
        port = probe.serverPort();
    }
    qputenv("KORVANE_UPDATE_URL", urlOn(port));
    UpdateCheck(ui).run();
    ASSERT_EQ(ui.alerts.size(), 2);
    EXPECT_EQ(texts(ui.alerts.last()), kNoConnection);
}

TEST_F(UpdateCheckTest, AnEndlessReplyIsCutOffEarlyAndTheBuiltInAddressesAreHttps)
{
    ui.alerts.clear();
    StreamingServer server(128 * 1024 * 1024);
    UpdateCheck(ui).run();
    EXPECT_EQ(ui.alerts.size(), 1);
    EXPECT_EQ(texts(ui.alerts.value(0)), kNoConnection);
    // The client hung up after the first pieces instead of taking everything in.
    EXPECT_GT(server.sent, 0);
    EXPECT_LT(server.sent, 16 * 1024 * 1024);

    for (const char *name : {"KORVANE_UPDATE_URL", "KORVANE_DOWNLOAD_URL"})
        qunsetenv(name);
    const UpdateCheck builtIn(ui);
    for (const QUrl &url : {builtIn.versionListUrl(), builtIn.downloadUrl()}) {
        EXPECT_EQ(url.scheme(), "https") << url.toString().toStdString();
        EXPECT_FALSE(QHostAddress(url.host()).isLoopback()) << url.toString().toStdString();
    }
}

} // namespace korvane

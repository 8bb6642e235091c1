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
                           "to download the new version now?").arg(version),
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
        UpdateCheck update;
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
    // Each "new version" panel above was answered with OK; Cancel opens nothing.
    EXPECT_EQ(ui.openedUrls, QList<QUrl>(4, QUrl("http://127.0.0.1:9/download.html")));
    ui.alertAnswers << AlertAlternate;
    EXPECT_EQ(check(listing("2.0")), newVersion("2.0"));
    EXPECT_EQ(ui.openedUrls.size(), 4);

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
    UpdateCheck().run();
    ASSERT_EQ(ui.alerts.size(), 2);
    EXPECT_EQ(texts(ui.alerts.last()), kNoConnection);
}

} // namespace korvane

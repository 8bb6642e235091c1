#include "ShellFixture.h"

#include "platform/PropertyList.h"
#include "shell/MyMainObj.h"
#include "shell/UpdateCheck.h"

#include <QElapsedTimer>
#include <QTcpServer>
#include <QTcpSocket>

namespace korvane {

namespace {

QByteArray versionList(const QVariantMap &entries)
{
    return PropertyList::toXml(entries);
}

// Answers every request on 127.0.0.1 with one HTTP/1.0 response, or never when silent.
class VersionServer {
public:
    explicit VersionServer(const QByteArray &body, int status = 200, bool silent = false)
    {
        m_response = QByteArray("HTTP/1.0 ") + QByteArray::number(status) + " Status\r\n"
                     + "Content-Type: text/xml\r\nContent-Length: " + QByteArray::number(body.size())
                     + "\r\n\r\n" + body;
        m_server.listen(QHostAddress::LocalHost, 0);
        QObject::connect(&m_server, &QTcpServer::newConnection, [this, silent] {
            while (QTcpSocket *socket = m_server.nextPendingConnection()) {
                ++requests;
                if (silent)
                    continue;
                QObject::connect(socket, &QTcpSocket::readyRead, socket, [this, socket] {
                    m_request += socket->readAll();
                    if (!m_request.contains("\r\n\r\n"))
                        return;
                    socket->write(m_response);
                    socket->disconnectFromHost();
                });
            }
        });
    }

    bool listening() const { return m_server.isListening(); }
    QString url() const
    {
        return QStringLiteral("http://127.0.0.1:%1/versions.plist").arg(m_server.serverPort());
    }

    int requests = 0;

private:
    QTcpServer m_server;
    QByteArray m_response;
    QByteArray m_request;
};

const QString kDownload = QStringLiteral("http://127.0.0.1:9/download.html");

QString newVersionMessage(const QString &version)
{
    return QStringLiteral("A new version of \"Korvane\" is available (version %1). Would you like "
                          "to download the new version now?")
        .arg(version);
}

} // namespace

class UpdateCheckTest : public ShellTest {
protected:
    void SetUp() override
    {
        ShellTest::SetUp();
        qputenv("KORVANE_DOWNLOAD_URL", kDownload.toUtf8());
    }
    void TearDown() override
    {
        qunsetenv("KORVANE_UPDATE_URL");
        qunsetenv("KORVANE_DOWNLOAD_URL");
        ShellTest::TearDown();
    }

    // Runs the check against a server listing the given version list.
    void check(VersionServer &server, const QString &installed)
    {
        ASSERT_TRUE(server.listening());
        qputenv("KORVANE_UPDATE_URL", server.url().toUtf8());
        UpdateCheck update;
        update.setInstalledVersion(installed);
        update.run();
    }

    void expectNoConnection()
    {
        ASSERT_EQ(ui.alerts.size(), 1);
        EXPECT_EQ(ui.alerts.first().title, "Update check");
        EXPECT_EQ(ui.alerts.first().messageText, "Could not connect to the internet");
        EXPECT_EQ(ui.alerts.first().buttons, QStringList{"Ok"});
        EXPECT_TRUE(ui.openedUrls.isEmpty());
    }
};

TEST_F(UpdateCheckTest, TheSameVersionIsUpToDate)
{
    VersionServer server(versionList({{"KorvaneOSX", "1.2"}}));
    check(server, "1.2");
    EXPECT_EQ(server.requests, 1);
    ASSERT_EQ(ui.alerts.size(), 1);
    EXPECT_EQ(ui.alerts.first().title, "Your Software is up-to-date");
    EXPECT_EQ(ui.alerts.first().messageText, "You have the most recent version of \"Korvane\".");
    EXPECT_EQ(ui.alerts.first().buttons, QStringList{"OK"});
    EXPECT_TRUE(ui.openedUrls.isEmpty());
}

TEST_F(UpdateCheckTest, AnyDifferenceOffersTheListedVersion)
{
    const QList<QPair<QString, QString>> cases = {{"1.2", "1.1"}, {"1.2", "1.2.0"}, {"1.2", "1.3"}};
    for (const auto &[installed, listed] : cases) {
        ui.alerts.clear();
        ui.alertAnswers << AlertAlternate; // "Cancel" opens nothing
        VersionServer server(versionList({{"KorvaneOSX", listed}}));
        check(server, installed);
        ASSERT_EQ(ui.alerts.size(), 1) << listed.toStdString();
        EXPECT_EQ(ui.alerts.first().title, "A New Version is Available");
        EXPECT_EQ(ui.alerts.first().messageText, newVersionMessage(listed));
        EXPECT_EQ(ui.alerts.first().buttons, QStringList({"OK", "Cancel"}));
    }
    EXPECT_TRUE(ui.openedUrls.isEmpty());
}

TEST_F(UpdateCheckTest, OKOpensTheDownloadPage)
{
    VersionServer server(versionList({{"KorvaneOSX", "2.0"}}));
    ui.alertAnswers << AlertDefault;
    check(server, "1.2");
    EXPECT_EQ(ui.openedUrls, QList<QUrl>{QUrl(kDownload)});
}

TEST_F(UpdateCheckTest, AListWithoutTheKeyCountsAsADifferentVersion)
{
    VersionServer server(versionList({{"SomethingElse", "1.2"}}));
    check(server, "1.2");
    ASSERT_EQ(ui.alerts.size(), 1);
    EXPECT_EQ(ui.alerts.first().messageText, newVersionMessage(""));
}

TEST_F(UpdateCheckTest, AnythingButAVersionDictionaryIsNoConnection)
{
    VersionServer array(PropertyList::toXml(QVariantList{"KorvaneOSX", "1.2"}));
    check(array, "1.2");
    expectNoConnection();

    ui.alerts.clear();
    VersionServer garbage("<html>\x01\xff not a list");
    check(garbage, "1.2");
    expectNoConnection();

    ui.alerts.clear();
    VersionServer missing(versionList({{"KorvaneOSX", "1.2"}}), 404);
    check(missing, "1.2");
    expectNoConnection();
}

TEST_F(UpdateCheckTest, AnUnreachableServerIsNoConnection)
{
    quint16 port = 0;
    {
        QTcpServer probe; // a port that was free a moment ago and now has no listener
        ASSERT_TRUE(probe.listen(QHostAddress::LocalHost, 0));
        port = probe.serverPort();
    }
    qputenv("KORVANE_UPDATE_URL", QStringLiteral("http://127.0.0.1:%1/versions.plist").arg(port).toUtf8());
    UpdateCheck().run();
    expectNoConnection();
}

TEST_F(UpdateCheckTest, AServerThatNeverAnswersTimesOut)
{
    VersionServer silent(versionList({{"KorvaneOSX", "1.2"}}), 200, true);
    ASSERT_TRUE(silent.listening());
    qputenv("KORVANE_UPDATE_URL", silent.url().toUtf8());
    UpdateCheck update;
    update.setTimeoutMs(300);
    QElapsedTimer clock;
    clock.start();
    update.run();
    EXPECT_LT(clock.elapsed(), 5000);
    EXPECT_EQ(silent.requests, 1);
    expectNoConnection();
}

TEST_F(UpdateCheckTest, TheMenuCommandComparesWithTheProgramsOwnVersion)
{
    VersionServer server(versionList({{"KorvaneOSX", UpdateCheck::programVersion()}}));
    ASSERT_TRUE(server.listening());
    qputenv("KORVANE_UPDATE_URL", server.url().toUtf8());
    makeContext().main()->checkForUpdate();
    ASSERT_EQ(ui.alerts.size(), 1);
    EXPECT_EQ(ui.alerts.first().title, "Your Software is up-to-date");
}

} // namespace korvane

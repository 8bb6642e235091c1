#include "GuiFixture.h"

#include "gui/windows/UpdateCheckCommand.h"
#include "shell/UpdateCheck.h"

#include <QApplication>
#include <QCursor>
#include <QTcpServer>
#include <QTcpSocket>

namespace korvane {
namespace {

// The cursor the application shows: an override, or none.
int cursorShape()
{
    const QCursor *cursor = QApplication::overrideCursor();
    return cursor ? int(cursor->shape()) : -1;
}

// Answers like a person and notes the cursor each question was asked under.
class CursorNotingUi : public ScriptedUi {
public:
    QList<int> cursors;
    int runAlert(const Alert &alert) override
    {
        cursors << cursorShape();
        return ScriptedUi::runAlert(alert);
    }
};

class UpdateCheckCommandTest : public GuiTest {
protected:
    void TearDown() override
    {
        qunsetenv("KORVANE_UPDATE_URL");
        qunsetenv("KORVANE_DOWNLOAD_URL");
        GuiTest::TearDown();
    }
};

TEST_F(UpdateCheckCommandTest, BusyWhileFetchingThenAsksAndOpensTheDownloadPage)
{
    // A version list on loopback naming another version; the cursor is noted as it is asked.
    QTcpServer server;
    ASSERT_TRUE(server.listen(QHostAddress::LocalHost));
    int cursorWhileFetching = -2;
    QObject::connect(&server, &QTcpServer::newConnection, [&] {
        QTcpSocket *socket = server.nextPendingConnection();
        cursorWhileFetching = cursorShape();
        QObject::connect(socket, &QTcpSocket::readyRead, socket, [socket] {
            socket->readAll();
            const QByteArray body = "<?xml version=\"1.0\"?><plist version=\"1.0\"><dict>"
                                    "<key>KorvaneOSX</key><string>9.9</string></dict></plist>";
            socket->write("HTTP/1.1 200 OK\r\nContent-Type: text/xml\r\nConnection: close\r\n"
                          "Content-Length: "
                          + QByteArray::number(body.size()) + "\r\n\r\n" + body);
            socket->disconnectFromHost();
        });
    });
    const QString address = QString("http://127.0.0.1:%1/versions.plist").arg(server.serverPort());
    qputenv("KORVANE_UPDATE_URL", address.toUtf8());
    qputenv("KORVANE_DOWNLOAD_URL", "http://127.0.0.1:1/download.html");

    CursorNotingUi person;
    UpdateCheckCommand::run(person);
    EXPECT_EQ(cursorWhileFetching, int(Qt::BusyCursor));
    ASSERT_EQ(person.alerts.size(), 1);
    EXPECT_EQ(person.alerts.first().title, "A New Version is Available");
    EXPECT_EQ(person.cursors, QList<int>{-1});
    EXPECT_EQ(person.openedUrls, QList<QUrl>{QUrl("http://127.0.0.1:1/download.html")});
    EXPECT_EQ(cursorShape(), -1);
}

} // namespace
} // namespace korvane

#include "shell/UpdateCheck.h"

#include "platform/PropertyList.h"
#include "platform/Texts.h"
#include "ui/UserInterface.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QTimer>

namespace korvane {

namespace {

QUrl configuredUrl(const char *variable, const char *builtIn)
{
    const QString fromEnvironment = qEnvironmentVariable(variable);
    return QUrl(fromEnvironment.isEmpty() ? QString::fromUtf8(builtIn) : fromEnvironment);
}

} // namespace

UpdateCheck::UpdateCheck()
    : m_versionListUrl(configuredUrl("KORVANE_UPDATE_URL", KORVANE_UPDATE_URL)),
      m_downloadUrl(configuredUrl("KORVANE_DOWNLOAD_URL", KORVANE_DOWNLOAD_URL)),
      m_installedVersion(programVersion())
{
}

QString UpdateCheck::programVersion()
{
    return QStringLiteral(KORVANE_VERSION);
}

std::optional<QVariantMap> UpdateCheck::fetchVersionList() const
{
    // Without an application object there is no event loop to carry the request.
    if (!QCoreApplication::instance() || !m_versionListUrl.isValid())
        return std::nullopt;

    QNetworkAccessManager network;
    QNetworkRequest request(m_versionListUrl);
    QNetworkReply *reply = network.get(request);

    QEventLoop loop;
    QTimer deadline;
    deadline.setSingleShot(true);
    QObject::connect(reply, &QNetworkReply::finished, &loop, &QEventLoop::quit);
    QObject::connect(&deadline, &QTimer::timeout, reply, &QNetworkReply::abort);
    deadline.start(m_timeoutMs);
    if (!reply->isFinished())
        loop.exec(QEventLoop::ExcludeUserInputEvents);
    deadline.stop();

    std::optional<QVariantMap> result;
    if (reply->error() == QNetworkReply::NoError) {
        const std::optional<QVariant> root = PropertyList::fromBytes(reply->readAll());
        if (root && root->typeId() == QMetaType::QVariantMap)
            result = root->toMap();
    }
    return result; // the reply goes with its manager

}

void UpdateCheck::run()
{
    const std::optional<QVariantMap> list = fetchVersionList();
    UserInterface &ui = UserInterface::current();

    if (!list) {
        Alert alert;
        alert.title = korvane::tr("Update check");
        alert.messageText = korvane::tr("Could not connect to the internet");
        alert.buttons = {korvane::tr("Ok")};
        ui.runAlert(alert);
        return;
    }

    const QVariant listed = list->value(QLatin1String(VersionKey));
    // Exact string equality: "1.2.0" is not "1.2", and a number is never the installed string.
    if (listed.typeId() == QMetaType::QString && listed.toString() == m_installedVersion) {
        Alert alert;
        alert.title = korvane::tr("Your Software is up-to-date");
        alert.messageText = korvane::tr("You have the most recent version of \"Korvane\".");
        alert.buttons = {korvane::tr("OK")};
        ui.runAlert(alert);
        return;
    }

    Alert alert;
    alert.title = korvane::tr("A New Version is Available");
    alert.messageText = korvane::tr("A new version of \"Korvane\" is available (version %@). Would "
                                    "you like to download the new version now?")
                            .replace(QLatin1String("%@"), listed.toString());
    alert.buttons = {korvane::tr("OK"), korvane::tr("Cancel")};
    if (ui.runAlert(alert) == AlertDefault)
        ui.openUrl(m_downloadUrl);
}

} // namespace korvane

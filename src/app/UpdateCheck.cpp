#include "app/UpdateCheck.h"

#include "codec/PropertyList.h"
#include "core/Texts.h"
#include "core/UserInterface.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QTimer>

namespace korvane {

namespace {

// Packagers may point the check elsewhere when building; tests do so through the environment.
#ifndef KORVANE_VERSION_LIST_URL
#define KORVANE_VERSION_LIST_URL "https://www.velmora.example/korvane/versions.plist"
#endif
#ifndef KORVANE_DOWNLOAD_PAGE_URL
#define KORVANE_DOWNLOAD_PAGE_URL "https://www.velmora.example/korvane/download.html"
#endif

// The longest version the newer-version panel shows before cutting it short.
constexpr qsizetype kShownVersionLength = 64;

QUrl configuredUrl(const char *variable, const char *builtIn)
{
    const QString fromEnvironment = qEnvironmentVariable(variable);
    return QUrl(fromEnvironment.isEmpty() ? QString::fromUtf8(builtIn) : fromEnvironment);
}

} // namespace

UpdateCheck::UpdateCheck(UserInterface &ui)
    : m_ui(ui), m_versionListUrl(configuredUrl("KORVANE_UPDATE_URL", KORVANE_VERSION_LIST_URL)),
      m_downloadUrl(configuredUrl("KORVANE_DOWNLOAD_URL", KORVANE_DOWNLOAD_PAGE_URL)),
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
    // The reply is taken in as it arrives, so what is held never grows past the limit by more
    // than one piece, and a longer one is cut off there.
    reply->setReadBufferSize(MaxReplyBytes);
    QByteArray body;
    bool tooLong = false;
    const auto take = [reply, &body, &tooLong] {
        if (tooLong)
            return;
        body += reply->read(MaxReplyBytes + 1 - body.size());
        if (body.size() > MaxReplyBytes
            || reply->header(QNetworkRequest::ContentLengthHeader).toLongLong() > MaxReplyBytes) {
            tooLong = true;
            body.clear();
            reply->abort();
        }
    };

    QEventLoop loop;
    QTimer deadline;
    deadline.setSingleShot(true);
    QObject::connect(reply, &QNetworkReply::readyRead, &loop, take);
    QObject::connect(reply, &QNetworkReply::metaDataChanged, &loop, take);
    QObject::connect(reply, &QNetworkReply::finished, &loop, &QEventLoop::quit);
    QObject::connect(&deadline, &QTimer::timeout, reply, &QNetworkReply::abort);
    deadline.start(m_timeoutMs);
    if (!reply->isFinished())
        loop.exec(QEventLoop::ExcludeUserInputEvents);
    deadline.stop();

    std::optional<QVariantMap> result;
    if (!tooLong && reply->error() == QNetworkReply::NoError) {
        take();
        if (!tooLong)
            result = parseVersionList(body);
    }
    return result; // the reply goes with its manager
}

std::optional<QVariantMap> UpdateCheck::parseVersionList(const QByteArray &body)
{
    if (body.size() > MaxReplyBytes)
        return std::nullopt;
    const std::optional<QVariant> root = PropertyList::fromBytes(body);
    if (!root || root->typeId() != QMetaType::QVariantMap)
        return std::nullopt;
    return root->toMap();
}

QString UpdateCheck::shownVersion(const QString &version)
{
    if (version.size() <= kShownVersionLength)
        return version;
    qsizetype cut = kShownVersionLength;
    if (version.at(cut - 1).isHighSurrogate())
        --cut; // never half a character
    return version.left(cut) + QChar(0x2026);
}

void UpdateCheck::run()
{
    report(fetchVersionList());
}

void UpdateCheck::report(const std::optional<QVariantMap> &list)
{
    const auto ask = [this](const QString &title, const QString &text, const QStringList &buttons) {
        Alert alert;
        alert.title = title;
        alert.messageText = text;
        alert.buttons = buttons;
        return m_ui.runAlert(alert);
    };
    if (!list) {
        ask(korvane::tr("Update check"), korvane::tr("Could not connect to the internet"),
            {korvane::tr("Ok")});
        return;
    }

    const QVariant listed = list->value(QLatin1String(VersionKey));
    // Exact string equality: "1.2.0" is not "1.2", and a number is never the installed string.
    if (listed.typeId() == QMetaType::QString && listed.toString() == m_installedVersion) {
        ask(korvane::tr("Your Software is up-to-date"),
            korvane::tr("You have the most recent version of \"Korvane\"."), {korvane::tr("OK")});
        return;
    }

    const QString text = korvane::tr("A new version of \"Korvane\" is available (version %@). "
                                     "Would you like to download the new version now?")
                             .replace(QLatin1String("%@"), shownVersion(listed.toString()));
    if (ask(korvane::tr("A New Version is Available"), text,
            {korvane::tr("OK"), korvane::tr("Cancel")})
        == AlertAnswer::Default)
        m_ui.openUrl(m_downloadUrl);
}

} // namespace korvane

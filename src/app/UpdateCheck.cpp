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
#include <utility>

namespace korvane {

namespace {

// Packagers who publish their own releases configure the addresses when building; tests set them
// through the environment. Without one nothing is asked.
#ifndef KORVANE_VERSION_LIST_URL
#define KORVANE_VERSION_LIST_URL ""
#endif
#ifndef KORVANE_DOWNLOAD_PAGE_URL
#define KORVANE_DOWNLOAD_PAGE_URL ""
#endif

// The longest version the newer-version panel shows before cutting it short.
constexpr qsizetype kShownVersionLength = 64;

QUrl configuredUrl(const QString &given, const char *builtIn)
{
    return QUrl(given.isEmpty() ? QString::fromUtf8(builtIn) : given);
}

} // namespace

UpdateCheck::UpdateCheck(UserInterface &ui, const QString &versionListUrl,
                         const QString &downloadUrl)
    : m_ui(ui), m_versionListUrl(configuredUrl(versionListUrl, KORVANE_VERSION_LIST_URL)),
      m_downloadUrl(configuredUrl(downloadUrl, KORVANE_DOWNLOAD_PAGE_URL)),
      m_installedVersion(programVersion())
{
}

QString UpdateCheck::programVersion()
{
    return QStringLiteral(KORVANE_VERSION);
}

UpdateCheck::~UpdateCheck()
{
    cancel();
}

void UpdateCheck::start(Done done)
{
    cancel();
    m_done = std::move(done);
    m_body.clear();
    m_tooLong = false;
    // Without an application object there is no event loop to carry the request.
    if (!QCoreApplication::instance() || !isConfigured()) {
        std::exchange(m_done, nullptr)(std::nullopt);
        return;
    }
    if (!m_network)
        m_network = std::make_unique<QNetworkAccessManager>();
    QNetworkReply *reply = m_network->get(QNetworkRequest(m_versionListUrl));
    m_reply = reply;
    // The reply is taken in as it arrives, so what is held never grows past the limit by more
    // than one piece, and a longer one is cut off there.
    reply->setReadBufferSize(MaxReplyBytes);
    const auto take = [this, reply] {
        if (m_tooLong)
            return;
        m_body += reply->read(MaxReplyBytes + 1 - m_body.size());
        if (m_body.size() > MaxReplyBytes
            || reply->header(QNetworkRequest::ContentLengthHeader).toLongLong() > MaxReplyBytes) {
            m_tooLong = true;
            m_body.clear();
            reply->abort();
        }
    };
    QObject::connect(reply, &QNetworkReply::readyRead, reply, take);
    QObject::connect(reply, &QNetworkReply::metaDataChanged, reply, take);
    QObject::connect(reply, &QNetworkReply::finished, reply, [this, take] {
        take();
        finish();
    });
    auto *deadline = new QTimer(reply); // goes with the reply
    deadline->setSingleShot(true);
    QObject::connect(deadline, &QTimer::timeout, reply, &QNetworkReply::abort);
    deadline->start(m_timeoutMs);
}

void UpdateCheck::finish()
{
    QNetworkReply *reply = m_reply;
    std::optional<QVariantMap> result;
    if (reply && !m_tooLong && reply->error() == QNetworkReply::NoError)
        result = parseVersionList(m_body);
    m_reply = nullptr;
    if (reply)
        reply->deleteLater();
    if (Done done = std::exchange(m_done, nullptr))
        done(result);
}

void UpdateCheck::cancel()
{
    m_done = nullptr;
    if (QNetworkReply *reply = m_reply) {
        m_reply = nullptr;
        reply->disconnect();
        reply->abort();
        reply->deleteLater();
    }
}

bool UpdateCheck::isRunning() const
{
    return !m_reply.isNull();
}

std::optional<QVariantMap> UpdateCheck::fetchVersionList()
{
    std::optional<QVariantMap> result;
    QEventLoop loop;
    bool done = false;
    start([&](const std::optional<QVariantMap> &list) {
        result = list;
        done = true;
        loop.quit();
    });
    if (!done)
        loop.exec(QEventLoop::ExcludeUserInputEvents);
    return result;
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

void UpdateCheck::run(Asked asked)
{
    if (!isConfigured()) {
        if (asked == Asked::ByPerson)
            reportNotConfigured();
        return;
    }
    report(fetchVersionList(), asked);
}

void UpdateCheck::reportNotConfigured()
{
    Alert alert;
    alert.title = korvane::tr("Update check");
    alert.messageText = korvane::tr("Updates of Korvane come from your distribution or vendor");
    alert.informativeText =
        korvane::tr("This copy checks no web site for new versions. Your system's package "
                    "manager, or whoever supplied Korvane, brings its updates.");
    alert.buttons = {korvane::tr("OK")};
    alert.style = Alert::Informational;
    m_ui.runAlert(alert);
}

void UpdateCheck::report(const std::optional<QVariantMap> &list, Asked asked)
{
    const auto ask = [this](const QString &title, const QString &text, const QStringList &buttons) {
        Alert alert;
        alert.title = title;
        alert.messageText = text;
        alert.buttons = buttons;
        return m_ui.runAlert(alert);
    };
    const bool quiet = asked == Asked::AtStartup;
    if (!list) {
        if (quiet) // a laptop started offline need not hear of it
            return;
        ask(korvane::tr("Update check"), korvane::tr("Could not connect to the internet"),
            {korvane::tr("Ok")});
        return;
    }

    const QVariant listed = list->value(QLatin1String(VersionKey));
    // Exact string equality: "1.2.0" is not "1.2", and a number is never the installed string.
    if (listed.typeId() == QMetaType::QString && listed.toString() == m_installedVersion) {
        if (quiet)
            return;
        ask(korvane::tr("Your Software is up-to-date"),
            korvane::tr("You have the most recent version of \"Korvane\"."), {korvane::tr("OK")});
        return;
    }

    const QString text = korvane::tr("A new version of \"Korvane\" is available (version %1). "
                                     "Would you like to download the new version now?")
                             .arg(shownVersion(listed.toString()));
    if (ask(korvane::tr("A New Version is Available"), text,
            {korvane::tr("OK"), korvane::tr("Cancel")})
        == AlertAnswer::Default)
        m_ui.openUrl(m_downloadUrl);
}

} // namespace korvane

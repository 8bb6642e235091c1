#pragma once

#include <QObject>
#include <QPointer>
#include <QString>
#include <QUrl>
#include <QVariantMap>
#include <functional>
#include <memory>
#include <optional>

class QNetworkAccessManager;
class QNetworkReply;

namespace korvane {

class UserInterface;

// Asks the maker's web site for the current release and offers the download page when it differs
// from the installed version. The fetch runs while the event loop goes on (the window stays
// usable and can cancel it) and gives up after a time-out, so a server that accepts and never
// answers holds nothing. A build without an update address checks nothing: its updates come from
// the distribution or the vendor, and saying "no internet" to every user would be a lie.
class UpdateCheck {
public:
    static constexpr int DefaultTimeoutMs = 15000;
    static constexpr const char *VersionKey = "KorvaneOSX";
    // The version list is a few hundred bytes; a reply longer than this is no version list.
    static constexpr qsizetype MaxReplyBytes = 64 * 1024;

    // How a check was started: asked for in the menu, it says every outcome; at start-up it
    // speaks only of a newer version.
    enum class Asked { ByPerson, AtStartup };

    using Done = std::function<void(const std::optional<QVariantMap> &list)>;

    // Addresses from the run's KORVANE_UPDATE_URL and KORVANE_DOWNLOAD_URL, else the ones
    // configured at build time (none by default); the installed version is this program's own.
    explicit UpdateCheck(UserInterface &ui, const QString &versionListUrl = QString(),
                         const QString &downloadUrl = QString());
    ~UpdateCheck();

    static QString programVersion();
    // The listed version as the newer-version panel shows it: a long one is cut short.
    static QString shownVersion(const QString &version);

    // Whether there is an address to ask at all.
    bool isConfigured() const { return m_versionListUrl.isValid() && !m_versionListUrl.isEmpty(); }
    QUrl versionListUrl() const { return m_versionListUrl; }
    QUrl downloadUrl() const { return m_downloadUrl; }
    int timeoutMs() const { return m_timeoutMs; }
    void setVersionListUrl(const QUrl &url) { m_versionListUrl = url; }
    void setDownloadUrl(const QUrl &url) { m_downloadUrl = url; }
    void setInstalledVersion(const QString &version) { m_installedVersion = version; }
    void setTimeoutMs(int ms) { m_timeoutMs = ms; }

    // Starts fetching the version list and returns; done is called once from the event loop with
    // the list, or nullopt for every network, HTTP or parse failure and for a reply longer than
    // MaxReplyBytes (at once when there is nothing to ask). Not called after cancel().
    void start(Done done);
    void cancel();
    bool isRunning() const;

    // start(), waiting in a local event loop that takes no input.
    std::optional<QVariantMap> fetchVersionList();
    // A reply's body as a version list: nullopt unless it is a dictionary of MaxReplyBytes or less.
    static std::optional<QVariantMap> parseVersionList(const QByteArray &body);

    // The whole command, waiting: says that updates come from elsewhere when no address was
    // configured, else fetches and reports.
    void run(Asked asked = Asked::ByPerson);
    // Compares a fetched list (nullopt: the fetch failed), tells the user, and opens the download
    // page when asked.
    void report(const std::optional<QVariantMap> &list, Asked asked = Asked::ByPerson);
    // What the command says in a build without an update address.
    void reportNotConfigured();

private:
    void finish();

    UserInterface &m_ui;
    QUrl m_versionListUrl;
    QUrl m_downloadUrl;
    QString m_installedVersion;
    int m_timeoutMs = DefaultTimeoutMs;

    std::unique_ptr<QNetworkAccessManager> m_network;
    QPointer<QNetworkReply> m_reply;
    QByteArray m_body;
    bool m_tooLong = false;
    Done m_done;
};

} // namespace korvane

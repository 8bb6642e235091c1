#pragma once

#include <QString>
#include <QUrl>
#include <QVariantMap>
#include <optional>

namespace korvane {

class UserInterface;

// Asks the maker's web site for the current release and offers the download page when it differs
// from the installed version. The fetch waits for its answer, but gives up after a
// time-out so that a server that accepts and never answers cannot hang the program.
class UpdateCheck {
public:
    static constexpr int DefaultTimeoutMs = 15000;
    static constexpr const char *VersionKey = "KorvaneOSX";
    // The version list is a few hundred bytes; a reply longer than this is no version list.
    static constexpr qsizetype MaxReplyBytes = 64 * 1024;

    // Addresses from $KORVANE_UPDATE_URL and $KORVANE_DOWNLOAD_URL, else the built-in ones; the
    // installed version is this program's own.
    explicit UpdateCheck(UserInterface &ui);

    static QString programVersion();
    // The listed version as the newer-version panel shows it: a long one is cut short.
    static QString shownVersion(const QString &version);

    QUrl versionListUrl() const { return m_versionListUrl; }
    QUrl downloadUrl() const { return m_downloadUrl; }
    int timeoutMs() const { return m_timeoutMs; }
    void setVersionListUrl(const QUrl &url) { m_versionListUrl = url; }
    void setDownloadUrl(const QUrl &url) { m_downloadUrl = url; }
    void setInstalledVersion(const QString &version) { m_installedVersion = version; }
    void setTimeoutMs(int ms) { m_timeoutMs = ms; }

    // The version list as a dictionary; nullopt for every network, HTTP or parse failure and for
    // a reply longer than MaxReplyBytes.
    std::optional<QVariantMap> fetchVersionList() const;
    // A reply's body as a version list: nullopt unless it is a dictionary of MaxReplyBytes or less.
    static std::optional<QVariantMap> parseVersionList(const QByteArray &body);

    // The whole command: fetch, then report.
    void run();
    // Compares a fetched list (nullopt: the fetch failed), tells the user, and opens the download
    // page when asked.
    void report(const std::optional<QVariantMap> &list);

private:
    UserInterface &m_ui;
    QUrl m_versionListUrl;
    QUrl m_downloadUrl;
    QString m_installedVersion;
    int m_timeoutMs = DefaultTimeoutMs;
};

} // namespace korvane

#pragma once

#include <QHash>
#include <QString>
#include <memory>

namespace korvane {

// What one scan has learnt about the disk, so that the listing, recognition, the package test and
// the architecture test do not ask the same question twice. A scan owns its cache on the stack and
// hands it to each of those calls; a call handed none asks the disk, so nothing a scan learnt
// survives into the next scan or reaches code outside it.
class ScanCache {
public:
    enum Kind : quint8 { Missing, Folder, File, Other };

    ScanCache() = default;
    ScanCache(const ScanCache &) = delete;
    ScanCache &operator=(const ScanCache &) = delete;

    // What stat(2) says of path, links followed; from cache when there is one.
    static Kind kind(const QString &path, ScanCache *cache);
    // A folder that is no link, from lstat(2): the listing's test whether to descend.
    static bool isRealFolder(const QString &path, ScanCache *cache);
    // What a folder listing said of one of its entries that is no link, so that neither question
    // above needs the disk for it.
    void rememberListed(const QString &path, Kind kind);

    // What a reader learnt of the entry looked at last (the bundle reader: its parsed
    // Info.plist). One is enough: recognition and the architecture test ask about an entry one
    // after the other. The cache keeps it without knowing what it is.
    struct Memo {
        virtual ~Memo() = default;
    };
    Memo *memo() const { return m_memo.get(); }
    void setMemo(std::unique_ptr<Memo> memo) { m_memo = std::move(memo); }

private:
    // The kind, with kNoLink set when it is known that path itself is no link.
    QHash<QString, quint8> m_kinds;
    QString m_lastPath; // the last path answered from m_kinds, and its kind
    Kind m_lastKind = Missing;
    std::unique_ptr<Memo> m_memo;
};

} // namespace korvane

#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QHash>
#include <QList>
#include <QString>
#include <QStringList>

namespace korvane {

struct PackageDatabaseLimits {
    qsizetype maxListBytes = 64 * 1024 * 1024; // one package's list
    qsizetype maxRpmOutput = 256 * 1024 * 1024;
    int rpmTimeoutMs = 60000;
};

// Which distribution package owns a path. dpkg's database (ROOT/var/lib/dpkg/info/*.list, each
// line a path the package NAME[:arch] owns) is indexed once and asked many times; where
// ROOT/var/lib/rpm exists instead and the rpm program is found, rpm is asked, in one batch per
// call and remembered. Paths are the system's own, as seen inside the root ("/usr/lib/lv2/x.lv2").
class PackageDatabase {
public:
    enum Kind { None, Dpkg, Rpm };

    using Limits = PackageDatabaseLimits;

    PackageDatabase() = default;

    // dpkg when ROOT/var/lib/dpkg/info exists, else rpm when ROOT/var/lib/rpm exists and
    // rpmProgram is given (callers pass QStandardPaths::findExecutable("rpm")), else None.
    // With prefixes ("/usr/lib/lv2"), only paths at or under them are indexed.
    static PackageDatabase open(const QString &root, const QStringList &prefixes = {},
                                const QString &rpmProgram = {}, const Limits &limits = {});

    Kind kind() const { return m_kind; }
    // Lists that could not be read, rpm's failures: for the log, never fatal.
    QStringList problems() const { return m_problems; }

    // The packages owning a path, sorted; empty when none does. A path under /usr that no list
    // names is also looked up without /usr, since packages may still list /lib/... on a system
    // whose /lib is a link to /usr/lib.
    QStringList owners(const QString &path);
    // Several paths at once (one rpm batch); paths no package owns are left out.
    QHash<QString, QStringList> owners(const QStringList &paths);

    // Adds one package's list (the bytes of NAME.list): for dpkg's files and for tests and fuzzing.
    void addList(const QString &package, QByteArrayView listBytes);
    // How many paths are indexed.
    qsizetype size() const { return m_paths.size(); }

private:
    QStringList lookup(const QByteArray &path) const;
    void askRpm(const QStringList &paths);

    Kind m_kind = None;
    QString m_root;
    QString m_rpm;
    Limits m_limits;
    QList<QByteArray> m_prefixes;
    QStringList m_packages;              // index -> name
    QHash<QByteArray, int> m_paths;      // path -> package index, or -(k + 1) for m_shared[k]
    QList<QList<int>> m_shared;          // paths more than one package owns
    QHash<QString, QStringList> m_asked; // rpm's answers, including "none"
    QStringList m_problems;
};

} // namespace korvane

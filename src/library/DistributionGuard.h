#pragma once

#include <QString>
#include <QStringList>

namespace korvane {

struct Format;
class Locations;

// What lies under /usr outside /usr/local belongs to the distribution's package manager: a move
// into or out of such a folder would be undone by the next upgrade or break the package's
// removal. The guard knows the format's owned folders as one run expands them.
class DistributionGuard {
public:
    DistributionGuard(const Format &format, const Locations &locations);

    // Whether the folder (expanded) is one of the owned ones.
    bool owns(const QString &folder) const { return m_owned.contains(folder); }
    // Why a move from one folder to another may not happen ("" when it may): names the package
    // (or says none names it) and how to hide the plug-in instead.
    QString refusal(const QString &name, const QString &fromFolder, const QString &toFolder,
                    const QString &package) const;

private:
    QStringList m_owned;
    QStringList m_variables;
};

} // namespace korvane

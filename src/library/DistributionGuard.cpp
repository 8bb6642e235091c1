#include "library/DistributionGuard.h"

#include "core/Format.h"
#include "core/Locations.h"

#include <QCoreApplication>

namespace korvane {

DistributionGuard::DistributionGuard(const Format &format, const Locations &locations)
    : m_variables(format.pathVariables)
{
    for (int loc = 0; loc < format.locationCount(); ++loc)
        if (format.isDistributionOwned(loc))
            m_owned << locations.folderPath(format, loc);
}

QString DistributionGuard::refusal(const QString &name, const QString &fromFolder,
                                   const QString &toFolder, const QString &package) const
{
    const QString owned = owns(fromFolder) ? fromFolder : owns(toFolder) ? toFolder : QString();
    if (owned.isEmpty())
        return {};
    const QString hosts = m_variables.isEmpty()
                              ? QCoreApplication::translate("korvane", "the host's plug-in folders")
                              : m_variables.join(QStringLiteral(", "));
    if (package.isEmpty())
        return QCoreApplication::translate(
                   "korvane",
                   "%1 stays in %2: the distribution owns that folder, and Korvane changes "
                   "nothing there. To hide it, remove the package that installed it, or set %3 "
                   "to the folders the host should search")
            .arg(name, owned, hosts);
    return QCoreApplication::translate(
               "korvane", "%1 stays in %2: it belongs to the package %3, and Korvane changes "
                          "nothing the distribution owns. To hide it, remove the package %3, or "
                          "set %4 to the folders the host should search")
        .arg(name, owned, package, hosts);
}

} // namespace korvane

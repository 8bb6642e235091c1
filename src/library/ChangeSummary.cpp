#include "library/ChangeSummary.h"

#include "core/Texts.h"
#include "library/FormatManager.h"
#include "library/RightsApply.h"

#include <QHash>
#include <QStringBuilder>

namespace korvane {

bool ChangeSummary::isMarked(const FormatManager &manager, const Plugin &item)
{
    return manager.plugins().pathOnDisk(item) != item.location() % QLatin1Char('/') % item.name();
}

ChangeSummary ChangeSummary::of(const FormatManager &manager)
{
    ChangeSummary summary;
    // Rights depend on the folder alone: one look per folder, not per plug-in.
    QHash<QString, bool> rights;
    for (const PluginPtr &item : manager.items()) {
        if (isMarked(manager, *item))
            ++(item->isActive() ? summary.on : summary.off);
        if (!item->isGlobal())
            continue;
        const QString key = item->location() % QLatin1Char(item->isActive() ? '1' : '0');
        auto found = rights.constFind(key);
        if (found == rights.cend())
            found =
                rights.insert(key, RightsApply::needsRights(manager.traits(), manager.locations(),
                                                            manager.files(), *item));
        summary.needRights += *found ? 1 : 0;
    }
    return summary;
}

QString ChangeSummary::text() const
{
    QStringList parts;
    if (changes() == 1)
        parts << korvane::tr("1 change: %1 off, %2 on").arg(off).arg(on);
    else if (changes() > 1)
        parts << korvane::tr("%1 changes: %2 off, %3 on").arg(changes()).arg(off).arg(on);
    if (needRights > 0)
        parts << korvane::tr("%1 system plug-ins change only with administrator rights")
                     .arg(needRights);
    return parts.join(QStringLiteral(" · "));
}

} // namespace korvane

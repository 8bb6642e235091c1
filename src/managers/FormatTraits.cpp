#include "managers/FormatTraits.h"

namespace korvane {

QString FormatTraits::toggleActionName(const QString &name, bool active, bool global,
                                       bool globalFlag) const
{
    const QString word = globalFlag
                             ? (global ? QStringLiteral("setGlobal") : QStringLiteral("setLocal"))
                             : (active ? activeOnWord : activeOffWord);
    if (!wordFirst)
        return QStringLiteral("%1 \"%2\"").arg(name, word);
    if (globalFlag)
        return QStringLiteral("%1 for \"%2\"").arg(word, name);
    return QStringLiteral("%1 \"%2\"").arg(word, name);
}

QString FormatTraits::installPath(const QString &fileName) const
{
    return QString(installTarget).replace(QLatin1String("%@"), fileName);
}

} // namespace korvane

#include "library/FormatTraits.h"

#include "core/Texts.h"

namespace korvane {

QString FormatTraits::toggleActionName(const QString &name, bool active, bool global,
                                       bool globalFlag) const
{
    // The action name is shown in the Edit menu, so its words are looked up like any text.
    const QString word =
        globalFlag ? (global ? korvane::tr("setGlobal") : korvane::tr("setLocal"))
                   : korvane::tr((active ? activeOnWord : activeOffWord).toUtf8().constData());
    if (!wordFirst)
        return fillFormat(korvane::tr("%@ \"%@\""), {name, word});
    if (globalFlag)
        return fillFormat(korvane::tr("%@ for \"%@\""), {word, name});
    return fillFormat(korvane::tr("%@ \"%@\""), {word, name});
}

QString FormatTraits::installPath(const QString &fileName) const
{
    return QString(installTarget).replace(QLatin1String("%@"), fileName);
}

} // namespace korvane

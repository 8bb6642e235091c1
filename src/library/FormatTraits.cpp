#include "library/FormatTraits.h"

#include "core/Texts.h"

namespace korvane {

QString FormatTraits::toggleActionName(const QString &name, bool active, bool global,
                                       bool globalFlag) const
{
    // The action name is shown in the Edit menu, so its words are looked up like any text.
    const QString word = globalFlag ? (global ? korvane::tr("setGlobal") : korvane::tr("setLocal"))
                                    : korvane::tr(active ? activeOnWord : activeOffWord);
    if (!wordFirst)
        return korvane::tr("%1 \"%2\"").arg(name, word);
    if (globalFlag)
        return korvane::tr("%1 for \"%2\"").arg(word, name);
    return korvane::tr("%1 \"%2\"").arg(word, name);
}

QString FormatTraits::installPath(const QString &fileName) const
{
    return installFolder + QLatin1Char('/') + fileName;
}

} // namespace korvane

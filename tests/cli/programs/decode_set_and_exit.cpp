// Decodes a set document and returns from main without taking anything down by hand: leaving
// must not depend on the order statics go in.

#include "library/SetDocument.h"

int main()
{
    auto item = std::make_shared<korvane::Plugin>();
    item->setName(QStringLiteral("Echo.component"));
    item->setGlobal(true);
    item->setActive(true);
    const QList<korvane::PluginPtr> items =
        korvane::SetDocument::decode(korvane::SetDocument::encode({item}));
    return items.size() == 1 && items.first()->name() == item->name() ? 0 : 1;
}

// Decodes a set document and returns from main without taking anything down by hand: leaving
// must not depend on the order statics go in.

#include "managers/SetDocument.h"

int main()
{
    auto item = std::make_shared<korvane::AUItem>();
    item->setAUName(QStringLiteral("Echo.component"));
    item->setAUGlobal(true);
    item->setAUActive(true);
    const QList<korvane::AUItemPtr> items =
        korvane::SetDocument::decode(korvane::SetDocument::encode({item}));
    return items.size() == 1 && items.first()->getAUName() == item->getAUName() ? 0 : 1;
}

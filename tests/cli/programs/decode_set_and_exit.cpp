// Decodes a set document and returns from main with every shared instance still alive, as a
// program that never resets them does: leaving must not depend on the order statics go in.

#include "managers/SetDocument.h"

#include <QTemporaryDir>

int main() {
    // Decoding asks the content registry about each item; it must not look at the real home.
    QTemporaryDir root, home;
    qputenv("KORVANE_ROOT", root.path().toUtf8());
    qputenv("HOME", home.path().toUtf8());

    auto item = std::make_shared<korvane::AUItem>();
    item->setAUName(QStringLiteral("Echo.component"));
    item->setAUGlobal(true);
    item->setAUActive(true);
    const QList<korvane::AUItemPtr> items =
        korvane::SetDocument::decode(korvane::SetDocument::encode({item}));
    return items.size() == 1 && items.first()->getAUName() == item->getAUName() ? 0 : 1;
}

#include "library/DuplicateReport.h"

#include <QHash>

namespace korvane {

QList<QPair<QString, int>> DuplicateReport::counts(const QList<PluginPtr> &items)
{
    // One pass, each item looked at once: names in order of their first item, with their counts
    // (places holds a name's place in that list, plus one). A large list costs little more per
    // item than a small one.
    QHash<QString, qsizetype> places;
    places.reserve(items.size());
    QList<QPair<QString, int>> names;
    for (const PluginPtr &item : items) {
        QString name = item->name();
        qsizetype &place = places[name];
        if (place == 0) {
            names.append({std::move(name), 0});
            place = names.size();
        }
        ++names[place - 1].second;
    }
    names.removeIf([](const QPair<QString, int> &entry) { return entry.second < 2; });
    return names;
}

} // namespace korvane

#pragma once

#include "core/Plugin.h"

#include <QList>
#include <QString>
#include <QStringList>

namespace korvane {

// What the search and the quick filters let through, apart from any table: one format's table
// asks it of its rows, a list across formats of each row with the row's format. The search looks
// at the name, the vendor and the group, never at the folder: every path holds the user's name
// and "Audio".
struct PluginFilter {
    enum class State { Any, On, Off };
    enum class Place { Any, System, User };

    QString text;
    State state = State::Any;
    Place place = Place::Any;
    QString architecture; // empty: any; else one the binary must hold
    bool unreadableOnly = false;
    int format = -1; // a format row's type; -1: any

    bool operator==(const PluginFilter &) const = default;

    // Whether it hides anything it could.
    bool isFiltering() const { return *this != PluginFilter(); }
    // What the row shows decides, marks included: a plug-in just unticked counts as off.
    // group: the name of item's group (FormatManager::groupName), which the text also matches.
    bool accepts(const Plugin &item, int formatType, const QString &group = QString()) const;

    // The architectures to choose from for these plug-ins: each one any of them holds, once, in
    // the order people read them.
    static QStringList architecturesOf(const QList<PluginPtr> &items);
};

} // namespace korvane

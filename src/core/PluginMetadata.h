#pragma once

#include <QList>
#include <QString>
#include <QStringList>

namespace korvane {

// What a plug-in's files say about it, read without loading its code.
struct PluginMetadata {
    struct Inner {
        QString name;
        QString id; // an LV2 URI, a VST 3 class ID
    };
    QString name; // the module's or the first plug-in's own name; empty: the file name says it
    QString vendor;
    QString version;
    QStringList architectures; // x86_64, aarch64, arm64, ...
    QList<Inner> plugins;      // the plug-ins inside (an LV2 bundle's, a VST 3 module's)
    QStringList identifiers;   // URIs, class IDs, VST 2 IDs a VST 3 class replaces
    QString package;           // the distribution's package that owns it
    QString unreadable;        // "cannot be read: ..."; empty when it could be read
};

} // namespace korvane

#pragma once

#include "core/Plugin.h"

#include <QList>
#include <QString>
#include <QStringList>

namespace korvane {

class FormatManager;

// One installed plug-in as the catalog sees it: which format's list it is in, and the item.
struct ProductSource {
    FormatManager *manager = nullptr; // null in tests that build sources by hand
    int type = -1;
    QString format; // the format's tab label: "VST3", "LV2"
    PluginPtr item;
};

// One product installed in one or more formats (and perhaps in more than one folder).
struct Product {
    QString name;                 // as its first member shows it
    QString vendor;               // the first vendor any member names
    QList<ProductSource> members; // in the order the sources came
    // The formats it is installed in, each once, in the members' order.
    QStringList formats() const;
    bool inSeveralFormats() const;
};

// Groups the plug-ins of every format into products. Two plug-ins are one product when their
// vendors and names agree once written alike (case, spaces, punctuation, the format or the
// architecture in the name, the file's extension), or when a VST 3 module names the other's VST 2
// ID as one it replaces. A plug-in whose files name no vendor joins the one product of its name
// that has a vendor; with two such products it stays on its own, as nothing tells them apart.
class ProductCatalog {
public:
    // The name and the vendor as they are compared: "Surge XT (VST3)", "surge-xt.vst3" and
    // "Surge XT x64" all give "surgext"; "Surge Synth Team, Inc." gives "surgesynthteam".
    static QString nameKey(const QString &name);
    static QString vendorKey(const QString &vendor);
    // The name a plug-in shows: its files' own name, else the file's name without extension.
    static QString shownName(const Plugin &item);

    static QList<Product> group(const QList<ProductSource> &sources);
    // Every plug-in of the managers given, in their order and each list's order.
    static QList<Product> of(const QList<FormatManager *> &managers);
};

} // namespace korvane

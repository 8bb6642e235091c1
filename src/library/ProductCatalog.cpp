#include "library/ProductCatalog.h"

#include "library/FormatManager.h"

#include <QHash>
#include <numeric>

namespace korvane {

namespace {

// The extensions of the formats' files and bundles, which say nothing about the product.
const QStringList &extensions()
{
    static const QStringList list{
        QStringLiteral(".vst3"),      QStringLiteral(".vst"),       QStringLiteral(".clap"),
        QStringLiteral(".lv2"),       QStringLiteral(".so"),        QStringLiteral(".dll"),
        QStringLiteral(".component"), QStringLiteral(".aaxplugin"), QStringLiteral(".dpm"),
        QStringLiteral(".rtas"),      QStringLiteral(".bundle"),    QStringLiteral(".dylib")};
    return list;
}

// Words vendors add to their builds' names: the format, the word size, the architecture.
bool isBuildWord(const QString &word)
{
    static const QStringList words{
        QStringLiteral("vst"),     QStringLiteral("vst2"),  QStringLiteral("vst3"),
        QStringLiteral("vsti"),    QStringLiteral("clap"),  QStringLiteral("lv2"),
        QStringLiteral("au"),      QStringLiteral("aax"),   QStringLiteral("ladspa"),
        QStringLiteral("dssi"),    QStringLiteral("rtas"),  QStringLiteral("x64"),
        QStringLiteral("x86"),     QStringLiteral("amd64"), QStringLiteral("arm64"),
        QStringLiteral("aarch64"), QStringLiteral("64bit"), QStringLiteral("32bit"),
        QStringLiteral("64"),      QStringLiteral("32"),    QStringLiteral("win64"),
        QStringLiteral("linux"),   QStringLiteral("mac"),   QStringLiteral("bit")};
    return words.contains(word);
}

// Words a company's name ends in that vary between a vendor's builds.
bool isCompanyWord(const QString &word)
{
    static const QStringList words{
        QStringLiteral("inc"),  QStringLiteral("ltd"), QStringLiteral("llc"),
        QStringLiteral("gmbh"), QStringLiteral("co"),  QStringLiteral("corp"),
        QStringLiteral("sarl"), QStringLiteral("ag"),  QStringLiteral("bv"),
        QStringLiteral("ab"),   QStringLiteral("oy"),  QStringLiteral("limited"),
        QStringLiteral("srl"),  QStringLiteral("sas"), QStringLiteral("kg")};
    return words.contains(word);
}

// The words of text in lower case: runs of letters and digits.
QStringList wordsOf(const QString &text)
{
    QStringList words;
    QString word;
    for (const QChar c : text.toLower()) {
        if (c.isLetterOrNumber()) {
            word += c;
        } else if (!word.isEmpty()) {
            words << word;
            word.clear();
        }
    }
    if (!word.isEmpty())
        words << word;
    return words;
}

struct Groups {
    QList<int> parent;
    int find(int i)
    {
        while (parent[i] != i)
            i = parent[i] = parent[parent[i]];
        return i;
    }
    void join(int a, int b)
    {
        a = find(a);
        b = find(b);
        if (a != b)
            parent[std::max(a, b)] = std::min(a, b); // the earlier source leads
    }
};

} // namespace

QStringList Product::formats() const
{
    QStringList list;
    for (const ProductSource &member : members)
        if (!list.contains(member.format))
            list << member.format;
    return list;
}

bool Product::inSeveralFormats() const
{
    for (const ProductSource &member : members)
        if (member.format != members.first().format)
            return true;
    return false;
}

QString ProductCatalog::nameKey(const QString &name)
{
    QString stem = name.trimmed();
    // An extension may follow another: "Delay.so" inside "Delay.lv2" never shows, but
    // "Delay.vst3.so" does.
    for (bool found = true; found;) {
        found = false;
        for (const QString &extension : extensions())
            if (stem.size() > extension.size() && stem.endsWith(extension, Qt::CaseInsensitive)) {
                stem.chop(extension.size());
                found = true;
            }
    }
    QStringList words = wordsOf(stem);
    // Build words count only at the end ("Surge XT VST3 x64"), never a lone word (a plug-in
    // called "AU" stays "au").
    while (words.size() > 1 && isBuildWord(words.last()))
        words.removeLast();
    return words.join(QString());
}

QString ProductCatalog::vendorKey(const QString &vendor)
{
    QStringList words = wordsOf(vendor);
    while (words.size() > 1 && isCompanyWord(words.last()))
        words.removeLast();
    return words.join(QString());
}

QString ProductCatalog::shownName(const Plugin &item)
{
    if (item.metadata() && !item.metadata()->name.isEmpty())
        return item.metadata()->name;
    QString file = item.name();
    for (const QString &extension : extensions())
        if (file.size() > extension.size() && file.endsWith(extension, Qt::CaseInsensitive))
            return file.left(file.size() - extension.size());
    return file;
}

QList<Product> ProductCatalog::group(const QList<ProductSource> &sources)
{
    const int count = int(sources.size());
    Groups groups;
    groups.parent.resize(count);
    std::iota(groups.parent.begin(), groups.parent.end(), 0);

    QList<QString> names(count);
    QList<QString> vendors(count);
    QHash<QString, int> byVendorAndName;      // first source of each vendor and name
    QHash<QString, QList<int>> vendoredNames; // name -> first source of each vendor
    QHash<QString, int> vst2Owners;           // "VST2:Gain" -> first source that is that ID
    for (int i = 0; i < count; ++i) {
        const Plugin &item = *sources.at(i).item;
        const PluginMetadata *metadata = item.metadata();
        names[i] = nameKey(shownName(item));
        vendors[i] = metadata ? vendorKey(metadata->vendor) : QString();
        const QString key = vendors.at(i) + u'\x1f' + names.at(i);
        const auto known = byVendorAndName.constFind(key);
        if (known != byVendorAndName.cend()) {
            groups.join(*known, i);
        } else {
            byVendorAndName.insert(key, i);
            if (!vendors.at(i).isEmpty())
                vendoredNames[names.at(i)] << i;
        }
    }
    // A plug-in without a vendor joins the one vendor's product of its name.
    for (int i = 0; i < count; ++i) {
        if (!vendors.at(i).isEmpty())
            continue;
        const QList<int> candidates = vendoredNames.value(names.at(i));
        if (candidates.size() == 1)
            groups.join(candidates.first(), i);
    }
    // A VST 3 class that replaces a VST 2 plug-in is that plug-in's product. The VST 2 side says
    // its own ID as "VST2:<id>" where its files tell it; the VST 3 side names it among the IDs
    // its classes replace.
    const auto isVst3 = [&](int i) {
        return sources.at(i).item->name().endsWith(QLatin1String(".vst3"), Qt::CaseInsensitive);
    };
    for (int i = 0; i < count; ++i) {
        const PluginMetadata *metadata = sources.at(i).item->metadata();
        if (!metadata || isVst3(i))
            continue;
        for (const QString &id : metadata->identifiers)
            if (id.startsWith(QLatin1String("VST2:")) && !vst2Owners.contains(id))
                vst2Owners.insert(id, i);
    }
    if (!vst2Owners.isEmpty())
        for (int i = 0; i < count; ++i) {
            const PluginMetadata *metadata = sources.at(i).item->metadata();
            if (!metadata || !isVst3(i))
                continue;
            for (const QString &id : metadata->identifiers)
                if (const auto owner = vst2Owners.constFind(id); owner != vst2Owners.cend())
                    groups.join(*owner, i);
        }

    QList<Product> products;
    QHash<int, int> productOf; // a group's leading source -> its product
    for (int i = 0; i < count; ++i) {
        const int lead = groups.find(i);
        const ProductSource &source = sources.at(i);
        auto found = productOf.constFind(lead);
        if (found == productOf.cend()) {
            found = productOf.insert(lead, int(products.size()));
            products.append(Product{shownName(*source.item), QString(), {}});
        }
        Product &product = products[*found];
        if (product.vendor.isEmpty() && source.item->metadata())
            product.vendor = source.item->metadata()->vendor;
        product.members << source;
    }
    return products;
}

QList<Product> ProductCatalog::of(const QList<FormatManager *> &managers)
{
    QList<ProductSource> sources;
    qsizetype total = 0;
    for (const FormatManager *manager : managers)
        total += manager->rowCount();
    sources.reserve(total);
    for (FormatManager *manager : managers)
        for (const PluginPtr &item : manager->items())
            sources.append(
                ProductSource{manager, manager->type(), manager->traits().tabLabel, item});
    return group(sources);
}

} // namespace korvane

// The plug-in table: cell values, undoable flag toggles, sorting, dragging out and installing
// dropped files.
#include "library/FormatManager.h"

#include "core/AppServices.h"
#include "core/Locations.h"
#include "core/Texts.h"
#include "core/UserInterface.h"
#include "library/DistributionGuard.h"
#include "library/DropInstall.h"
#include "library/Reporting.h"
#include "library/TableColumns.h"
#include "os/FileOperations.h"
#include "os/SystemLog.h"

#include <QCollator>
#include <QHash>
#include <QLocale>
#include <QPointer>
#include <algorithm>
#include <numeric>
#include <optional>
#include <string>
#include <vector>

namespace korvane {

namespace {

// One sort key with every item's key taken out once, so the comparisons of a sort compare
// plain numbers and strings. The kinds follow the table's values: flags and numbers compare as
// numbers, the rest as text; a column the items do not have leaves the order to the next one.
class SortColumn {
public:
    SortColumn(const SortKey &sortKey, const QList<PluginPtr> &items, const Format &format)
        : m_ascending(sortKey.ascending),
          m_case(sortKey.caseInsensitive ? Qt::CaseInsensitive : Qt::CaseSensitive)
    {
        const QString &key = sortKey.column;
        const auto numbers = [&](auto value) {
            m_kind = Number;
            m_numbers.reserve(size_t(items.size()));
            for (const PluginPtr &item : items)
                m_numbers.push_back(int(value(*item)));
        };
        const auto texts = [&](auto value) {
            m_kind = Text;
            m_texts.reserve(size_t(items.size()));
            for (const PluginPtr &item : items)
                m_texts.push_back(value(*item));
            if (m_case == Qt::CaseInsensitive)
                foldAscii();
        };
        const auto metadata = [](QString PluginMetadata::*field) {
            return [field](const Plugin &i) {
                return i.metadata() ? i.metadata()->*field : QString();
            };
        };
        if (key == TableColumn::Active)
            numbers([](const Plugin &i) { return i.isActive(); });
        else if (key == TableColumn::Global)
            numbers([](const Plugin &i) { return i.isGlobal(); });
        else if (key == TableColumn::Group)
            texts([](const Plugin &i) { return i.group(); });
        else if (key == TableColumn::Architecture)
            naturalTexts(items, [](const Plugin &i) { return i.architecturesText(); });
        else if (key == TableColumn::Name && m_case == Qt::CaseInsensitive)
            naturalTexts(items, [](const Plugin &i) { return i.name(); });
        else if (key == TableColumn::Name) // by code point, as the first version did
            texts([](const Plugin &i) { return i.name(); });
        else if (key == TableColumn::Location) // system, user, then the later folders in turn
            numbers([&format](const Plugin &i) { return i.locationCode(format) / 2; });
        else if (key == TableColumn::Vendor)
            naturalTexts(items, metadata(&PluginMetadata::vendor));
        else if (key == TableColumn::Version)
            naturalTexts(items, metadata(&PluginMetadata::version));
        else if (key == TableColumn::Package)
            naturalTexts(items, metadata(&PluginMetadata::package));
    }

    // Negative, zero or positive as item a sorts before, with or after item b.
    int compare(qsizetype a, qsizetype b) const
    {
        int order = 0;
        if (m_kind == Number) {
            const int x = m_numbers[size_t(a)], y = m_numbers[size_t(b)];
            order = x < y ? -1 : (x > y ? 1 : 0);
        } else if (m_kind == Natural) {
            // What a plug-in does not say (no vendor, no version) comes last either way.
            if (m_unknown[size_t(a)] != m_unknown[size_t(b)])
                return m_unknown[size_t(a)] ? 1 : -1;
            order = m_keys[size_t(a)].compare(m_keys[size_t(b)]);
        } else if (m_kind == Text) {
            if (!m_folded.empty() && !m_folded[size_t(a)].empty() && !m_folded[size_t(b)].empty())
                order = m_folded[size_t(a)].compare(m_folded[size_t(b)]);
            else
                order = QString::compare(m_texts[size_t(a)], m_texts[size_t(b)], m_case);
        }
        return m_ascending ? order : -order;
    }

private:
    // Texts as people count and as their language orders: "Bass 2" before "Bass 10", "1.9"
    // before "1.10". The collator's keys are taken once per text, so a comparison is a plain
    // byte comparison.
    template <typename Value> void naturalTexts(const QList<PluginPtr> &items, Value value)
    {
        m_kind = Natural;
        // The C locale's collator compares code points and knows no numbers.
        QLocale locale;
        if (locale.language() == QLocale::C)
            locale = QLocale(QLocale::English, QLocale::UnitedStates);
        // Keys are kept between sorts (a header click sorts the same texts again), for one
        // locale and up to a bound.
        static QLocale cachedFor;
        static QHash<QString, QCollatorSortKey> cache;
        static std::optional<QCollator> collator;
        if (!collator || cachedFor != locale || cache.size() > 200000) {
            cache.clear();
            cachedFor = locale;
            collator.emplace(locale);
            collator->setNumericMode(true);
            collator->setCaseSensitivity(Qt::CaseInsensitive);
        }
        m_keys.reserve(size_t(items.size()));
        m_unknown.reserve(size_t(items.size()));
        for (const PluginPtr &item : items) {
            const QString text = value(*item);
            auto found = cache.constFind(text);
            if (found == cache.cend())
                found = cache.insert(text, collator->sortKey(text));
            m_keys.push_back(*found);
            m_unknown.push_back(text.isEmpty());
        }
    }

    // Plain ASCII texts folded to lower case once: comparing those bytes orders them exactly as
    // the case-insensitive comparison does, without folding every character of every comparison.
    // Empty for texts that are empty or hold anything else; those keep the full comparison.
    void foldAscii()
    {
        m_folded.resize(m_texts.size());
        for (size_t i = 0; i < m_texts.size(); ++i) {
            const QString &text = m_texts[i];
            std::string folded(size_t(text.size()), '\0');
            bool ascii = true;
            for (qsizetype c = 0; c < text.size() && ascii; ++c) {
                const char16_t unit = text.at(c).unicode();
                ascii = unit < 0x80;
                folded[size_t(c)] = char(unit >= 'A' && unit <= 'Z' ? unit + ('a' - 'A') : unit);
            }
            if (ascii)
                m_folded[i] = std::move(folded);
        }
    }

    enum Kind { None, Number, Text, Natural };
    Kind m_kind = None;
    bool m_ascending;
    Qt::CaseSensitivity m_case;
    std::vector<int> m_numbers;
    std::vector<QString> m_texts;
    std::vector<std::string> m_folded; // empty unless the comparison ignores case
    std::vector<QCollatorSortKey> m_keys;
    std::vector<bool> m_unknown; // the natural text is empty
};

// The last component of a dropped path; a folder may arrive with a trailing separator.
QString lastPathComponent(QString path)
{
    while (path.size() > 1 && path.endsWith(QLatin1Char('/')))
        path.chop(1);
    return path.mid(path.lastIndexOf(QLatin1Char('/')) + 1);
}

} // namespace

void FormatManager::changeItem(const PluginPtr &item, const QString &column, const QVariant &value)
{
    if (!item)
        return;
    AppServices *services = &this->services();
    UndoStack *undo = services->undoStack();

    if (column == TableColumn::Group) {
        changeGroup(item, value.toString());
        item->updateLocation(m_traits.type);
        updateRecord(item);
        announceChanged({item});
        return;
    }
    if (column != TableColumn::Active && column != TableColumn::Global)
        return;
    // A plug-in the distribution owns is not marked at all: the apply would refuse it anyway.
    if (const QString refusal =
            DistributionGuard(m_traits, locations())
                .refusal(item->name(), m_list.folderOnDisk(*item), QString(),
                         item->metadata() ? item->metadata()->package : QString());
        !refusal.isEmpty()) {
        tell(*services, "%1", {refusal});
        return;
    }

    // Every call toggles whatever value it is given, so the same call is its own inverse.
    QPointer<FormatManager> self(this);
    undo->registerUndo(this, [self, item, column, value] {
        if (self)
            self->changeItem(item, column, value);
    });
    const bool globalFlag = column == TableColumn::Global;
    if (globalFlag)
        item->setGlobal(!item->isGlobal());
    else
        item->setActive(!item->isActive());
    if (!undo->isUndoing())
        undo->setActionName(m_traits.toggleActionName(item->name(), item->isActive(),
                                                      item->isGlobal(), globalFlag));

    services->updateUndoTitle();
    services->updateRedoTitle();
    item->updateLocation(m_traits.type);
    updateRecord(item);
    m_sets.noteItemChanged();
    announceChanged({item});
}

void FormatManager::setCurrentRow(int row)
{
    emit rowSelected(itemAt(row));
}

void FormatManager::sortBy(const QList<SortKey> &keys)
{
    m_sortKeys = keys;
    emit itemsAboutToBeReordered();
    sortPlugins();
    emit itemsReordered();
}

void FormatManager::sortPlugins()
{
    if (m_sortKeys.isEmpty())
        return;
    // Stable, and item IDs stay as the scan gave them: activation finds items by ID.
    std::vector<SortColumn> columns;
    columns.reserve(size_t(m_sortKeys.size()));
    const QList<PluginPtr> &plugins = m_list.items();
    for (const SortKey &sortKey : std::as_const(m_sortKeys))
        columns.emplace_back(sortKey, plugins, m_traits);
    std::vector<qsizetype> order(size_t(plugins.size()));
    std::iota(order.begin(), order.end(), qsizetype(0));
    std::stable_sort(order.begin(), order.end(), [&columns](qsizetype a, qsizetype b) {
        for (const SortColumn &column : columns) {
            if (const int result = column.compare(a, b); result != 0)
                return result < 0;
        }
        return false;
    });
    QList<PluginPtr> sorted;
    sorted.reserve(plugins.size());
    for (qsizetype index : order)
        sorted.append(plugins.at(index));
    m_list.reorder(std::move(sorted));
}

bool FormatManager::installDropped(const QStringList &paths)
{
    UserInterface &ui = this->ui();
    Alert alert;
    alert.style = Alert::Informational;
    alert.messageText = korvane::tr("Install Files");
    alert.informativeText = korvane::tr(m_traits.installInformative.toUtf8().constData());
    alert.buttons = {korvane::tr(m_traits.installFirstButton.toUtf8().constData()),
                     korvane::tr("All Files"), korvane::tr("Cancel")};
    alert.addedButtons = true;
    const AlertAnswer answer = ui.runAlert(alert);
    if (answer != AlertAnswer::First && answer != AlertAnswer::Second)
        return false;
    const bool allFiles = answer == AlertAnswer::Second;

    ui.progressBegin(korvane::tr(m_traits.installProgressTitle.toUtf8().constData()));
    ui.progressDetail(QString());
    FileOperations &files = this->files();
    const int count = int(paths.size());
    int i = 0;
    {
        const CopyProgressScope bytes(files, copyProgressFor(ui, i, count));
        for (; i < count; ++i) {
            // A person may stop a long install between files; what was copied stays.
            if (ui.progressCancelled())
                break;
            const QString &path = paths.at(i);
            const QString name = lastPathComponent(path);
            ui.progressText(path);
            ui.progressDetail(QString());
            ui.progressValue(i + 1, count);
            const bool recognised = recognise(m_traits.recognitionTakesFullPath ? path : name);
            if (!recognised && !allFiles)
                continue;
            QString target = locations().expand(m_traits.installPath(name));
            // An installed copy is asked about, and every failure said (DropInstall).
            DropInstall::Choice choice = DropInstall::settle(*this, path, &target);
            if (choice == DropInstall::Choice::Install)
                choice = DropInstall::copy(*this, path, target);
            if (choice == DropInstall::Choice::Stop) {
                ++i; // this one was tried
                break;
            }
        }
    }
    if (i < count) {
        const QString left = paths.mid(i).join(QStringLiteral(", "));
        systemLog(QStringLiteral("Stopped, not installed: %1").arg(left));
        services().appendLog(korvane::tr("Stopped, not installed: %1\n").arg(left));
    }
    rescan();
    ui.progressEnd();
    return true;
}

} // namespace korvane

#include "library/TableState.h"

#include "core/GroupRegistry.h"
#include "core/PluginList.h"
#include "library/FormatManager.h"
#include "library/TableColumns.h"

#include <algorithm>
#include <numeric>
#include <string>
#include <vector>

namespace korvane {

namespace {

// One sort key with every item's key taken out once, so the comparisons of a sort compare
// plain numbers and strings. The kinds follow the table's values: flags and numbers compare as
// numbers, the rest as text; a column the items do not have leaves the order to the next one.
class SortColumn {
public:
    SortColumn(const SortKey &sortKey, const QList<PluginPtr> &items, const Format &format,
               const GroupRegistry &groups, TableState::NaturalKeys &naturalKeys)
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
            texts([&groups](const Plugin &i) { return groups.nameAt(i.groupId()); });
        else if (key == TableColumn::Architecture)
            naturalTexts(items, naturalKeys, [](const Plugin &i) { return i.architecturesText(); });
        else if (key == TableColumn::Name && m_case == Qt::CaseInsensitive)
            naturalTexts(items, naturalKeys, [](const Plugin &i) { return i.name(); });
        else if (key == TableColumn::Name) // by code point, as the first version did
            texts([](const Plugin &i) { return i.name(); });
        else if (key == TableColumn::Location) // system, user, then the later folders in turn
            numbers([&format](const Plugin &i) { return i.locationCode(format) / 2; });
        else if (key == TableColumn::Vendor)
            naturalTexts(items, naturalKeys, metadata(&PluginMetadata::vendor));
        else if (key == TableColumn::Version)
            naturalTexts(items, naturalKeys, metadata(&PluginMetadata::version));
        else if (key == TableColumn::Package)
            naturalTexts(items, naturalKeys, metadata(&PluginMetadata::package));
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
    // before "1.10". The collator's keys are taken once per text and kept, so a comparison is a
    // plain byte comparison.
    template <typename Value>
    void naturalTexts(const QList<PluginPtr> &items, TableState::NaturalKeys &natural, Value value)
    {
        m_kind = Natural;
        // The C locale's collator compares code points and knows no numbers.
        QLocale locale;
        if (locale.language() == QLocale::C)
            locale = QLocale(QLocale::English, QLocale::UnitedStates);
        if (!natural.collator || natural.locale != locale || natural.keys.size() > 200000) {
            natural.keys.clear();
            natural.locale = locale;
            natural.collator.emplace(locale);
            natural.collator->setNumericMode(true);
            natural.collator->setCaseSensitivity(Qt::CaseInsensitive);
        }
        m_keys.reserve(size_t(items.size()));
        m_unknown.reserve(size_t(items.size()));
        for (const PluginPtr &item : items) {
            const QString text = value(*item);
            auto found = natural.keys.constFind(text);
            if (found == natural.keys.cend())
                found = natural.keys.insert(text, natural.collator->sortKey(text));
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

} // namespace

TableState::TableState(FormatManager &manager, PluginList &list)
    : m_manager(manager), m_list(list),
      m_columns(TableColumn::Defaults), m_sortKeys{{TableColumn::Name, true, true}}
{
}

void TableState::showArchitectureColumn(bool visible)
{
    // Showing twice adds a second column and hiding removes one; callers ask once per load.
    if (visible)
        m_columns << TableColumn::Architecture;
    else
        m_columns.removeOne(TableColumn::Architecture);
    emit m_manager.columnsChanged();
}

void TableState::sortBy(const QList<SortKey> &keys)
{
    m_sortKeys = keys;
    emit m_manager.itemsAboutToBeReordered();
    sort();
    emit m_manager.itemsReordered();
}

void TableState::sort()
{
    if (m_sortKeys.isEmpty())
        return;
    // Stable, and item IDs stay as the scan gave them: activation finds items by ID.
    std::vector<SortColumn> columns;
    columns.reserve(size_t(m_sortKeys.size()));
    const QList<PluginPtr> &plugins = m_list.items();
    for (const SortKey &sortKey : std::as_const(m_sortKeys))
        columns.emplace_back(sortKey, plugins, m_manager.traits(), m_manager.parts().groups,
                             m_naturalKeys);
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

void TableState::selectItems(const QList<PluginPtr> &items, const PluginPtr &lastSelected)
{
    m_selection.clear();
    for (const PluginPtr &item : items)
        if (item && !m_selection.contains(item))
            m_selection << item;
    if (lastSelected && !m_selection.contains(lastSelected))
        m_selection << lastSelected;
    // Without a word on which came last, the last one given stands for it.
    m_lastSelected =
        lastSelected ? lastSelected : (m_selection.isEmpty() ? PluginPtr() : m_selection.last());
    emit m_manager.selectionChanged();
}

void TableState::selectRows(const QList<int> &rows, int lastSelected)
{
    QList<PluginPtr> items;
    for (int row : rows)
        if (m_list.isValidRow(row))
            items << m_list.at(row);
    selectItems(items, m_manager.itemAt(lastSelected));
}

QList<PluginPtr> TableState::selectedItems() const
{
    QList<PluginPtr> items;
    for (int row : selectedRows())
        items << m_list.at(row);
    return items;
}

QList<int> TableState::selectedRows() const
{
    QList<int> rows;
    for (const PluginPtr &item : m_selection)
        if (const int row = m_manager.rowOf(item); row >= 0)
            rows << row;
    std::sort(rows.begin(), rows.end());
    return rows;
}

int TableState::selectedRow() const
{
    return m_manager.rowOf(m_lastSelected);
}

void TableState::setCurrentRow(int row)
{
    emit m_manager.rowSelected(m_manager.itemAt(row));
}

QList<QPair<QString, QString>> TableState::selectionPlaces() const
{
    QList<QPair<QString, QString>> places;
    for (const PluginPtr &item : selectedItems())
        places.append({item->name(), item->location()});
    return places;
}

void TableState::refindSelection(const QList<QPair<QString, QString>> &places)
{
    QList<PluginPtr> found;
    for (const PluginPtr &item : m_list.items())
        if (places.contains({item->name(), item->location()}))
            found << item;
    m_selection = found;
    m_lastSelected = found.isEmpty() ? PluginPtr() : found.last();
}

} // namespace korvane

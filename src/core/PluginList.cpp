#include "core/PluginList.h"

#include <QStringBuilder>

namespace korvane {

int PluginList::rowOf(const Plugin *item) const
{
    if (!m_rowsValid) {
        m_rows.clear();
        m_rows.reserve(m_items.size());
        for (qsizetype row = 0; row < m_items.size(); ++row)
            m_rows.insert(m_items.at(row).get(), int(row));
        m_rowsValid = true;
    }
    return m_rows.value(item, -1);
}

qsizetype PluginList::recordIndexOf(const Plugin &item) const
{
    const QString name = item.name();
    const int id = item.id();
    // A scan gives record i the ID i, so the item's record is normally at its ID; the walk is
    // left for a list that does not hold it there.
    if (id >= 0 && id < m_records.size() && m_records.at(id).id() == id
        && m_records.at(id).name() == name)
        return id;
    for (qsizetype i = 0; i < m_records.size(); ++i) {
        // The ID is the cheap half of the match; most records differ in it.
        if (m_records.at(i).id() == id && m_records.at(i).name() == name)
            return i;
    }
    return -1;
}

QString PluginList::folderOnDisk(const Plugin &item) const
{
    const qsizetype index = recordIndexOf(item);
    return index >= 0 ? m_records.at(index).folder() : item.location();
}

QString PluginList::pathOnDisk(const Plugin &item) const
{
    return folderOnDisk(item) % QLatin1Char('/') % item.name();
}

void PluginList::noteRecordState(bool wasProcessed, bool isProcessed)
{
    if (wasProcessed != isProcessed)
        m_pending += isProcessed ? -1 : 1;
}

int PluginList::findRow(const QString &name, int itemID) const
{
    // An item's ID is its index until the list is reordered.
    if (itemID >= 0 && itemID < m_items.size()) {
        const Plugin &item = *m_items.at(itemID);
        if (item.id() == itemID && item.name() == name)
            return itemID;
    }
    for (qsizetype i = 0; i < m_items.size(); ++i) {
        const Plugin &item = *m_items.at(i);
        if (item.id() == itemID && item.name() == name)
            return int(i);
    }
    return -1;
}

void PluginList::clear()
{
    m_items.clear();
    m_records.clear();
    m_rowsValid = false;
    m_pending = 0; // every record a scan makes is processed
}

void PluginList::append(const PluginPtr &item, PluginRecord record)
{
    const int id = int(m_items.size());
    item->setId(id);
    record.setId(id);
    if (m_rowsValid)
        m_rows.insert(item.get(), id);
    m_items.append(item);
    m_records.append(std::move(record));
}

void PluginList::reorder(QList<PluginPtr> items)
{
    m_items = std::move(items);
    m_rowsValid = false;
}

void PluginList::removeAt(int row)
{
    m_items.removeAt(row);
    m_rowsValid = false;
}

} // namespace korvane

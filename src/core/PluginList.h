#pragma once

#include "core/Plugin.h"
#include "core/PluginRecord.h"

#include <QHash>
#include <QList>

namespace korvane {

// A format's plug-ins in table order, each with the record of where the last scan found it, and
// the count of records still pending. The manager changes it and announces each change; the
// window reads it. Rows of items are looked up by identity without a walk of the list.
class PluginList {
public:
    int count() const { return int(m_items.size()); }
    bool isEmpty() const { return m_items.isEmpty(); }
    const PluginPtr &at(int row) const { return m_items.at(row); }
    bool isValidRow(int row) const { return row >= 0 && row < count(); }
    const QList<PluginPtr> &items() const { return m_items; }
    // The row that holds this very item; -1 when it is not in the list.
    int rowOf(const Plugin *item) const;

    const QList<PluginRecord> &records() const { return m_records; }
    PluginRecord &record(qsizetype index) { return m_records[index]; }
    // The index of an item's record (matched by name and ID), or -1.
    qsizetype recordIndexOf(const Plugin &item) const;
    // The folder an item lies in now: a change still pending has moved only the row.
    QString folderOnDisk(const Plugin &item) const;
    QString pathOnDisk(const Plugin &item) const;
    int pendingCount() const { return m_pending; }
    // Keeps the pending count when a record's state may have changed.
    void noteRecordState(bool wasProcessed, bool isProcessed);

    // The first item of this name and ID, or -1.
    int findRow(const QString &name, int itemID) const;

    void clear();
    // A scanned item with its record; both get the next ID.
    void append(const PluginPtr &item, PluginRecord record);
    // The same items in another order.
    void reorder(QList<PluginPtr> items);
    void removeAt(int row);

private:
    QList<PluginPtr> m_items;
    QList<PluginRecord> m_records;
    mutable QHash<const Plugin *, int> m_rows; // built on demand after the order changed
    mutable bool m_rowsValid = false;
    int m_pending = 0;
};

} // namespace korvane

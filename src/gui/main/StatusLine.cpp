#include "gui/main/StatusLine.h"

#include "core/Texts.h"
#include "gui/table/PluginFilterProxy.h"
#include "library/ChangeSummary.h"
#include "library/FormatManager.h"

#include <QLocale>

namespace korvane {

StatusLine::StatusLine(FormatManager &manager, PluginFilterProxy &shown, QWidget *parent)
    : QLabel(parent), m_manager(manager), m_shown(shown)
{
    setObjectName(QStringLiteral("lbStatus") + manager.traits().prefix);
    setTextFormat(Qt::PlainText);
    setAccessibleName(korvane::tr("Status"));
    m_later.setSingleShot(true);
    m_later.setInterval(0);
    connect(&m_later, &QTimer::timeout, this, &StatusLine::refresh);
    const auto later = [this] { m_later.start(); };
    // The library's counts go over every plug-in; a keystroke in the search changes only the
    // rows shown.
    const auto counts = [this] {
        m_countsStale = true;
        m_later.start();
    };
    connect(&manager, &FormatManager::itemsReset, this, counts);
    connect(&manager, &FormatManager::itemsChanged, this, counts);
    connect(&manager, &FormatManager::itemRemoved, this, counts);
    connect(&manager, &FormatManager::applyEnabledChanged, this, counts);
    connect(&shown, &QAbstractItemModel::rowsInserted, this, later);
    connect(&shown, &QAbstractItemModel::rowsRemoved, this, later);
    connect(&shown, &QAbstractItemModel::modelReset, this, later);
    connect(&shown, &QAbstractItemModel::layoutChanged, this, later);
    refresh();
}

QString StatusLine::compose(int total, int on, int off, int offOn, int needRights, int shown)
{
    const QLocale locale;
    QStringList parts;
    parts << (total == 1 ? korvane::tr("1 plug-in")
                         : korvane::tr("%1 plug-ins").arg(locale.toString(total)));
    parts << korvane::tr("%1 on").arg(locale.toString(on));
    const int changes = off + offOn;
    if (changes == 1)
        parts << korvane::tr("1 change pending: %1 off, %2 on")
                     .arg(locale.toString(off), locale.toString(offOn));
    else if (changes > 1)
        parts << korvane::tr("%1 changes pending: %2 off, %3 on")
                     .arg(locale.toString(changes), locale.toString(off), locale.toString(offOn));
    if (shown != total)
        parts << korvane::tr("%1 shown").arg(locale.toString(shown));
    if (needRights > 0)
        parts << korvane::tr("%1 system plug-ins change only with administrator rights")
                     .arg(locale.toString(needRights));
    return parts.join(QStringLiteral(" · "));
}

void StatusLine::refresh()
{
    m_later.stop();
    if (m_countsStale) {
        m_countsStale = false;
        m_on = 0;
        for (const PluginPtr &item : m_manager.items())
            m_on += item->isActive() ? 1 : 0;
        m_changes = ChangeSummary::of(m_manager);
    }
    setText(compose(m_manager.rowCount(), m_on, m_changes.off, m_changes.on, m_changes.needRights,
                    m_shown.rowCount()));
}

} // namespace korvane

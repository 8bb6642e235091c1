#include "gui/table/EmptyTableNote.h"

#include "core/Locations.h"
#include "core/Texts.h"
#include "gui/table/PluginFilterProxy.h"
#include "library/FormatManager.h"
#include "os/PathBytes.h"

#include <QEvent>

namespace korvane {

EmptyTableNote::EmptyTableNote(FormatManager &manager, PluginFilterProxy &shown, QWidget *viewport)
    : QLabel(viewport), m_manager(manager), m_shown(shown)
{
    setObjectName(QStringLiteral("lbEmpty") + manager.traits().prefix);
    // Folder names come from the disk and the environment: plain text, never markup.
    setTextFormat(Qt::PlainText);
    setWordWrap(true);
    setAlignment(Qt::AlignCenter);
    setTextInteractionFlags(Qt::TextSelectableByMouse);
    setContentsMargins(24, 24, 24, 24);
    viewport->installEventFilter(this);
    connect(&shown, &QAbstractItemModel::modelReset, this, &EmptyTableNote::follow);
    connect(&shown, &QAbstractItemModel::layoutChanged, this, &EmptyTableNote::follow);
    connect(&shown, &QAbstractItemModel::rowsInserted, this, &EmptyTableNote::follow);
    connect(&shown, &QAbstractItemModel::rowsRemoved, this, &EmptyTableNote::follow);
    follow();
}

QString EmptyTableNote::textFor(const FormatManager &manager)
{
    const auto folders = manager.locations().folderPaths(manager.traits());
    QStringList lines;
    lines
        << korvane::tr("No %1 plug-in was found. Korvane looked in:").arg(manager.traits().tabLabel)
        << QString();
    for (const QString &folder : folders)
        if (!folder.isEmpty())
            lines << displayName(folder);
    lines << QString()
          << korvane::tr("To add one, copy it into one of these folders and choose Plug-Ins > "
                         "Rescan, or drop it on this table.");
    return lines.join(QLatin1Char('\n'));
}

void EmptyTableNote::follow()
{
    const bool empty = m_manager.rowCount() == 0;
    if (empty) {
        setText(textFor(m_manager)); // the folders may have changed with the preferences
        setGeometry(parentWidget()->rect());
    }
    setVisible(empty);
}

bool EmptyTableNote::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == parentWidget() && event->type() == QEvent::Resize)
        setGeometry(parentWidget()->rect());
    return QLabel::eventFilter(watched, event);
}

} // namespace korvane

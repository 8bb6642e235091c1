#include "gui/table/RowMenu.h"

#include "core/GroupRegistry.h"
#include "core/Texts.h"
#include "core/UserInterface.h"
#include "library/BulkMarks.h"
#include "library/FormatManager.h"
#include "os/PathBytes.h"

#include <QDesktopServices>
#include <QFileInfo>
#include <QMenu>
#include <QUrl>

namespace korvane {

namespace {

QString menuText(QString title)
{
    return title.replace(QLatin1Char('&'), QLatin1String("&&"));
}

} // namespace

QMenu *RowMenu::make(FormatManager &manager, QWidget *parent,
                     const std::function<void()> &moveToTrash)
{
    auto *menu = new QMenu(parent);
    menu->setObjectName(QStringLiteral("menuRows"));
    const bool any = !manager.table().selectedRows().isEmpty();
    const auto add = [menu, any](const char *name, const QString &text, auto run) {
        QAction *item = menu->addAction(text);
        item->setObjectName(QLatin1String(name));
        item->setEnabled(any);
        QObject::connect(item, &QAction::triggered, menu, run);
        return item;
    };
    add("miRowOn", korvane::tr("On"), [&manager] { BulkMarks::selected(manager, true); });
    add("miRowOff", korvane::tr("Off"), [&manager] { BulkMarks::selected(manager, false); });

    QMenu *groups = menu->addMenu(korvane::tr("Set Group"));
    groups->setObjectName(QStringLiteral("menuRowGroups"));
    groups->setEnabled(any);
    // "none" is the core's own title for no group; the other titles are the user's.
    QAction *none = groups->addAction(korvane::tr("none"));
    QObject::connect(none, &QAction::triggered, menu,
                     [&manager] { manager.groups().setGroup(QStringLiteral("none")); });
    for (const QString &title : manager.parts().groups.groupMenuTitles()) {
        QAction *item = groups->addAction(menuText(title));
        QObject::connect(item, &QAction::triggered, menu,
                         [&manager, title] { manager.groups().setGroup(title); });
    }

    menu->addSeparator();
    add("miRowInfo", korvane::tr("Info"), [&manager] { manager.maintenance().requestInfo(); });
    add("miRowShow", korvane::tr("Show in File Manager"), [&manager] {
        if (const PluginPtr item = manager.itemAt(manager.table().selectedRow()))
            showFolderOf(manager, item);
    });
    menu->addSeparator();
    // The Delete command itself, with its question: nothing goes without it.
    add("miRowTrash", korvane::tr("Move to Trash..."), moveToTrash);
    return menu;
}

bool RowMenu::showFolderOf(const FormatManager &manager, const PluginPtr &item)
{
    if (!item)
        return false;
    if (showInFileManager(manager, item))
        return true;
    Alert alert;
    alert.messageText = korvane::tr("The folder could not be shown");
    alert.informativeText = korvane::tr("No file manager answered. The plug-in lies in:\n%1")
                                .arg(displayName(manager.plugins().pathOnDisk(*item)));
    manager.ui().runAlert(alert);
    return false;
}

bool RowMenu::showInFileManager(const FormatManager &manager)
{
    return showInFileManager(manager, manager.itemAt(manager.table().selectedRow()));
}

bool RowMenu::showInFileManager(const FormatManager &manager, const PluginPtr &item)
{
    if (!item)
        return false;
    // The folder, not the plug-in: a bundle opened as a URL would be run or entered.
    const QString folder = QFileInfo(manager.plugins().pathOnDisk(*item)).absolutePath();
    return QDesktopServices::openUrl(QUrl::fromLocalFile(folder));
}

} // namespace korvane

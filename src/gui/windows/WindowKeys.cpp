#include "gui/windows/WindowKeys.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QKeyEvent>
#include <QKeySequence>
#include <QShortcut>
#include <QWidget>

namespace korvane {

void closeWithKeys(QWidget &window)
{
    for (const QKeySequence &keys :
         {QKeySequence(Qt::Key_Escape), QKeySequence(Qt::CTRL | Qt::Key_W)}) {
        auto *shortcut = new QShortcut(keys, &window);
        shortcut->setContext(Qt::WindowShortcut);
        QObject::connect(shortcut, &QShortcut::activated, &window, [&window, keys] {
            // Escape in a cell being edited ends the edit, not the window: the editor gets the
            // key as if no shortcut had been there, and its delegate drops the edit.
            QWidget *focus = QApplication::focusWidget();
            if (keys == QKeySequence(Qt::Key_Escape) && focus)
                for (QWidget *w = focus->parentWidget(); w; w = w->parentWidget())
                    // Inside a view, anything with the focus but the view is a cell's editor.
                    if (qobject_cast<QAbstractItemView *>(w)) {
                        QKeyEvent press(QEvent::KeyPress, Qt::Key_Escape, Qt::NoModifier);
                        QApplication::sendEvent(focus, &press);
                        return;
                    }
            window.close();
        });
    }
}

} // namespace korvane

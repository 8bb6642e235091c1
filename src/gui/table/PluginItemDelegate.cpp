#include "gui/table/PluginItemDelegate.h"

#include "library/FormatManager.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QComboBox>
#include <QHelpEvent>
#include <QPainter>
#include <QStyle>
#include <QTextDocument>
#include <QToolTip>

namespace korvane {

PluginItemDelegate::PluginItemDelegate(FormatManager &manager, QObject *parent)
    : QStyledItemDelegate(parent), m_manager(manager)
{
}

QWidget *PluginItemDelegate::createEditor(QWidget *parent, const QStyleOptionViewItem &,
                                          const QModelIndex &index) const
{
    if (!(index.flags() & Qt::ItemIsEditable))
        return nullptr;
    auto *combo = new QComboBox(parent);
    combo->setAccessibleName(index.model()->headerData(index.column(), Qt::Horizontal).toString());
    const int count = m_manager.groups().choiceCount();
    for (int i = 0; i < count; ++i)
        combo->addItem(m_manager.groups().choiceAt(i));
    // A pick is the edit; waiting for the focus to leave would lose it when the tab changes.
    connect(combo, &QComboBox::activated, this, [this, combo] {
        auto *self = const_cast<PluginItemDelegate *>(this);
        emit self->commitData(combo);
        emit self->closeEditor(combo);
    });
    return combo;
}

void PluginItemDelegate::setEditorData(QWidget *editor, const QModelIndex &index) const
{
    if (auto *combo = qobject_cast<QComboBox *>(editor)) {
        combo->setCurrentIndex(combo->findText(index.data(Qt::EditRole).toString()));
        return;
    }
    QStyledItemDelegate::setEditorData(editor, index);
}

void PluginItemDelegate::setModelData(QWidget *editor, QAbstractItemModel *model,
                                      const QModelIndex &index) const
{
    if (auto *combo = qobject_cast<QComboBox *>(editor)) {
        if (combo->currentIndex() >= 0)
            model->setData(index, combo->currentText(), Qt::EditRole);
        return;
    }
    QStyledItemDelegate::setModelData(editor, model, index);
}

bool PluginItemDelegate::helpEvent(QHelpEvent *event, QAbstractItemView *view,
                                   const QStyleOptionViewItem &option, const QModelIndex &index)
{
    if (event && view && event->type() == QEvent::ToolTip) {
        const QString text = index.data(Qt::ToolTipRole).toString();
        if (text.isEmpty())
            QToolTip::hideText();
        else
            QToolTip::showText(event->globalPos(), plainToolTip(text), view,
                               view->visualRect(index));
        return true;
    }
    return QStyledItemDelegate::helpEvent(event, view, option, index);
}

QString PluginItemDelegate::plainToolTip(const QString &text)
{
    // A tool tip guesses its format; a path that looks like markup is escaped so it shows as is.
    return Qt::mightBeRichText(text) ? Qt::convertFromPlainText(text, Qt::WhiteSpaceNoWrap) : text;
}

void PluginItemDelegate::paint(QPainter *painter, const QStyleOptionViewItem &option,
                               const QModelIndex &index) const
{
    QStyledItemDelegate::paint(painter, option, index);
    // Fusion draws an empty box's frame a shade darker than the window, which a dark palette
    // makes as dark as the cell: the box gets a frame in the text's colour there.
    if (!index.data(Qt::CheckStateRole).isValid()
        || option.palette.color(QPalette::Base).lightness() >= 128)
        return;
    QStyleOptionViewItem item = option;
    initStyleOption(&item, index);
    const QWidget *widget = option.widget;
    const QStyle *style = widget ? widget->style() : QApplication::style();
    const QRect box = style->subElementRect(QStyle::SE_ItemViewItemCheckIndicator, &item, widget);
    QColor frame = option.palette.color(QPalette::Text);
    frame.setAlpha(140);
    painter->save();
    painter->setPen(frame);
    painter->setBrush(Qt::NoBrush);
    painter->drawRect(box.adjusted(1, 1, -2, -2));
    painter->restore();
}

} // namespace korvane

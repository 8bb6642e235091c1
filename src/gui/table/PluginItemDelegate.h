#pragma once

#include <QStyledItemDelegate>

namespace korvane {

class FormatManager;

// Draws the plug-in cells, edits the group column with a list of the group registry that commits
// as soon as a group is picked, and shows tool tips as the plain text they are.
class PluginItemDelegate : public QStyledItemDelegate {
    Q_OBJECT
public:
    PluginItemDelegate(FormatManager &manager, QObject *parent = nullptr);

    QWidget *createEditor(QWidget *parent, const QStyleOptionViewItem &option,
                          const QModelIndex &index) const override;
    void setEditorData(QWidget *editor, const QModelIndex &index) const override;
    void setModelData(QWidget *editor, QAbstractItemModel *model,
                      const QModelIndex &index) const override;
    void paint(QPainter *painter, const QStyleOptionViewItem &option,
               const QModelIndex &index) const override;
    bool helpEvent(QHelpEvent *event, QAbstractItemView *view, const QStyleOptionViewItem &option,
                   const QModelIndex &index) override;

    // Text that shows exactly as given in a tool tip, whatever markup it seems to hold.
    static QString plainToolTip(const QString &text);

private:
    FormatManager &m_manager;
};

} // namespace korvane

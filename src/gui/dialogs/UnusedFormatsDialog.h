#pragma once

#include "library/ProductFormats.h"

#include <QDialog>
#include <QList>

class QCheckBox;
class QLabel;
class QPushButton;
class QTreeWidget;

namespace korvane {

// Switch Off Unused Formats: for the products installed in more than one format, the person
// unticks the formats they do not use and sees, before anything is marked, every plug-in that
// would go off: from which folder to which, or why it stays (the planner the apply asks says
// so). Switch Off marks those plug-ins and applies each format through its own apply; Cancel
// changes nothing.
class UnusedFormatsDialog : public QDialog {
    Q_OBJECT
public:
    UnusedFormatsDialog(const QList<Product> &products, QWidget *parent = nullptr);

    const QList<QCheckBox *> &formatBoxes() const { return m_boxes; }
    QCheckBox *formatBox(const QString &format) const;
    QTreeWidget *previewList() const { return m_list; }
    QPushButton *switchOffButton() const { return m_switchOff; }
    QLabel *summary() const { return m_summary; }
    const ProductFormats::Preview &preview() const { return m_preview; }
    QStringList applied() const { return m_applied; } // the formats the last Switch Off applied

    void accept() override;

private:
    void showPreview();

    QList<Product> m_products;
    QList<QCheckBox *> m_boxes;
    QTreeWidget *m_list = nullptr;
    QLabel *m_summary = nullptr;
    QPushButton *m_switchOff = nullptr;
    ProductFormats::Preview m_preview;
    QStringList m_applied;
};

} // namespace korvane

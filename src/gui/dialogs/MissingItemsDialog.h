#pragma once

#include <QDialog>

class QPlainTextEdit;

namespace korvane {

// Lists the plug-ins an opened set names that are not installed; exec() answers 1 to ignore
// them and 2 to remove them from the set.
class MissingItemsDialog : public QDialog {
    Q_OBJECT
public:
    enum Answer { Ignore = 1, Remove = 2 };

    explicit MissingItemsDialog(const QString &list, QWidget *parent = nullptr);

    // Escape and the close box ignore: nothing is written.
    void reject() override { done(Ignore); }

private:
    QPlainTextEdit *m_list;
};

} // namespace korvane

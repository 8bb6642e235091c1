#include "gui/dialogs/MissingItemsDialog.h"

#include "core/Texts.h"

#include <QDialogButtonBox>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QVBoxLayout>

namespace korvane {

MissingItemsDialog::MissingItemsDialog(const QString &list, QWidget *parent)
    : QDialog(parent), m_list(new QPlainTextEdit(this))
{
    setWindowTitle(korvane::tr("Missing Plug-Ins"));
    auto *message = new QLabel(korvane::tr("These plug-ins of the set are not installed:"), this);
    message->setTextFormat(Qt::PlainText);

    // Names come from a document on disk: shown as they are, never as markup.
    m_list->setPlainText(list);
    m_list->setReadOnly(true);
    m_list->setLineWrapMode(QPlainTextEdit::NoWrap);
    m_list->setAccessibleName(korvane::tr("Missing plug-ins"));
    message->setBuddy(m_list);

    auto *hint = new QLabel(korvane::tr("Remove saves the set without them."), this);
    hint->setTextFormat(Qt::PlainText);

    auto *buttons = new QDialogButtonBox(this);
    QPushButton *remove = buttons->addButton(korvane::tr("Remove"), QDialogButtonBox::ActionRole);
    QPushButton *ignore = buttons->addButton(korvane::tr("Ignore"), QDialogButtonBox::ActionRole);
    remove->setAccessibleName(remove->text());
    ignore->setAccessibleName(ignore->text());
    // Ignoring leaves the set file as it is, so it is what Enter does.
    ignore->setDefault(true);
    ignore->setFocus();
    connect(remove, &QPushButton::clicked, this, [this] { done(Remove); });
    connect(ignore, &QPushButton::clicked, this, [this] { done(Ignore); });

    auto *layout = new QVBoxLayout(this);
    layout->addWidget(message);
    layout->addWidget(m_list);
    layout->addWidget(hint);
    layout->addWidget(buttons);
    resize(420, 280);
}

} // namespace korvane

#include "gui/dialogs/UnusedFormatsDialog.h"

#include "core/Texts.h"
#include "os/PathBytes.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLocale>
#include <QPushButton>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace korvane {

namespace {

// The folder of a path, as the person reads it.
QString folderOf(const QString &path)
{
    return displayName(path.left(path.lastIndexOf(QLatin1Char('/'))));
}

// Why a copy stays, as the planner that the apply asks has it: the distribution's package,
// another copy at the target, a folder that cannot be changed.
QString refusal(const PlannedMove &move)
{
    if (move.verdict == MoveVerdict::Unwritable)
        return korvane::tr("the folder %1 cannot be changed (no write access, locked or read-only)")
            .arg(displayName(move.error.path));
    if (move.error.reason.isEmpty())
        return korvane::tr("it cannot be moved");
    // The distribution's reason comes translated; the planner's own are marked for translation.
    return korvane::tr(move.error.reason.toUtf8().constData());
}

} // namespace

UnusedFormatsDialog::UnusedFormatsDialog(const QList<Product> &products, QWidget *parent)
    : QDialog(parent), m_products(products)
{
    setObjectName(QStringLiteral("wnUnusedFormats"));
    setWindowTitle(korvane::tr("Switch Off Unused Formats"));
    setAccessibleName(windowTitle());

    int several = 0;
    for (const Product &product : products)
        several += product.inSeveralFormats() ? 1 : 0;
    const QString text = several == 1
                             ? korvane::tr("1 product is installed in more than one format.")
                             : korvane::tr("%1 products are installed in more than one format.")
                                   .arg(QLocale().toString(several));
    auto *intro = new QLabel(
        text + QLatin1Char(' ')
            + korvane::tr("Untick the formats you do not use: their copies of those products are "
                          "switched off. A product is never switched off in every format."),
        this);
    intro->setWordWrap(true);
    intro->setTextFormat(Qt::PlainText);

    auto *boxes = new QHBoxLayout;
    boxes->addWidget(new QLabel(korvane::tr("Formats I use:"), this));
    for (const QString &format : ProductFormats::formatsOf(products)) {
        auto *box = new QCheckBox(format, this);
        box->setObjectName(QStringLiteral("cbUse") + QString(format).remove(u' '));
        box->setChecked(true);
        connect(box, &QCheckBox::toggled, this, &UnusedFormatsDialog::showPreview);
        boxes->addWidget(box);
        m_boxes << box;
    }
    boxes->addStretch(1);

    m_list = new QTreeWidget(this);
    m_list->setObjectName(QStringLiteral("tvUnusedPreview"));
    m_list->setAccessibleName(korvane::tr("What would change"));
    m_list->setRootIsDecorated(false);
    m_list->setUniformRowHeights(true);
    m_list->setSelectionMode(QAbstractItemView::NoSelection);
    m_list->setHeaderLabels(
        {korvane::tr("Plug-in"), korvane::tr("Format"), korvane::tr("From"), korvane::tr("To")});
    m_list->header()->resizeSection(0, 200);
    m_list->header()->resizeSection(1, 80);
    m_list->header()->resizeSection(2, 260);
    m_list->setTextElideMode(Qt::ElideMiddle);

    m_summary = new QLabel(this);
    m_summary->setObjectName(QStringLiteral("lbUnusedSummary"));
    m_summary->setTextFormat(Qt::PlainText);
    m_summary->setWordWrap(true);

    auto *buttons = new QDialogButtonBox(this);
    m_switchOff =
        buttons->addButton(korvane::tr("&Switch Off and Apply"), QDialogButtonBox::AcceptRole);
    m_switchOff->setObjectName(QStringLiteral("pbSwitchOffUnused"));
    QPushButton *cancel = buttons->addButton(QDialogButtonBox::Cancel);
    cancel->setObjectName(QStringLiteral("pbCancelUnused"));
    // Return must never switch anything off by itself.
    cancel->setDefault(true);
    m_switchOff->setAutoDefault(false);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

    auto *layout = new QVBoxLayout(this);
    layout->addWidget(intro);
    layout->addLayout(boxes);
    layout->addWidget(m_list, 1);
    layout->addWidget(m_summary);
    layout->addWidget(buttons);
    resize(900, 460);
    showPreview();
}

QCheckBox *UnusedFormatsDialog::formatBox(const QString &format) const
{
    for (QCheckBox *box : m_boxes)
        if (box->text() == format)
            return box;
    return nullptr;
}

void UnusedFormatsDialog::showPreview()
{
    QStringList kept;
    for (QCheckBox *box : std::as_const(m_boxes))
        if (box->isChecked())
            kept << box->text();
    m_preview = ProductFormats::preview(m_products, kept);
    m_list->clear();
    QList<QTreeWidgetItem *> rows;
    rows.reserve(m_preview.changes.size());
    for (const ProductFormats::Change &change : std::as_const(m_preview.changes)) {
        QString to;
        if (change.takesBackMark)
            to = korvane::tr("stays where it is: only the mark to switch it on goes");
        else if (change.move.moves())
            to = folderOf(change.move.to);
        else
            to = korvane::tr("stays: %1").arg(refusal(change.move));
        auto *row = new QTreeWidgetItem(
            {displayName(change.move.name), change.format, folderOf(change.move.from), to});
        row->setToolTip(2, displayName(change.move.from));
        row->setToolTip(3, change.move.moves() ? displayName(change.move.to) : to);
        if (!change.switches())
            for (int column = 0; column < 4; ++column)
                row->setForeground(column, palette().brush(QPalette::Disabled, QPalette::Text));
        rows << row;
    }
    m_list->addTopLevelItems(rows);

    const QLocale locale;
    QStringList parts;
    const int switching = m_preview.switching();
    parts
        << (switching == 1
                ? korvane::tr("1 plug-in will be switched off.")
                : korvane::tr("%1 plug-ins will be switched off.").arg(locale.toString(switching)));
    if (m_preview.refused() > 0)
        parts << korvane::tr("%1 will stay as they are.").arg(locale.toString(m_preview.refused()));
    if (m_preview.otherPending > 0)
        parts << korvane::tr("%1 changes already marked in these formats are applied too.")
                     .arg(locale.toString(m_preview.otherPending));
    if (switching == 0 && m_preview.refused() == 0)
        parts = QStringList{korvane::tr("Every format is ticked: nothing changes.")};
    m_summary->setText(parts.join(QLatin1Char(' ')));
    m_switchOff->setEnabled(switching > 0);
}

void UnusedFormatsDialog::accept()
{
    // The preview was made from what the lists hold now; nothing has changed them meanwhile
    // (the dialog is modal), so the marks are the ones shown.
    m_applied = ProductFormats::apply(m_preview, korvane::tr("Switch Off Unused Formats"));
    QDialog::accept();
}

} // namespace korvane

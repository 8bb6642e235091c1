#include "gui/windows/InfoPanel.h"

#include "app/InfoPanelModel.h"
#include "core/Texts.h"

#include <QCloseEvent>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QVBoxLayout>

namespace korvane {

namespace {
// A field that shows text from a plug-in's bundle exactly as it stands.
QLabel *makeField(const QString &objectName, const QString &accessibleName, QWidget *parent)
{
    auto *field = new QLabel(parent);
    field->setObjectName(objectName);
    field->setAccessibleName(accessibleName);
    field->setTextFormat(Qt::PlainText);
    field->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    field->setWordWrap(true);
    return field;
}
} // namespace

InfoPanel::InfoPanel(InfoPanelModel &info, QWidget *parent)
    : QWidget(parent, Qt::Tool), m_model(info)
{
    setWindowTitle(korvane::tr("Plug-In Info"));
    setAccessibleName(korvane::tr("Plug-In Info"));

    m_name = makeField(QStringLiteral("etIFName"), korvane::tr("Name"), this);
    m_version = makeField(QStringLiteral("etIFVersion"), korvane::tr("Version"), this);
    m_info = makeField(QStringLiteral("etIFInfo"), korvane::tr("Info"), this);
    auto *fields = new QFormLayout;
    fields->addRow(korvane::tr("Name:"), m_name);
    fields->addRow(korvane::tr("Version:"), m_version);
    fields->addRow(korvane::tr("Info:"), m_info);

    m_contentBox = new QWidget(this);
    m_content = new QListWidget(m_contentBox);
    m_content->setObjectName(QStringLiteral("tfIFData"));
    m_content->setAccessibleName(korvane::tr("Companion folders"));
    // Paths differ at their ends: the middle gives way first.
    m_content->setTextElideMode(Qt::ElideMiddle);
    m_content->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_add = new QPushButton(korvane::tr("Add..."), m_contentBox);
    m_add->setObjectName(QStringLiteral("pbAdd"));
    m_add->setAccessibleName(korvane::tr("Add a companion folder"));
    m_remove = new QPushButton(korvane::tr("Remove"), m_contentBox);
    m_remove->setObjectName(QStringLiteral("pbRemove"));
    m_remove->setAccessibleName(korvane::tr("Remove the selected companion folder"));
    auto *buttons = new QHBoxLayout;
    buttons->addWidget(m_add);
    buttons->addWidget(m_remove);
    buttons->addStretch();
    auto *contentLayout = new QVBoxLayout(m_contentBox);
    contentLayout->setContentsMargins(0, 0, 0, 0);
    contentLayout->addWidget(m_content);
    contentLayout->addLayout(buttons);

    auto *layout = new QVBoxLayout(this);
    layout->addLayout(fields);
    layout->addWidget(m_contentBox, 1);
    resize(420, 320);

    connect(m_add, &QPushButton::clicked, this, [this] { m_model.addContent(); });
    connect(m_remove, &QPushButton::clicked, this,
            [this] { m_model.removeContentAt(m_content->currentRow()); });
    connect(&info, &InfoPanelModel::changed, this, &InfoPanel::refresh);
    refresh();
}

void InfoPanel::refresh()
{
    m_name->setText(m_model.name());
    m_version->setText(m_model.version());
    m_info->setText(m_model.info());

    // The row in hand stays chosen while the same plug-in is shown, never across plug-ins.
    const PluginPtr shown = m_model.item();
    const int current = shown && shown == m_shown.lock() ? m_content->currentRow() : -1;
    m_shown = shown;
    m_content->clear();
    for (int row = 0; row < m_model.rowCount(); ++row)
        m_content->addItem(m_model.data(row));
    if (current >= 0 && current < m_content->count())
        m_content->setCurrentRow(current);
    m_contentBox->setVisible(m_model.showsContent());

    if (m_model.isVisible() && !isVisible()) {
        show();
        raise();
        activateWindow();
    } else if (!m_model.isVisible() && isVisible()) {
        hide();
    }
}

void InfoPanel::closeEvent(QCloseEvent *event)
{
    if (m_model.isVisible())
        m_model.closeWindow();
    QWidget::closeEvent(event);
}

} // namespace korvane

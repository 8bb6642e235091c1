#include "gui/main/DetailsPane.h"

#include "core/Texts.h"
#include "gui/table/RowMenu.h"
#include "library/ChangeSummary.h"
#include "library/FormatManager.h"
#include "os/PathBytes.h"

#include <QFont>
#include <QFormLayout>
#include <QLabel>
#include <QPushButton>
#include <QScrollArea>
#include <QVBoxLayout>

namespace korvane {

namespace {

// Whatever a plug-in's files say is shown, but never a page of it.
QString bounded(QString text)
{
    constexpr qsizetype limit = 4000;
    if (text.size() > limit) {
        text.truncate(limit);
        text += QChar(0x2026);
    }
    return text;
}

// The field labels, in the order shown.
const char *const kName = QT_TRANSLATE_NOOP("korvane", "Name");
const char *const kFile = QT_TRANSLATE_NOOP("korvane", "File");
const char *const kFormats = QT_TRANSLATE_NOOP("korvane", "Formats");
const char *const kVendor = QT_TRANSLATE_NOOP("korvane", "Vendor");
const char *const kVersion = QT_TRANSLATE_NOOP("korvane", "Version");
const char *const kState = QT_TRANSLATE_NOOP("korvane", "State");
const char *const kGroup = QT_TRANSLATE_NOOP("korvane", "Group");
const char *const kArchitectures = QT_TRANSLATE_NOOP("korvane", "Architectures");
const char *const kPackage = QT_TRANSLATE_NOOP("korvane", "Package");
const char *const kIdentifiers = QT_TRANSLATE_NOOP("korvane", "Identifiers");
const char *const kInside = QT_TRANSLATE_NOOP("korvane", "Plug-ins inside");
const char *const kLocation = QT_TRANSLATE_NOOP("korvane", "Location");
const char *const kUnreadable = QT_TRANSLATE_NOOP("korvane", "Cannot be read");

} // namespace

DetailsPane::DetailsPane(QWidget *parent) : QWidget(parent)
{
    setObjectName(QStringLiteral("DetailsPane"));
    setAccessibleName(korvane::tr("Details"));

    m_empty = new QLabel(korvane::tr("No plug-in selected"), this);
    m_empty->setObjectName(QStringLiteral("lbDetailsEmpty"));
    m_empty->setAlignment(Qt::AlignCenter);
    m_empty->setWordWrap(true);

    m_body = new QWidget;
    m_form = new QFormLayout;
    m_form->setRowWrapPolicy(QFormLayout::WrapLongRows);
    m_form->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);
    for (const char *label :
         {kName, kFile, kFormats, kVendor, kVersion, kState, kGroup, kArchitectures, kPackage,
          kIdentifiers, kInside, kLocation, kUnreadable})
        addField(label);

    m_contentHeading = new QLabel(korvane::tr("Companion content"), m_body);
    QFont heading = m_contentHeading->font();
    heading.setBold(true);
    m_contentHeading->setFont(heading);
    m_content = new QLabel(m_body);
    m_content->setObjectName(QStringLiteral("lbDetailContent"));
    m_content->setAccessibleName(korvane::tr("Companion content"));
    m_content->setTextFormat(Qt::PlainText);
    m_content->setWordWrap(true);
    m_content->setTextInteractionFlags(Qt::TextSelectableByMouse);

    m_show = new QPushButton(korvane::tr("Show in File Manager"), m_body);
    m_show->setObjectName(QStringLiteral("pbDetailShow"));
    m_show->setAutoDefault(false);
    connect(m_show, &QPushButton::clicked, this, [this] {
        if (m_manager && m_item)
            RowMenu::showFolderOf(*m_manager, m_item);
    });

    auto *bodyLayout = new QVBoxLayout(m_body);
    bodyLayout->addLayout(m_form);
    bodyLayout->addWidget(m_contentHeading);
    bodyLayout->addWidget(m_content);
    bodyLayout->addWidget(m_show, 0, Qt::AlignLeft);
    bodyLayout->addStretch(1);

    auto *scroll = new QScrollArea(this);
    m_scroll = scroll;
    scroll->setObjectName(QStringLiteral("saDetails"));
    scroll->setWidget(m_body);
    scroll->setWidgetResizable(true);
    scroll->setFrameShape(QFrame::NoFrame);
    scroll->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);

    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(4, 0, 0, 0);
    layout->addWidget(m_empty, 1);
    layout->addWidget(scroll, 1);
    setMinimumWidth(180);
    refresh();
}

QLabel *DetailsPane::addField(const char *label)
{
    auto *field = new QLabel(m_body);
    field->setObjectName(QStringLiteral("lbDetail")
                         + QString::fromLatin1(label).remove(u' ').remove(u'-'));
    field->setAccessibleName(korvane::tr(label));
    field->setTextFormat(Qt::PlainText);
    field->setWordWrap(true);
    // Selectable for copying, but no Tab stop each: the pane's one stop is its button.
    field->setTextInteractionFlags(Qt::TextSelectableByMouse);
    m_form->addRow(korvane::tr(label) + QLatin1Char(':'), field);
    m_fields.append({label, field});
    return field;
}

QLabel *DetailsPane::field(const QString &label) const
{
    for (const auto &[english, field] : m_fields)
        if (label == QLatin1String(english))
            return field;
    return nullptr;
}

bool DetailsPane::isFieldShown(const QString &label) const
{
    QLabel *shown = field(label);
    return shown && !shown->isHidden() && !m_scroll->isHidden() && !shown->text().isEmpty();
}

void DetailsPane::setField(const char *label, const QString &text)
{
    QLabel *shown = field(QLatin1String(label));
    shown->setText(bounded(text));
    // A field the plug-in says nothing for takes no room.
    m_form->setRowVisible(shown, !text.isEmpty());
}

void DetailsPane::showPlugin(FormatManager *manager, const PluginPtr &item,
                             const QStringList &formats)
{
    m_manager = manager;
    m_item = manager ? item : PluginPtr();
    m_formats = formats;
    refresh();
}

void DetailsPane::refresh()
{
    const bool any = m_manager && m_item;
    m_empty->setVisible(!any);
    m_scroll->setVisible(any);
    if (!any)
        return;
    const Plugin &item = *m_item;
    const PluginMetadata *metadata = item.metadata();
    const QString file = displayName(item.name());
    const QString name = metadata && !metadata->name.isEmpty() ? metadata->name : file;
    setField(kName, name);
    setField(kFile, file == name ? QString() : file);
    QStringList formats = m_formats;
    if (formats.isEmpty())
        formats << m_manager->traits().tabLabel;
    setField(kFormats, formats.join(QStringLiteral(", ")));
    setField(kVendor, metadata ? metadata->vendor : QString());
    setField(kVersion, metadata ? metadata->version : QString());
    QString state = item.isActive() ? korvane::tr("On") : korvane::tr("Off");
    if (ChangeSummary::isMarked(*m_manager, item))
        state += QLatin1String(" (")
                 + (item.isActive() ? korvane::tr("switched on at the next Apply")
                                    : korvane::tr("switched off at the next Apply"))
                 + QLatin1Char(')');
    setField(kState, state);
    setField(kGroup, m_manager->groupName(item));
    setField(kArchitectures, item.architecturesText()); // as the binary names them
    setField(kPackage, metadata ? metadata->package : QString());
    setField(kIdentifiers, metadata ? metadata->identifiers.join(QLatin1Char('\n')) : QString());
    QStringList inside;
    if (metadata && metadata->plugins.size() > 1)
        for (const PluginMetadata::Inner &inner : metadata->plugins)
            inside << (inner.name.isEmpty() ? inner.id : inner.name);
    setField(kInside, inside.join(QLatin1Char('\n')));
    setField(kLocation, displayName(m_manager->plugins().pathOnDisk(item)));
    QString unreadable = metadata ? metadata->unreadable : QString();
    if (unreadable.startsWith(QLatin1String("cannot be read: ")))
        unreadable = unreadable.mid(16);
    setField(kUnreadable, unreadable);

    QStringList content;
    for (int i = 0; i < item.contentCount(); ++i)
        content << displayName(item.contentAt(i));
    m_contentHeading->setVisible(!content.isEmpty());
    m_content->setVisible(!content.isEmpty());
    m_content->setText(bounded(content.join(QLatin1Char('\n'))));
}

} // namespace korvane

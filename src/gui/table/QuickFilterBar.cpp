#include "gui/table/QuickFilterBar.h"

#include "core/Texts.h"

#include <QCheckBox>
#include <QComboBox>
#include <QHBoxLayout>
#include <QSignalBlocker>

namespace korvane {

namespace {

// One of the bar's pop-ups, named for the tests and for screen readers; it grows with its items.
QComboBox *makeFilter(const QString &name, const QString &accessibleName, QWidget *parent)
{
    auto *filter = new QComboBox(parent);
    filter->setObjectName(name);
    filter->setAccessibleName(accessibleName);
    filter->setSizeAdjustPolicy(QComboBox::AdjustToContents);
    return filter;
}

} // namespace

QuickFilterBar::QuickFilterBar(const QString &prefix, QWidget *parent) : QWidget(parent)
{
    using State = PluginFilter::State;
    using Place = PluginFilter::Place;
    m_state =
        makeFilter(QStringLiteral("pbState") + prefix, korvane::tr("Show plug-ins that are"), this);
    m_state->addItem(korvane::tr("On and off"), int(State::Any));
    m_state->addItem(korvane::tr("On only"), int(State::On));
    m_state->addItem(korvane::tr("Off only"), int(State::Off));
    m_place = makeFilter(QStringLiteral("pbPlace") + prefix,
                         korvane::tr("Show plug-ins installed for"), this);
    m_place->addItem(korvane::tr("System and user"), int(Place::Any));
    m_place->addItem(korvane::tr("System only"), int(Place::System));
    m_place->addItem(korvane::tr("User only"), int(Place::User));
    m_architecture = makeFilter(QStringLiteral("pbArchitecture") + prefix,
                                korvane::tr("Show plug-ins built for"), this);
    m_architecture->addItem(korvane::tr("All architectures"), QString());
    m_format = makeFilter(QStringLiteral("pbFormat") + prefix,
                          korvane::tr("Show plug-ins of the format"), this);
    m_format->addItem(korvane::tr("All formats"), -1);
    m_format->hide();
    m_unreadable = new QCheckBox(korvane::tr("Cannot be read"), this);
    m_unreadable->setObjectName(QStringLiteral("cbUnreadable") + prefix);
    m_unreadable->setToolTip(
        korvane::tr("Only the plug-ins whose files could not be read; each row's tip says why"));

    auto *layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    for (QWidget *control : focusOrder())
        layout->addWidget(control);

    for (QComboBox *filter : {m_state, m_place, m_architecture, m_format})
        connect(filter, &QComboBox::currentIndexChanged, this, &QuickFilterBar::changed);
    connect(m_unreadable, &QCheckBox::toggled, this, &QuickFilterBar::changed);
}

QList<QWidget *> QuickFilterBar::focusOrder() const
{
    return {m_state, m_place, m_format, m_architecture, m_unreadable};
}

void QuickFilterBar::setArchitectures(const QStringList &architectures)
{
    QStringList offered;
    for (int i = 1; i < m_architecture->count(); ++i)
        offered << m_architecture->itemData(i).toString();
    if (offered == architectures)
        return;
    const QString chosen = m_architecture->currentData().toString();
    {
        const QSignalBlocker blocker(m_architecture);
        while (m_architecture->count() > 1)
            m_architecture->removeItem(1);
        for (const QString &architecture : architectures)
            m_architecture->addItem(architecture, architecture);
        m_architecture->setCurrentIndex(std::max(0, m_architecture->findData(chosen)));
    }
    if (m_architecture->currentData().toString() != chosen)
        emit changed();
}

void QuickFilterBar::setFormats(const QList<QPair<int, QString>> &formats)
{
    const int chosen = m_format->currentData().toInt();
    {
        const QSignalBlocker blocker(m_format);
        while (m_format->count() > 1)
            m_format->removeItem(1);
        for (const auto &[type, label] : formats)
            m_format->addItem(label, type);
        m_format->setCurrentIndex(std::max(0, m_format->findData(chosen)));
    }
    m_format->setVisible(!formats.isEmpty());
    if (m_format->currentData().toInt() != chosen)
        emit changed();
}

PluginFilter QuickFilterBar::applied(PluginFilter filter) const
{
    filter.state = PluginFilter::State(m_state->currentData().toInt());
    filter.place = PluginFilter::Place(m_place->currentData().toInt());
    filter.architecture = m_architecture->currentData().toString();
    filter.unreadableOnly = m_unreadable->isChecked();
    filter.format = m_format->currentData().toInt();
    return filter;
}

} // namespace korvane

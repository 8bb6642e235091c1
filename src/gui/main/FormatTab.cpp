#include "gui/main/FormatTab.h"

#include "core/Texts.h"
#include "gui/main/StatusLine.h"
#include "gui/table/PluginFilterProxy.h"
#include "gui/table/PluginTableView.h"
#include "gui/table/QuickFilterBar.h"
#include "library/FormatManager.h"
#include "library/SetController.h"
#include "library/UnsavedWork.h"
#include "os/PathBytes.h"

#include <QComboBox>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalBlocker>
#include <QVBoxLayout>

namespace korvane {

FormatTab::FormatTab(FormatManager &manager, Preferences *prefs, QWidget *parent)
    : QWidget(parent), m_manager(manager)
{
    const QString prefix = manager.traits().prefix;
    setObjectName(manager.traits().tabIdentifier());
    setAccessibleName(manager.traits().tabLabel);

    m_sets = new QComboBox(this);
    m_sets->setObjectName(QStringLiteral("pbSets") + prefix);
    m_sets->setAccessibleName(korvane::tr("Set"));
    m_sets->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    m_sets->setMinimumContentsLength(16);
    m_name = new QLineEdit(this);
    m_name->setObjectName(QStringLiteral("etName") + prefix);
    m_name->setAccessibleName(korvane::tr("Set name"));
    // The name is where Save writes; only Save As and Open choose it.
    m_name->setReadOnly(true);

    QPushButton *newButton = makeButton(QStringLiteral("pbNew"), korvane::tr("New"));
    QPushButton *open = makeButton(QStringLiteral("pbOpen"), korvane::tr("Open"));
    QPushButton *save = makeButton(QStringLiteral("pbSave"), korvane::tr("Save"));
    QPushButton *saveAs = makeButton(QStringLiteral("pbSaveAs"), korvane::tr("Save As"));
    m_apply = makeButton(QStringLiteral("pbActive"), korvane::tr("&Apply"));
    m_apply->setDefault(false);

    m_search = new QLineEdit(this);
    m_search->setObjectName(QStringLiteral("etSearch") + prefix);
    m_search->setAccessibleName(korvane::tr("Search"));
    m_search->setPlaceholderText(korvane::tr("Search"));
    m_search->setClearButtonEnabled(true);

    m_table = new PluginTableView(manager, prefs, this);
    m_table->setObjectName(QStringLiteral("table") + prefix);
    m_table->setAccessibleName(korvane::tr("Plug-Ins"));

    auto *bar = new QHBoxLayout;
    auto *setLabel = new QLabel(korvane::tr("Set:"), this);
    setLabel->setBuddy(m_sets);
    bar->addWidget(setLabel);
    bar->addWidget(m_sets, 2);
    bar->addWidget(m_name, 3);
    bar->addWidget(newButton);
    bar->addWidget(open);
    bar->addWidget(save);
    bar->addWidget(saveAs);
    bar->addSpacing(12);
    bar->addWidget(m_apply);

    // The counts and what Apply will do, before anyone presses it.
    m_status = new StatusLine(manager, m_table->filterProxy(), this);
    m_status->setMinimumWidth(80); // a long line is cut, never the window widened
    m_status->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);

    // The quick filters offer the architectures the format's plug-ins hold, after each scan.
    m_filters = new QuickFilterBar(prefix, this);
    const auto offerArchitectures = [this] {
        m_filters->setArchitectures(PluginFilter::architecturesOf(m_manager.items()));
    };
    offerArchitectures();
    connect(&manager, &FormatManager::itemsReset, this, offerArchitectures);

    auto *search = new QHBoxLayout;
    search->addWidget(m_filters);
    search->addWidget(m_search, 1);

    // The status line under the table, where a long line has the window's whole width.
    auto *layout = new QVBoxLayout(this);
    layout->addLayout(bar);
    layout->addLayout(search);
    layout->addWidget(m_table, 1);
    layout->addWidget(m_status);

    connect(newButton, &QPushButton::clicked, this, [this] { m_manager.sets().newSet(); });
    connect(open, &QPushButton::clicked, this, [this] { m_manager.sets().openSet(); });
    connect(save, &QPushButton::clicked, this, [this] { m_manager.sets().saveSet(); });
    connect(saveAs, &QPushButton::clicked, this, [this] { m_manager.sets().saveSetAs(); });
    connect(m_apply, &QPushButton::clicked, this, [this] { m_manager.apply(); });
    connect(m_sets, &QComboBox::activated, this, [this](int index) {
        // Another set replaces the marks and the open set's edits: asked first.
        if (index != m_manager.sets().selectedSetIndex() && !UnsavedWork::settle(m_manager)) {
            showSets(); // the pop-up goes back to the set still open
            return;
        }
        m_manager.sets().selectSet(index);
    });
    connect(m_search, &QLineEdit::textChanged, m_table, &PluginTableView::setFilterText);
    connect(m_filters, &QuickFilterBar::changed, this, [this] {
        PluginFilterProxy &proxy = m_table->filterProxy();
        proxy.setFilter(m_filters->applied(proxy.filter()));
    });
    // The order a person reads: the set bar, the filters, the search, then the table (one stop).
    QList<QWidget *> order{m_sets, m_name, newButton, open, save, saveAs, m_apply};
    order << m_filters->focusOrder() << m_search << m_table;
    for (qsizetype i = 1; i < order.size(); ++i)
        setTabOrder(order.at(i - 1), order.at(i));

    connect(&manager, &FormatManager::applyEnabledChanged, m_apply, &QPushButton::setEnabled);
    connect(&manager.sets(), &SetController::currentSetNameChanged, this,
            [this](const QString &name) { m_name->setText(shownSetName(name)); });
    connect(&manager.sets(), &SetController::setsChanged, this, &FormatTab::showSets);
    m_apply->setEnabled(manager.isApplyEnabled());
    m_name->setText(shownSetName(manager.sets().currentSetName()));
    showSets();
}

QComboBox *FormatTab::stateFilter() const
{
    return m_filters->stateFilter();
}

QComboBox *FormatTab::placeFilter() const
{
    return m_filters->placeFilter();
}

void FormatTab::focusSearch()
{
    m_search->setFocus(Qt::ShortcutFocusReason);
    m_search->selectAll();
}

QPushButton *FormatTab::makeButton(const QString &name, const QString &text)
{
    auto *button = new QPushButton(text, this);
    button->setObjectName(name + m_manager.traits().prefix);
    button->setAccessibleName(QString(text).remove(QLatin1Char('&')));
    button->setAutoDefault(false);
    return button;
}

QString FormatTab::setTitle(const QString &entry)
{
    // The sets file names the empty choice in English; the rest are paths, shown by their file
    // name (a long path was cut off at the left) with the path as tool tip.
    if (entry == SetController::noSetTitle())
        return SetController::shownNoSetTitle();
    return displayName(QFileInfo(entry).fileName());
}

QString FormatTab::shownSetName(const QString &name) const
{
    // The placeholder is the core's English name; a person sees it in their language.
    const QString untitled = m_manager.traits().untitledName;
    if (!untitled.isEmpty() && name == untitled) {
        const QString extension = QFileInfo(untitled).suffix();
        return korvane::tr("Untitled") + (extension.isEmpty() ? QString() : u'.' + extension);
    }
    return displayName(name);
}

void FormatTab::showSets()
{
    const QSignalBlocker blocker(m_sets);
    const QStringList titles = m_manager.sets().setTitles();
    QStringList shown;
    for (int i = 0; i < m_sets->count(); ++i)
        shown << m_sets->itemData(i).toString();
    if (shown != titles) {
        m_sets->clear();
        for (const QString &title : titles) {
            m_sets->addItem(setTitle(title), title);
            if (title != SetController::noSetTitle())
                m_sets->setItemData(m_sets->count() - 1, displayName(title), Qt::ToolTipRole);
        }
    }
    m_sets->setCurrentIndex(m_manager.sets().selectedSetIndex());
}

} // namespace korvane

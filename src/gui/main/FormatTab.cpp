#include "gui/main/FormatTab.h"

#include "core/Texts.h"
#include "gui/main/StatusLine.h"
#include "gui/table/PluginFilterProxy.h"
#include "gui/table/PluginTableView.h"
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
#include <iterator>

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

    m_state = new QComboBox(this);
    m_state->setObjectName(QStringLiteral("pbState") + prefix);
    m_state->setAccessibleName(korvane::tr("Show plug-ins that are"));
    m_state->addItem(korvane::tr("On and off"), int(PluginFilterProxy::State::Any));
    m_state->addItem(korvane::tr("On only"), int(PluginFilterProxy::State::On));
    m_state->addItem(korvane::tr("Off only"), int(PluginFilterProxy::State::Off));
    m_place = new QComboBox(this);
    m_place->setObjectName(QStringLiteral("pbPlace") + prefix);
    m_place->setAccessibleName(korvane::tr("Show plug-ins installed for"));
    m_place->addItem(korvane::tr("System and user"), int(PluginFilterProxy::Place::Any));
    m_place->addItem(korvane::tr("System only"), int(PluginFilterProxy::Place::System));
    m_place->addItem(korvane::tr("User only"), int(PluginFilterProxy::Place::User));
    for (QComboBox *filter : {m_state, m_place})
        filter->setSizeAdjustPolicy(QComboBox::AdjustToContents);

    auto *search = new QHBoxLayout;
    search->addWidget(m_state);
    search->addWidget(m_place);
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
    connect(m_state, &QComboBox::currentIndexChanged, this, [this] {
        m_table->filterProxy().setState(PluginFilterProxy::State(m_state->currentData().toInt()));
    });
    connect(m_place, &QComboBox::currentIndexChanged, this, [this] {
        m_table->filterProxy().setPlace(PluginFilterProxy::Place(m_place->currentData().toInt()));
    });
    // The order a person reads: the set bar, the filters, the search, then the table (one stop).
    QWidget *order[] = {m_sets,  m_name,  newButton, open,     save,   saveAs,
                        m_apply, m_state, m_place,   m_search, m_table};
    for (size_t i = 1; i < std::size(order); ++i)
        setTabOrder(order[i - 1], order[i]);

    connect(&manager, &FormatManager::applyEnabledChanged, m_apply, &QPushButton::setEnabled);
    connect(&manager.sets(), &SetController::currentSetNameChanged, this,
            [this](const QString &name) { m_name->setText(shownSetName(name)); });
    connect(&manager.sets(), &SetController::setsChanged, this, &FormatTab::showSets);
    m_apply->setEnabled(manager.isApplyEnabled());
    m_name->setText(shownSetName(manager.sets().currentSetName()));
    showSets();
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
    // "no set" is how the sets file names the empty choice; the rest are paths, shown by their
    // file name (a long path was cut off at the left) with the path as tool tip.
    if (entry == QLatin1String("no set"))
        return korvane::tr("no set");
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
            if (title != QLatin1String("no set"))
                m_sets->setItemData(m_sets->count() - 1, displayName(title), Qt::ToolTipRole);
        }
    }
    m_sets->setCurrentIndex(m_manager.sets().selectedSetIndex());
}

} // namespace korvane

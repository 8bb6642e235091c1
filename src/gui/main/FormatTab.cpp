#include "gui/main/FormatTab.h"

#include "core/Texts.h"
#include "gui/table/PluginTableView.h"
#include "library/ChangeSummary.h"
#include "library/FormatManager.h"
#include "library/UnsavedWork.h"

#include <QComboBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalBlocker>
#include <QVBoxLayout>

namespace korvane {

FormatTab::FormatTab(FormatManager &manager, QWidget *parent) : QWidget(parent), m_manager(manager)
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

    m_table = new PluginTableView(manager, this);
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

    // What Apply will do, before anyone presses it.
    m_status = new QLabel(this);
    m_status->setObjectName(QStringLiteral("lbChanges") + prefix);
    m_status->setTextFormat(Qt::PlainText);

    auto *search = new QHBoxLayout;
    search->addWidget(m_status, 1);
    search->addWidget(m_search, 1);

    auto *layout = new QVBoxLayout(this);
    layout->addLayout(bar);
    layout->addLayout(search);
    layout->addWidget(m_table, 1);

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

    connect(&manager, &FormatManager::applyEnabledChanged, m_apply, &QPushButton::setEnabled);
    connect(&manager.sets(), &SetController::currentSetNameChanged, m_name, &QLineEdit::setText);
    connect(&manager.sets(), &SetController::setsChanged, this, &FormatTab::showSets);
    for (auto changed : {&FormatManager::itemsReset, &FormatManager::itemsReordered})
        connect(&manager, changed, this, &FormatTab::showChanges);
    connect(&manager, &FormatManager::itemsChanged, this, &FormatTab::showChanges);
    connect(&manager, &FormatManager::itemRemoved, this, &FormatTab::showChanges);
    connect(&manager, &FormatManager::applyEnabledChanged, this, &FormatTab::showChanges);
    m_apply->setEnabled(manager.isApplyEnabled());
    showChanges();
    m_name->setText(manager.sets().currentSetName());
    showSets();
}

void FormatTab::showChanges()
{
    m_status->setText(ChangeSummary::of(m_manager).text());
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

void FormatTab::showSets()
{
    const QSignalBlocker blocker(m_sets);
    const QStringList titles = m_manager.sets().setTitles();
    QStringList shown;
    for (int i = 0; i < m_sets->count(); ++i)
        shown << m_sets->itemText(i);
    if (shown != titles) {
        m_sets->clear();
        m_sets->addItems(titles);
    }
    m_sets->setCurrentIndex(m_manager.sets().selectedSetIndex());
}

} // namespace korvane

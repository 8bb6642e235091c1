#include "gui/windows/PreferencesWindow.h"

#include "app/AppController.h"
#include "app/Preferences.h"
#include "core/FormatTable.h"
#include "core/Texts.h"

#include <QCheckBox>
#include <QCloseEvent>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTabWidget>
#include <QVBoxLayout>

namespace korvane {

PreferencesWindow::PreferencesWindow(Preferences &prefs, AppController &main, QWidget *parent)
    : QWidget(parent, Qt::Window), m_prefs(prefs), m_main(main)
{
    setWindowTitle(korvane::tr("Preferences"));
    setAccessibleName(korvane::tr("Preferences"));

    m_tabs = new QTabWidget(this);
    m_tabs->setAccessibleName(korvane::tr("Preference pages"));
    m_tabs->addTab(makeGeneralPage(), korvane::tr("General"));
    const FormatTable &formats = main.formats();
    m_pages.resize(formats.count());
    // A format's page stands at its type index plus one: the On box finds its format by it.
    for (const Format &format : formats)
        m_tabs->insertTab(format.type + 1, makeFormatPage(format), format.tabLabel);
    connect(m_tabs, &QTabWidget::currentChanged, this,
            [this](int index) { m_prefs.form.selectedTab = index; });

    auto *layout = new QVBoxLayout(this);
    layout->addWidget(m_tabs);
    // Before any click can store them: controls never read would store every format as off.
    loadControls();
}

QWidget *PreferencesWindow::makeGeneralPage()
{
    auto *page = new QWidget;
    auto *layout = new QVBoxLayout(page);
    m_checkForUpdates = new QCheckBox(korvane::tr("Check for updates at start-up"), page);
    m_checkForUpdates->setObjectName(QStringLiteral("cbCheckForUpdates"));
    m_checkForUpdates->setAccessibleName(m_checkForUpdates->text());
    connect(m_checkForUpdates, &QCheckBox::clicked, this, [this](bool checked) {
        m_prefs.form.checkForUpdates = checked;
        store();
    });
    layout->addWidget(m_checkForUpdates);
    layout->addStretch();
    return page;
}

QCheckBox *PreferencesWindow::makeBox(const Format &format, const char *name, const QString &text,
                                      bool PreferencesPage::*control)
{
    auto *box = new QCheckBox(text);
    // Tests find the check boxes by name: cbAUOn, cbVSTType ...
    box->setObjectName(QStringLiteral("cb") + format.prefix + QLatin1String(name));
    box->setAccessibleName(text);
    const int type = format.type;
    connect(box, &QCheckBox::clicked, this, [this, type, control](bool checked) {
        m_prefs.form.pages[type].*control = checked;
        if (control == &PreferencesPage::on)
            switchFormat(type);
        else if (control == &PreferencesPage::typeColumn)
            showTypeColumn(type);
        else
            store();
    });
    return box;
}

QWidget *PreferencesWindow::makeFormatPage(const Format &format)
{
    auto *page = new QWidget;
    page->setObjectName(format.preferencesTabIdentifier());
    auto *layout = new QVBoxLayout(page);
    FormatPage &controls = m_pages[format.type];
    const int type = format.type;

    auto *setRow = new QHBoxLayout;
    auto *setLabel = new QLabel(korvane::tr("Default set:"), page);
    setLabel->setTextFormat(Qt::PlainText);
    controls.defaultSet = new QLineEdit(page);
    controls.defaultSet->setObjectName(QStringLiteral("et") + format.prefix
                                       + QStringLiteral("Default"));
    controls.defaultSet->setAccessibleName(korvane::tr("Default set"));
    controls.defaultSet->setMinimumWidth(320);
    setLabel->setBuddy(controls.defaultSet);
    auto *choose = new QPushButton(korvane::tr("Choose..."), page);
    choose->setObjectName(QStringLiteral("pb") + format.prefix + QStringLiteral("Default"));
    choose->setAccessibleName(korvane::tr("Choose the default set"));
    connect(choose, &QPushButton::clicked, this, [this, type] { chooseDefaultSet(type); });
    connect(controls.defaultSet, &QLineEdit::editingFinished, this,
            [this, type] { editDefaultSet(type); });
    setRow->addWidget(setLabel);
    setRow->addWidget(controls.defaultSet, 1);
    setRow->addWidget(choose);
    layout->addLayout(setRow);

    controls.activateAfterLoading =
        makeBox(format, "ActivateAfterLoading", korvane::tr("Apply a set as soon as it is opened"),
                &PreferencesPage::activateAfterLoading);
    controls.on =
        makeBox(format, "On", korvane::tr("Use these plug-ins (a tab in the main window)"),
                &PreferencesPage::on);
    controls.showContent =
        makeBox(format, "ShowContent", korvane::tr("Show the companion folders in the info panel"),
                &PreferencesPage::showContent);
    controls.moveContent = makeBox(format, "MoveContent",
                                   korvane::tr("Move the companion folders with their plug-ins"),
                                   &PreferencesPage::moveContent);
    if (format.scansSubfolders)
        controls.scanSubfolders = makeBox(format, "ScanSubfolders", korvane::tr("Scan subfolders"),
                                          &PreferencesPage::scanSubfolders);
    controls.type = makeBox(format, "Type", korvane::tr("Show the Architecture column"),
                            &PreferencesPage::typeColumn);

    for (QCheckBox *box : {controls.on, controls.activateAfterLoading, controls.showContent,
                           controls.moveContent, controls.scanSubfolders, controls.type}) {
        if (box)
            layout->addWidget(box);
    }
    layout->addStretch();
    return page;
}

void PreferencesWindow::showPreferences()
{
    if (isVisible())
        loadControls();
    else
        show(); // showEvent loads them
    raise();
    activateWindow();
}

void PreferencesWindow::showEvent(QShowEvent *event)
{
    loadControls();
    QWidget::showEvent(event);
}

void PreferencesWindow::loadControls()
{
    m_prefs.loadForm();
    m_prefs.form.selectedTab = m_tabs->currentIndex();
    showControls();
}

void PreferencesWindow::showControls()
{
    const PreferencesForm &controls = m_prefs.form;
    m_checkForUpdates->setChecked(controls.checkForUpdates);
    for (int type = 0; type < m_pages.size(); ++type) {
        const FormatPage &page = m_pages.at(type);
        const PreferencesPage &c = controls.pages.at(type);
        page.defaultSet->setText(c.defaultSet);
        page.activateAfterLoading->setChecked(c.activateAfterLoading);
        page.on->setChecked(c.on);
        page.showContent->setChecked(c.showContent);
        page.moveContent->setChecked(c.moveContent);
        if (page.scanSubfolders)
            page.scanSubfolders->setChecked(c.scanSubfolders);
        page.type->setChecked(c.typeColumn);
    }
}

void PreferencesWindow::store()
{
    m_prefs.storeForm();
}

void PreferencesWindow::switchFormat(int type)
{
    // The controller takes the format from the page in front; a click may come from elsewhere.
    m_prefs.form.selectedTab = type + 1;
    m_main.showSelectedFormatTab(m_prefs.form.pages.at(type).on); // stores the controls too
    m_prefs.form.selectedTab = m_tabs->currentIndex();
}

void PreferencesWindow::showTypeColumn(int type)
{
    const bool show = m_prefs.form.pages.at(type).typeColumn;
    store();
    m_main.showArchitectureColumn(type, show);
}

void PreferencesWindow::chooseDefaultSet(int type)
{
    m_prefs.form.selectedTab = type + 1;
    m_prefs.chooseDefaultSet(); // stores every control, chosen or cancelled
    m_prefs.form.selectedTab = m_tabs->currentIndex();
    m_pages.at(type).defaultSet->setText(m_prefs.form.pages.at(type).defaultSet);
}

void PreferencesWindow::editDefaultSet(int type)
{
    const QString text = m_pages.at(type).defaultSet->text();
    if (text == m_prefs.form.pages.value(type).defaultSet)
        return;
    m_prefs.form.pages[type].defaultSet = text;
    store();
}

} // namespace korvane

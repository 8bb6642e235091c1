#include "GuiFixture.h"

#include "core/FileErrorQuestion.h"
#include "gui/Translations.h"
#include "gui/main/FormatTab.h"
#include "gui/main/MainWindow.h"
#include "gui/table/PluginTableModel.h"
#include "os/ReadOnlyFileOperations.h"

#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QLabel>
#include <QMenuBar>
#include <QPushButton>
#include <QTranslator>

namespace korvane {
namespace {

// A German-speaking user's start-up: the translations are loaded as the program loads them,
// before any window or controller is made.
class GermanStartupTest : public GuiTest {
protected:
    void SetUp() override
    {
        GuiTest::SetUp();
        QLocale::setDefault(QLocale(QLocale::German, QLocale::Germany));
        installTranslations(*qApp);
    }
    void TearDown() override
    {
        for (QTranslator *translator : qApp->findChildren<QTranslator *>()) {
            QCoreApplication::removeTranslator(translator);
            delete translator;
        }
        QLocale::setDefault(QLocale::system());
        GuiTest::TearDown();
    }
};

TEST_F(GermanStartupTest, WindowsAlertsAndQtsOwnButtonsAreGerman)
{
    makeContext();
    context->prepareWindow();

    // One alert from each layer that shows one: the controller, a manager (its texts come from the
    // format table) and the file-error alert, whose reason comes from the file operations.
    context->main()->moveSelectedToTrash();
    context->manager(TypeAU)->maintenance().requestInfo();
    ReadOnlyFileOperations readOnly(disk());
    FileError error;
    ASSERT_FALSE(readOnly.move(homePath("Echo.vst"), homePath("Echo2.vst"), &error));
    askToProceedAfter(context->main()->ui(), error);

    ASSERT_EQ(ui.alerts.size(), 3);
    EXPECT_EQ(ui.alerts[0].buttons, QStringList({"Abbrechen", "In den Papierkorb legen"}));
    EXPECT_EQ(ui.alerts[1].informativeText, "Bitte wählen Sie ein AudioUnit-Plug-In aus");
    EXPECT_EQ(ui.alerts[2].messageText, "Fehler bei einer Dateioperation …\n Fehler: "
                                        "schreibgeschützt\n bei der Datei: "
                                            + homePath("Echo.vst"));
    EXPECT_EQ(ui.alerts[2].buttons, QStringList({"Fortfahren", "Anhalten"}));

    // The scan's progress panel, the table's titles (looked up by a key the table computes), the
    // main window's menus and Qt's own texts.
    context->manager(TypeVST)->rescan();
    EXPECT_EQ(ui.progressTitles.value(ui.progressTitles.size() - 1), "VST-Plug-Ins durchsuchen:");
    EXPECT_EQ(PluginTableModel::title("AUActive"), "Aktiv");
    EXPECT_EQ(PluginTableModel::title("AUVendor"), "Hersteller");
    MainWindow window(*context);
    EXPECT_EQ(window.menuBar()->actions().value(1)->text(), "&Bearbeiten");
    QStringList setLabels; // the label before the set pop-up, once left in English
    for (const QLabel *label : window.page(TypeAU)->findChildren<QLabel *>())
        if (label->buddy() == window.page(TypeAU)->setList())
            setLabels << label->text();
    EXPECT_EQ(setLabels, QStringList{"Gewähltes Set:"});
    QDialogButtonBox buttons(QDialogButtonBox::Cancel);
    EXPECT_EQ(buttons.button(QDialogButtonBox::Cancel)->text(), "Abbrechen");
}

} // namespace
} // namespace korvane

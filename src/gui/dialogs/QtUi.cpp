#include "gui/dialogs/QtUi.h"

#include "core/Texts.h"
#include "gui/dialogs/MissingItemsDialog.h"
#include "gui/dialogs/ProgressDialog.h"

#include <QApplication>
#include <QDesktopServices>
#include <QFileDialog>
#include <QFileInfo>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>

namespace korvane {

namespace {

// The eye sees about thirty frames a second; servicing events more often only slows the work.
constexpr qint64 ServiceIntervalMs = 30;
// Work shorter than this (a rescan of a few plug-ins) shows no panel that would only flash.
constexpr qint64 ProgressShowDelayMs = 300;

QMessageBox::Icon iconFor(Alert::Style style)
{
    switch (style) {
    case Alert::Informational:
        return QMessageBox::Information;
    case Alert::Critical:
        return QMessageBox::Critical;
    case Alert::Warning:
        break;
    }
    return QMessageBox::Warning;
}

// A title is shown as written: an ampersand is a character, not a shortcut marker.
QString buttonText(const QString &title)
{
    QString text = title;
    return text.replace(QLatin1Char('&'), QLatin1String("&&"));
}

// The answers that leave everything as it is; Escape gives one of them, never a guess.
bool leavesThingsAlone(const QString &title)
{
    const QString word = title.trimmed();
    for (const char *safe : {"Cancel", "Stop"}) {
        if (word.compare(QLatin1String(safe), Qt::CaseInsensitive) == 0
            || word.compare(korvane::tr(safe), Qt::CaseInsensitive) == 0)
            return true;
    }
    return false;
}

AlertAnswer answerFor(const Alert &alert, qsizetype index)
{
    static constexpr AlertAnswer added[] = {AlertAnswer::First, AlertAnswer::Second,
                                            AlertAnswer::Third};
    static constexpr AlertAnswer plain[] = {AlertAnswer::Default, AlertAnswer::Alternate};
    if (alert.addedButtons)
        return index >= 0 && index < 3 ? added[index] : AlertAnswer::None;
    return index >= 0 && index < 2 ? plain[index] : AlertAnswer::None;
}

QStringList cleanTypes(const QStringList &types)
{
    QStringList clean;
    for (const QString &type : types) {
        QString trimmed = type.trimmed();
        if (trimmed.startsWith(QLatin1Char('.')))
            trimmed.remove(0, 1);
        if (!trimmed.isEmpty() && !clean.contains(trimmed))
            clean << trimmed;
    }
    return clean;
}

QStringList nameFilters(const QStringList &types)
{
    if (types.isEmpty())
        return {};
    QStringList patterns;
    for (const QString &type : types)
        patterns << QStringLiteral("*.") + type;
    return {korvane::tr("Documents (%1)").arg(patterns.join(QLatin1Char(' '))),
            korvane::tr("All files (*)")};
}

} // namespace

QtUi::QtUi(QObject *parent) : QObject(parent) {}

QtUi::~QtUi()
{
    delete m_progress;
}

QWidget *QtUi::dialogParent() const
{
    if (m_progress && m_progress->isVisible())
        return m_progress;
    return m_window;
}

AlertAnswer QtUi::runAlert(const Alert &alert)
{
    QMessageBox box(dialogParent());
    box.setWindowTitle(alert.title.isEmpty() ? QApplication::applicationDisplayName()
                                             : alert.title);
    box.setIcon(iconFor(alert.style));
    box.setTextFormat(Qt::PlainText);
    box.setText(alert.messageText);
    box.setInformativeText(alert.informativeText);
    box.setTextInteractionFlags(Qt::TextSelectableByMouse);

    const QStringList titles =
        alert.buttons.isEmpty() ? QStringList{korvane::tr("OK")} : alert.buttons;
    QList<QAbstractButton *> buttons;
    QPushButton *escape = nullptr;
    for (const QString &title : titles) {
        auto *button = new QPushButton(buttonText(title), &box);
        button->setAccessibleName(title);
        // One role for all: the buttons stand in the order the alert lists them.
        box.addButton(button, QMessageBox::ActionRole);
        buttons << button;
        if (!escape && leavesThingsAlone(title))
            escape = button;
    }
    box.setDefaultButton(static_cast<QPushButton *>(buttons.first()));
    if (!escape && buttons.size() == 1)
        escape = static_cast<QPushButton *>(buttons.first());
    if (escape)
        box.setEscapeButton(escape);
    // The informative line is not covered by the box's own text format.
    for (QLabel *label : box.findChildren<QLabel *>())
        label->setTextFormat(Qt::PlainText);

    box.exec();
    return answerFor(alert, buttons.indexOf(box.clickedButton()));
}

std::optional<QString> QtUi::runSavePanel(const SavePanelRequest &request)
{
    const QStringList types = cleanTypes(request.allowedTypes);
    QFileDialog dialog(dialogParent(), korvane::tr("Save"), request.directory);
    dialog.setAcceptMode(QFileDialog::AcceptSave);
    dialog.setFileMode(QFileDialog::AnyFile);
    dialog.setNameFilters(nameFilters(types));
    // A name typed without an extension gets the document's own, so that opening finds it.
    dialog.setDefaultSuffix(types.isEmpty() ? QFileInfo(request.fileName).suffix() : types.first());
    dialog.selectFile(request.fileName);
    for (;;) {
        if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty())
            return std::nullopt;
        QString path = dialog.selectedFiles().first();
        if (types.isEmpty() || types.contains(QFileInfo(path).suffix()))
            return path;
        // "My.Set" would never show among the documents again: the allowed type is added, and
        // since the dialog only asked about the name as typed, replacing is asked here.
        path += QLatin1Char('.') + types.first();
        if (!QFileInfo::exists(path))
            return path;
        Alert replace;
        replace.messageText = korvane::tr("\"%1\" already exists. Do you want to replace it?")
                                  .arg(QFileInfo(path).fileName());
        replace.buttons = {korvane::tr("Cancel"), korvane::tr("Replace")};
        if (runAlert(replace) == AlertAnswer::Alternate)
            return path;
        dialog.selectFile(QFileInfo(path).fileName());
    }
}

std::optional<QString> QtUi::runOpenPanel(const OpenPanelRequest &request)
{
    QFileDialog dialog(dialogParent(), korvane::tr("Open"), request.directory);
    dialog.setAcceptMode(QFileDialog::AcceptOpen);
    if (request.canChooseDirectories && !request.canChooseFiles) {
        dialog.setFileMode(QFileDialog::Directory);
        dialog.setOption(QFileDialog::ShowDirsOnly);
    } else {
        dialog.setFileMode(QFileDialog::ExistingFile);
        dialog.setNameFilters(nameFilters(cleanTypes(request.allowedTypes)));
    }
    // Read-only takes away New Folder, and with it renaming and deleting in the panel.
    dialog.setOption(QFileDialog::ReadOnly, !request.canCreateDirectories);
    if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty())
        return std::nullopt;
    return dialog.selectedFiles().first();
}

MissingItemsAnswer QtUi::runMissingItems(const QString &list)
{
    MissingItemsDialog dialog(list, dialogParent());
    return dialog.exec() == MissingItemsDialog::Remove ? MissingItemsAnswer::Remove
                                                       : MissingItemsAnswer::Ignore;
}

void QtUi::progressBegin(const QString &title)
{
    m_progressTitle = title;
    m_progressDirty = true;
    if (m_progressDepth++ > 0) {
        serviceEvents();
        return;
    }
    m_progressUpper.clear();
    m_progressLower.clear();
    m_progressValue = 0;
    m_progressMaximum = 0;
    m_progressCancelled = false;
    m_progressStarted.start();
    m_lastService.invalidate();
    serviceEvents(true);
}

void QtUi::progressText(const QString &upper)
{
    m_progressUpper = upper;
    m_progressDirty = true;
    serviceEvents();
}

void QtUi::progressDetail(const QString &lower)
{
    m_progressLower = lower;
    m_progressDirty = true;
    serviceEvents();
}

void QtUi::progressValue(double value, double maximum)
{
    m_progressValue = value;
    m_progressMaximum = maximum;
    m_progressDirty = true;
    serviceEvents();
}

void QtUi::progressEnd()
{
    if (m_progressDepth == 0 || --m_progressDepth > 0)
        return;
    if (m_progress) {
        m_progress->hide();
        m_progress->deleteLater();
        m_progress = nullptr;
    }
}

bool QtUi::progressCancelled()
{
    if (m_progressDepth > 0)
        serviceEvents();
    if (m_progress && m_progress->isCancelled())
        m_progressCancelled = true;
    return m_progressCancelled;
}

void QtUi::serviceEvents(bool now)
{
    if (m_progressDepth == 0)
        return;
    if (!now && m_lastService.isValid() && m_lastService.elapsed() < ServiceIntervalMs)
        return;
    m_lastService.start();
    if (!m_progress && m_progressStarted.elapsed() >= ProgressShowDelayMs)
        showPendingProgress();
    if (m_progress && m_progressDirty) {
        m_progress->setWindowTitle(m_progressTitle);
        m_progress->setUpperText(m_progressUpper);
        m_progress->setLowerText(m_progressLower);
        m_progress->setProgress(m_progressValue, m_progressMaximum);
        m_progressDirty = false;
    }
    // Until the modal panel stands in front, a click would reach the windows behind it while
    // their data is being changed: it waits until then.
    QApplication::processEvents(m_progress ? QEventLoop::AllEvents
                                           : QEventLoop::ExcludeUserInputEvents);
}

void QtUi::showPendingProgress()
{
    m_progress = new ProgressDialog(m_window);
    // Every window of the program waits; they keep painting because events are serviced here.
    m_progress->setWindowModality(Qt::ApplicationModal);
    m_progressDirty = true;
    m_progress->show();
}

void QtUi::openUrl(const QUrl &url)
{
    QDesktopServices::openUrl(url);
}

void QtUi::beep()
{
    QApplication::beep();
}

} // namespace korvane

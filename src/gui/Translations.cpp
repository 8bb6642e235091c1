#include "gui/Translations.h"

#include <QCoreApplication>
#include <QLibraryInfo>
#include <QLocale>
#include <QTranslator>

namespace korvane {

namespace {

// QLocale() is the system locale unless a default was set; its uiLanguages follow LANGUAGE,
// LC_ALL, LC_MESSAGES and LANG, best first, and load() tries each of them, "de_AT" then "de".
bool install(QCoreApplication &app, const QString &name, const QString &folder)
{
    auto *translator = new QTranslator(&app);
    if (translator->load(QLocale(), name, QStringLiteral("_"), folder)
        && app.installTranslator(translator))
        return true;
    delete translator;
    return false;
}

} // namespace

void installTranslations(QCoreApplication &app)
{
    // Ours first, then Qt's own texts: the buttons of the standard dialogs and the file chooser.
    // Where no file of the language ships, the English keys are shown.
    install(app, QStringLiteral("korvane"), QStringLiteral(":/translations"));
    install(app, QStringLiteral("qtbase"), QLibraryInfo::path(QLibraryInfo::TranslationsPath));
}

} // namespace korvane

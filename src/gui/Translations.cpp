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

// The plug-in table's column titles are looked up by a key it computes, which lupdate cannot
// follow; they are marked here so that the translations carry them.
[[maybe_unused]] const char *const kColumnTitles[] = {
    QT_TRANSLATE_NOOP("korvane", "Active"), QT_TRANSLATE_NOOP("korvane", "Name"),
    QT_TRANSLATE_NOOP("korvane", "Global"), QT_TRANSLATE_NOOP("korvane", "Group"),
    QT_TRANSLATE_NOOP("korvane", "Type"),   QT_TRANSLATE_NOOP("korvane", "Location"),
};

} // namespace

void installTranslations(QCoreApplication &app)
{
    // Ours first, then Qt's own texts: the buttons of the standard dialogs and the file chooser.
    // Where no file of the language ships, the English keys are shown.
    install(app, QStringLiteral("korvane"), QStringLiteral(":/translations"));
    install(app, QStringLiteral("qtbase"), QLibraryInfo::path(QLibraryInfo::TranslationsPath));
}

} // namespace korvane

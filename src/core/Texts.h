#pragma once

#include <QCoreApplication>
#include <QString>

namespace korvane {

// User-visible texts are keyed by their English wording; a missing translation shows the key.
// There is one context, "korvane": lupdate files every call of korvane::tr under the namespace's
// name, so a text marked elsewhere for later lookup says QT_TRANSLATE_NOOP("korvane", ...).
inline QString tr(const char *english)
{
    return QCoreApplication::translate("korvane", english);
}

} // namespace korvane

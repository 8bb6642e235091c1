#pragma once

#include <QCoreApplication>
#include <QString>
#include <QStringList>

namespace korvane {

// User-visible texts are keyed by their English wording; a missing translation shows the key.
// There is one context, "korvane": lupdate files every call of korvane::tr under the namespace's
// name, so a text marked elsewhere for later lookup says QT_TRANSLATE_NOOP("korvane", ...).
inline QString tr(const char *english)
{
    return QCoreApplication::translate("korvane", english);
}

// Fills each "%@" of a looked-up text in turn; a "%@" inside an argument stays as it is.
inline QString fillFormat(const QString &format, const QStringList &args)
{
    QString out;
    qsizetype from = 0;
    for (const QString &arg : args) {
        const qsizetype at = format.indexOf(QLatin1String("%@"), from);
        if (at < 0)
            break;
        out += format.mid(from, at - from);
        out += arg;
        from = at + 2;
    }
    out += format.mid(from);
    return out;
}

} // namespace korvane

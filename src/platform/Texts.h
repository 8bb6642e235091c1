#pragma once

#include <QCoreApplication>
#include <QString>

namespace korvane {

// User-visible texts are keyed by their English wording; a missing translation shows the key.
inline QString tr(const char *english)
{
    return QCoreApplication::translate("Korvane", english);
}

} // namespace korvane

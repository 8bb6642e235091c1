#pragma once

#include "os/FileOperations.h"

#include <QString>
#include <QStringList>

namespace korvane {

class ActivityLog;
class UserInterface;

// Says text with its arguments filled in where a person will see it: the log window in the
// user's language, the system log and KorvaneCMD's standard error in English.
void tell(ActivityLog &log, const char *text, const QStringList &args);

// Copy progress of the item-th (from 0, as it counts on) of count items, for the progress panel.
// Copies of less than LongCopyBytes are over before anyone could read their figures.
inline constexpr qint64 LongCopyBytes = 4 * 1024 * 1024;
CopyProgress copyProgressFor(UserInterface &ui, const int &item, int count);

} // namespace korvane

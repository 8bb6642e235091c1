#include "model/AULog.h"

namespace korvane {

bool AULog::checkAndUpdateLogID(const QString &name, const QString &path, int id)
{
    if (name != logName || id != nLogID)
        return false;
    bProcessed = (path == logPath);
    return true;
}

bool AULog::checkAndUpdateLog(const QString &name, const QString &path)
{
    if (name != logName)
        return false;
    bProcessed = (path == logPath);
    return true;
}

} // namespace korvane

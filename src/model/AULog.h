#pragma once

#include <QString>

namespace korvane {

// Where the last scan found one plug-in; not processed while the plug-in should be elsewhere.
class AULog {
public:
    int getLogID() const { return nLogID; }
    void setLogID(int id) { nLogID = id; }
    QString getLogName() const { return logName; }
    void setLogName(const QString &name) { logName = name; }
    QString getLogPath() const { return logPath; }
    void setLogPath(const QString &path) { logPath = path; }
    bool isLogProcessed() const { return bProcessed; }
    void setLogProcessed(bool processed) { bProcessed = processed; }

    // Matches on name and ID; on a match, processed becomes whether path equals logPath.
    bool checkAndUpdateLogID(const QString &name, const QString &path, int id);
    // The same, matching on the name alone.
    bool checkAndUpdateLog(const QString &name, const QString &path);

private:
    int nLogID = 0;
    QString logName;
    QString logPath;
    bool bProcessed = false;
};

} // namespace korvane

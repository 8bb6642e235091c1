#pragma once

#include <QString>

namespace korvane {

// Where the last scan found one plug-in; not processed while the plug-in should be elsewhere.
class PluginRecord {
public:
    int id() const { return m_id; }
    void setId(int id) { m_id = id; }
    QString name() const { return m_name; }
    void setName(const QString &name) { m_name = name; }
    QString folder() const { return m_folder; }
    void setFolder(const QString &folder) { m_folder = folder; }
    bool isProcessed() const { return m_processed; }
    void setProcessed(bool processed) { m_processed = processed; }

    // Matches on name and ID; on a match, processed becomes whether folder is where it was found.
    bool update(const QString &name, const QString &folder, int id);

private:
    int m_id = 0;
    QString m_name;
    QString m_folder;
    bool m_processed = false;
};

} // namespace korvane

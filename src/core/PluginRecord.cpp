#include "core/PluginRecord.h"

namespace korvane {

bool PluginRecord::update(const QString &name, const QString &folder, int id)
{
    if (name != m_name || id != m_id)
        return false;
    m_processed = (folder == m_folder);
    return true;
}

} // namespace korvane

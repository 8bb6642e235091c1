#include "core/ActivityLog.h"

namespace korvane {

void ActivityLog::append(const QString &entry)
{
    m_text += entry;
    emit logChanged();
}

void ActivityLog::show()
{
    m_visible = true;
    emit logVisibilityChanged(true);
}

void ActivityLog::hide()
{
    m_visible = false;
    emit logVisibilityChanged(false);
}

} // namespace korvane

#include "core/AppServices.h"

namespace korvane {

AppServices::AppServices(const RunParts &parts)
    : m_parts(parts), m_dataFiles(parts.locations, parts.files, parts.ui, m_log),
      m_groups(parts.locations, parts.ui, m_dataFiles),
      m_content(parts.locations, parts.formats, m_dataFiles)
{
}

AppServices::~AppServices()
{
    m_undo.stack()->clear();
}

void AppServices::setActiveType(int type)
{
    m_activeType = type;
}

} // namespace korvane

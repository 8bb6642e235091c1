#include "library/MissingItemsPrompt.h"

#include "core/UserInterface.h"

namespace korvane {

void MissingItemsPrompt::add(const QString &name)
{
    if (!m_text.isEmpty())
        m_text += QLatin1Char('\n');
    m_text += name;
}

MissingItemsAnswer MissingItemsPrompt::ask()
{
    return m_ui.runMissingItems(m_text);
}

} // namespace korvane

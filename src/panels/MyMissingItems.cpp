#include "panels/MyMissingItems.h"

#include "platform/SharedInstances.h"
#include "ui/UserInterface.h"

namespace korvane {

MyMissingItems *MyMissingItems::getMI()
{
    return SharedInstance<MyMissingItems>::get();
}

void MyMissingItems::addMissingItem(const QString &name)
{
    if (!m_text.isEmpty())
        m_text += QLatin1Char('\n');
    m_text += name;
}

int MyMissingItems::showMissingItems()
{
    // Closing the dialog any other way counts as ignoring.
    return m_ui.runMissingItems(m_text) == 2 ? 2 : 1;
}

} // namespace korvane

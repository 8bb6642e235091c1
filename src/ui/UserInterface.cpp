#include "ui/UserInterface.h"

namespace korvane {

int HeadlessUi::runAlert(const Alert &alert)
{
    return alert.addedButtons ? AlertFirst : AlertDefault;
}

} // namespace korvane

#include "core/UserInterface.h"

namespace korvane {

AlertAnswer HeadlessUi::runAlert(const Alert &alert)
{
    return alert.addedButtons ? AlertAnswer::First : AlertAnswer::Default;
}

} // namespace korvane

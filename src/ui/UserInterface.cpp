#include "ui/UserInterface.h"

namespace korvane {

namespace {
HeadlessUi g_headless;
UserInterface *g_current = nullptr;
} // namespace

int HeadlessUi::runAlert(const Alert &alert)
{
    return alert.addedButtons ? AlertFirst : AlertDefault;
}

UserInterface &UserInterface::current()
{
    return g_current ? *g_current : g_headless;
}

void UserInterface::setCurrent(UserInterface *ui)
{
    g_current = ui;
}

} // namespace korvane

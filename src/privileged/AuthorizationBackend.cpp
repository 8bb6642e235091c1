#include "privileged/AuthorizationBackend.h"

#include "platform/ProcessList.h"
#include "privileged/NullAuthorizationBackend.h"
#include "privileged/PolkitBackend.h"

#include <memory>
#include <unistd.h>

namespace korvane {

QByteArray AuthorizationBackend::processList(bool *ok)
{
    return readProcessList(ok);
}

std::unique_ptr<AuthorizationBackend> AuthorizationBackend::createDefault()
{
    if (::geteuid() != 0 && PolkitBackend::available())
        return std::make_unique<PolkitBackend>();
    return std::make_unique<NullAuthorizationBackend>();
}

} // namespace korvane

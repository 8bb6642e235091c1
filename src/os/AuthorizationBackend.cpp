#include "os/AuthorizationBackend.h"

#include "os/AllowAllAuthorization.h"
#include "os/PolkitAuthorization.h"
#include "os/ProcessList.h"

#include <memory>
#include <unistd.h>

namespace korvane {

QByteArray AuthorizationBackend::processList(bool *ok)
{
    return readProcessList(ok);
}

std::unique_ptr<AuthorizationBackend> AuthorizationBackend::createDefault()
{
    if (::geteuid() != 0 && PolkitAuthorization::available())
        return std::make_unique<PolkitAuthorization>();
    return std::make_unique<AllowAllAuthorization>();
}

} // namespace korvane

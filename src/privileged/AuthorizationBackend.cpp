#include "privileged/AuthorizationBackend.h"

#include "platform/ProcessList.h"
#include "privileged/AllowAllAuthorization.h"
#include "privileged/PolkitAuthorization.h"

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

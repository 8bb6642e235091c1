#include "privileged/AuthorizationBackend.h"

#include "platform/ProcessList.h"
#include "platform/SharedInstances.h"
#include "privileged/NullAuthorizationBackend.h"
#include "privileged/PolkitBackend.h"

#include <memory>
#include <unistd.h>

namespace korvane {

namespace {
AuthorizationBackend *s_current = nullptr;
std::unique_ptr<AuthorizationBackend> s_default;
} // namespace

QByteArray AuthorizationBackend::processList(bool *ok) {
    return readProcessList(ok);
}

AuthorizationBackend &AuthorizationBackend::current() {
    if (s_current)
        return *s_current;
    if (!s_default) {
        // As root polkit adds nothing but prompts; without it there is nobody to ask.
        if (::geteuid() != 0 && PolkitBackend::available())
            s_default = std::make_unique<PolkitBackend>();
        else
            s_default = std::make_unique<NullAuthorizationBackend>();
    }
    return *s_default;
}

void AuthorizationBackend::setCurrent(AuthorizationBackend *backend) {
    s_current = backend;
    if (backend)
        registerSharedReset([] { s_current = nullptr; });
}

} // namespace korvane

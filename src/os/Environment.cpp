#include "os/Environment.h"

namespace korvane {

Environment Environment::read()
{
    Environment environment;
    environment.roots = Roots::fromEnvironment();
    RunSettings &settings = environment.settings;
    bool ok = false;
    const int wait = qEnvironmentVariableIntValue("KORVANE_LOCK_WAIT_MS", &ok);
    settings.lockWaitMs = ok && wait >= 0 ? wait : -1;
    settings.systemLog = qEnvironmentVariableIsSet("KORVANE_SYSLOG");
    settings.bundle = qEnvironmentVariable("KORVANE_BUNDLE");
    settings.resources = qEnvironmentVariable("KORVANE_RESOURCES");
    settings.updateUrl = qEnvironmentVariable("KORVANE_UPDATE_URL");
    settings.downloadUrl = qEnvironmentVariable("KORVANE_DOWNLOAD_URL");
    const int columns = qEnvironmentVariableIntValue("COLUMNS", &ok);
    settings.columns = ok && columns > 0 ? columns : 0;
    return environment;
}

} // namespace korvane

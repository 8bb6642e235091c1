#include "platform/SharedInstances.h"

#include <vector>

namespace korvane {

namespace {
std::vector<std::function<void()>> &resets()
{
    static std::vector<std::function<void()>> list;
    return list;
}
} // namespace

void registerSharedReset(std::function<void()> reset)
{
    resets().push_back(std::move(reset));
}

void resetSharedInstances()
{
    // Newest first: later controllers may refer to earlier ones while they go.
    auto list = std::move(resets());
    resets().clear();
    for (auto it = list.rbegin(); it != list.rend(); ++it)
        (*it)();
}

} // namespace korvane

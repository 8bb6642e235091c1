#include "platform/SharedInstances.h"

#include <vector>

namespace korvane {

namespace {
// Never destroyed: an instance may still unregister while the statics go at exit.
std::vector<std::function<void()>> &resets() {
    static auto *list = new std::vector<std::function<void()>>();
    return *list;
}
} // namespace

void registerSharedReset(std::function<void()> reset) {
    resets().push_back(std::move(reset));
}

void resetSharedInstances() {
    // Newest first: later controllers may refer to earlier ones while they go.
    auto list = std::move(resets());
    resets().clear();
    for (auto it = list.rbegin(); it != list.rend(); ++it)
        (*it)();
}

} // namespace korvane

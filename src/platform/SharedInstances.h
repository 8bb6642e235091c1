#pragma once

#include <functional>
#include <memory>

namespace korvane {

// Registers how to drop one process-wide shared instance; resetSharedInstances() drops them all,
// newest first, so each test can start over with fresh controllers over fresh roots.
void registerSharedReset(std::function<void()> reset);
void resetSharedInstances();

// The slot behind an accessor such as getPref(): created on first use, or installed by the owner.
template <class T> class SharedInstance {
public:
    static T *get()
    {
        if (!s_current) {
            s_owned = std::make_unique<T>();
            if (!s_current) // the constructor may have installed itself
                s_current = s_owned.get();
            registerSharedReset(&SharedInstance::reset);
        }
        return s_current;
    }
    static T *peek() { return s_current; }
    // The owner keeps ownership and must install nullptr before it goes.
    static void install(T *instance)
    {
        s_current = instance;
        registerSharedReset(&SharedInstance::reset);
    }
    static void reset()
    {
        s_current = nullptr;
        s_owned.reset();
    }

private:
    static inline T *s_current = nullptr;
    static inline std::unique_ptr<T> s_owned;
};

} // namespace korvane

#pragma once

#include <functional>

namespace korvane {

// Registers how to drop one process-wide shared instance; resetSharedInstances() drops them all,
// newest first, so each test can start over with fresh controllers over fresh roots.
void registerSharedReset(std::function<void()> reset);
void resetSharedInstances();

// The slot behind an accessor such as getPref(): created on first use, or installed by the owner.
// The slot holds plain pointers only: an instance made on first use and never reset is left to
// the end of the process rather than destroyed among the other statics, whose order of
// destruction nobody controls.
template <class T> class SharedInstance {
public:
    static T *get() {
        if (!s_current) {
            dropOwned();
            T *made = new T();
            s_owned = made;
            if (!s_current) // the constructor may have installed itself
                s_current = made;
            track();
        }
        return s_current;
    }
    static T *peek() { return s_current; }
    // The owner keeps ownership and must install nullptr before it goes.
    static void install(T *instance) {
        s_current = instance;
        if (instance)
            track();
    }
    static void reset() {
        s_tracked = false;
        s_current = nullptr;
        dropOwned();
    }

private:
    static void track() {
        if (s_tracked)
            return;
        s_tracked = true;
        registerSharedReset(&SharedInstance::reset);
    }
    static void dropOwned() {
        // Cleared first: the instance's destructor may look at its slot.
        T *owned = s_owned;
        s_owned = nullptr;
        delete owned;
    }

    static inline T *s_current = nullptr;
    static inline T *s_owned = nullptr;
    static inline bool s_tracked = false;
};

} // namespace korvane

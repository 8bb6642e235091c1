#pragma once

#include <typeinfo>

namespace korvane {

// Stops the program: a controller was asked for before anything installed one.
[[noreturn]] void missingSharedInstance(const char *typeName);

// The slot behind an accessor such as getPref(). The context that owns the controller installs
// it and uninstalls it before the controller goes; nothing is ever made on demand, so code cannot
// come to depend on whichever instance happened to exist.
template <class T> class SharedInstance {
public:
    static T *get()
    {
        if (!s_current)
            missingSharedInstance(typeid(T).name());
        return s_current;
    }
    static T *peek() { return s_current; }
    static void install(T *instance) { s_current = instance; }
    // Uninstalls instance if it is the one installed.
    static void uninstall(T *instance)
    {
        if (s_current == instance)
            s_current = nullptr;
    }

private:
    static inline T *s_current = nullptr;
};

} // namespace korvane

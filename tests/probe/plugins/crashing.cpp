// A LADSPA library whose descriptor function crashes, as a broken plug-in would.
#include <csignal>

extern "C" __attribute__((visibility("default"))) const void *ladspa_descriptor(unsigned long)
{
    std::raise(SIGSEGV);
    return nullptr;
}

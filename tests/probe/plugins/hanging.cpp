// A LADSPA library whose descriptor function never returns.
#include <unistd.h>

extern "C" __attribute__((visibility("default"))) const void *ladspa_descriptor(unsigned long)
{
    for (;;)
        pause();
}

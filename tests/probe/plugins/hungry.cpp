// A LADSPA library whose descriptor function allocates without end. It gives up after 8 GiB, so
// a broken memory limit shows as a listed plug-in rather than as a machine out of memory.
#include <cstring>
#include <vector>

extern "C" __attribute__((visibility("default"))) const void *ladspa_descriptor(unsigned long)
{
    static std::vector<char *> blocks;
    for (int i = 0; i < 128; ++i) {
        char *block = new char[64 << 20];
        std::memset(block, 1, 64 << 20);
        blocks.push_back(block);
    }
    return nullptr;
}

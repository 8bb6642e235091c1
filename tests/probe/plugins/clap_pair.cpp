// A CLAP library with two plug-ins, built on the published entry and factory layout. It prints
// on standard output while loading, as some plug-ins do, and tells through a description that
// init was given its own path.
#include "ClapAbi.h"

#include <cstdio>
#include <cstring>
#include <string>

namespace {

std::string g_path;
bool g_initialised = false;

const char *const kFeatures[] = {"audio-effect", "stereo", nullptr};
const char *const kNoFeatures[] = {nullptr};

clap_plugin_descriptor_t g_descriptors[2] = {
    {{1, 1, 7},
     "org.example.squash",
     "Squash",
     "Velmora Audio",
     "https://example.org",
     "",
     "",
     "2.1.0",
     nullptr,
     kFeatures},
    {{1, 1, 7},
     "org.example.wobble",
     "Wobble \"W\"",
     nullptr,
     nullptr,
     nullptr,
     nullptr,
     nullptr,
     "two\nlines",
     kNoFeatures},
};

uint32_t count(const clap_plugin_factory_t *)
{
    return g_initialised ? 2 : 0;
}

const clap_plugin_descriptor_t *descriptor(const clap_plugin_factory_t *, uint32_t index)
{
    return index < 2 ? &g_descriptors[index] : nullptr;
}

const void *create(const clap_plugin_factory_t *, const void *, const char *)
{
    return nullptr;
}

const clap_plugin_factory_t g_factory = {count, descriptor, create};

bool init(const char *path)
{
    std::printf("hello from the plug-in\n");
    std::fflush(stdout);
    g_path = path;
    g_descriptors[0].description = g_path.c_str();
    g_initialised = true;
    return true;
}

void deinit()
{
    g_initialised = false;
}

const void *factory(const char *id)
{
    return std::strcmp(id, kClapPluginFactoryId) == 0 ? &g_factory : nullptr;
}

} // namespace

extern "C" __attribute__((visibility("default")))
const clap_plugin_entry_t clap_entry = {{1, 1, 7}, init, deinit, factory};

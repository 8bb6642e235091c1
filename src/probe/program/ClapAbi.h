#pragma once

// The few structures of the CLAP plug-in ABI the probe reads, written from the published,
// MIT-licensed headers (Debian packages none): the entry a .clap exports, and its plug-in
// factory with the descriptors. Layout and names follow the published ABI; only what the probe
// calls is declared.

#include <cstdint>

extern "C" {

struct clap_version_t {
    uint32_t major;
    uint32_t minor;
    uint32_t revision;
};

struct clap_plugin_descriptor_t {
    clap_version_t clap_version;
    const char *id;
    const char *name;
    const char *vendor;
    const char *url;
    const char *manual_url;
    const char *support_url;
    const char *version;
    const char *description;
    const char *const *features; // ends with a null pointer
};

struct clap_plugin_factory_t {
    uint32_t (*get_plugin_count)(const clap_plugin_factory_t *factory);
    const clap_plugin_descriptor_t *(*get_plugin_descriptor)(const clap_plugin_factory_t *factory,
                                                             uint32_t index);
    const void *(*create_plugin)(const clap_plugin_factory_t *factory, const void *host,
                                 const char *plugin_id);
};

struct clap_plugin_entry_t {
    clap_version_t clap_version;
    bool (*init)(const char *plugin_path);
    void (*deinit)(void);
    const void *(*get_factory)(const char *factory_id);
};

} // extern "C"

// The plug-in factory's identifier.
inline constexpr const char *kClapPluginFactoryId = "clap.plugin-factory";

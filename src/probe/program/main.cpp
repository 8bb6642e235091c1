// korvane-probe: loads one plug-in binary and prints, as JSON on standard output, what only
// loading tells (LADSPA and DSSI descriptors, CLAP descriptors). It runs in its own process,
// started by ProbeRunner with a time and memory limit, so a plug-in that crashes, hangs or eats
// memory harms only this process. It links nothing but the C and C++ libraries, so nothing of
// Korvane is in the way of the plug-in's own libraries.
//
//   korvane-probe [--format auto|ladspa|dssi|clap] PATH
//
// Exit status: 0 a report was printed (it may hold an "error"), 2 wrong arguments, 3 out of
// memory.

#include "ClapAbi.h"

#include <dssi.h>
#include <ladspa.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <new>
#include <string>
#include <unistd.h>

namespace {

constexpr unsigned long kMaxPlugins = 4096;
constexpr unsigned long kMaxPorts = 65536;
constexpr size_t kMaxText = 4096;
constexpr int kMaxFeatures = 256;
constexpr int kOutOfMemory = 3;

// Plug-ins hand over C strings of any bytes; JSON wants valid UTF-8, so anything else becomes
// U+FFFD.
void appendJsonString(std::string &out, const char *text)
{
    out += '"';
    if (text) {
        const size_t length = strnlen(text, kMaxText);
        const auto *s = reinterpret_cast<const unsigned char *>(text);
        for (size_t i = 0; i < length;) {
            const unsigned char c = s[i];
            if (c < 0x80) {
                switch (c) {
                case '"':
                    out += "\\\"";
                    break;
                case '\\':
                    out += "\\\\";
                    break;
                case '\n':
                    out += "\\n";
                    break;
                case '\r':
                    out += "\\r";
                    break;
                case '\t':
                    out += "\\t";
                    break;
                default:
                    if (c < 0x20) {
                        char escape[8];
                        std::snprintf(escape, sizeof escape, "\\u%04x", c);
                        out += escape;
                    } else {
                        out += char(c);
                    }
                }
                ++i;
                continue;
            }
            size_t extra = (c & 0xE0) == 0xC0   ? 1
                           : (c & 0xF0) == 0xE0 ? 2
                           : (c & 0xF8) == 0xF0 ? 3
                                                : 0;
            bool valid = extra > 0;
            unsigned long code = c & (0x3F >> extra);
            for (size_t k = 1; valid && k <= extra; ++k) {
                if (i + k >= length || (s[i + k] & 0xC0) != 0x80)
                    valid = false;
                else
                    code = (code << 6) | (s[i + k] & 0x3F);
            }
            static const unsigned long minimum[] = {0, 0x80, 0x800, 0x10000};
            if (valid
                && (code < minimum[extra] || code > 0x10FFFF || (code >= 0xD800 && code <= 0xDFFF)))
                valid = false;
            if (valid) {
                out.append(text + i, extra + 1);
                i += extra + 1;
            } else {
                out += "\xEF\xBF\xBD";
                ++i;
            }
        }
    }
    out += '"';
}

void appendField(std::string &out, const char *key, const char *value)
{
    out += '"';
    out += key;
    out += "\":";
    appendJsonString(out, value);
}

void appendNumber(std::string &out, const char *key, unsigned long long value)
{
    out += '"';
    out += key;
    out += "\":";
    out += std::to_string(value);
}

void appendBool(std::string &out, const char *key, bool value)
{
    out += '"';
    out += key;
    out += "\":";
    out += value ? "true" : "false";
}

void appendLadspa(std::string &out, const LADSPA_Descriptor *d)
{
    appendNumber(out, "uniqueId", d->UniqueID);
    out += ',';
    appendField(out, "label", d->Label);
    out += ',';
    appendField(out, "name", d->Name);
    out += ',';
    appendField(out, "maker", d->Maker);
    out += ',';
    appendField(out, "copyright", d->Copyright);
    unsigned long counts[4] = {0, 0, 0, 0}; // audio in, audio out, control in, control out
    if (d->PortDescriptors && d->PortCount <= kMaxPorts) {
        for (unsigned long i = 0; i < d->PortCount; ++i) {
            const LADSPA_PortDescriptor port = d->PortDescriptors[i];
            const int kind = LADSPA_IS_PORT_AUDIO(port) ? 0 : LADSPA_IS_PORT_CONTROL(port) ? 2 : -1;
            if (kind < 0)
                continue;
            if (LADSPA_IS_PORT_INPUT(port))
                ++counts[kind];
            else if (LADSPA_IS_PORT_OUTPUT(port))
                ++counts[kind + 1];
        }
    }
    out += ',';
    appendNumber(out, "audioInputs", counts[0]);
    out += ',';
    appendNumber(out, "audioOutputs", counts[1]);
    out += ',';
    appendNumber(out, "controlInputs", counts[2]);
    out += ',';
    appendNumber(out, "controlOutputs", counts[3]);
}

// Returns an error text, or nullptr when the plug-ins were listed.
const char *probeLadspa(void *library, std::string &plugins)
{
    auto function =
        reinterpret_cast<LADSPA_Descriptor_Function>(dlsym(library, "ladspa_descriptor"));
    if (!function)
        return "no ladspa_descriptor function";
    for (unsigned long index = 0; index < kMaxPlugins; ++index) {
        const LADSPA_Descriptor *d = function(index);
        if (!d)
            break;
        if (index > 0)
            plugins += ',';
        plugins += '{';
        appendLadspa(plugins, d);
        plugins += '}';
    }
    return nullptr;
}

const char *probeDssi(void *library, std::string &plugins)
{
    auto function = reinterpret_cast<DSSI_Descriptor_Function>(dlsym(library, "dssi_descriptor"));
    if (!function)
        return "no dssi_descriptor function";
    for (unsigned long index = 0; index < kMaxPlugins; ++index) {
        const DSSI_Descriptor *d = function(index);
        if (!d)
            break;
        if (index > 0)
            plugins += ',';
        plugins += '{';
        appendNumber(plugins, "dssiApiVersion", static_cast<unsigned>(d->DSSI_API_Version));
        plugins += ',';
        appendBool(plugins, "runSynth", d->run_synth != nullptr);
        plugins += ',';
        appendBool(plugins, "runMultipleSynths", d->run_multiple_synths != nullptr);
        if (d->LADSPA_Plugin) {
            plugins += ',';
            appendLadspa(plugins, d->LADSPA_Plugin);
        }
        plugins += '}';
    }
    return nullptr;
}

const char *probeClap(void *library, const char *path, std::string &plugins, std::string &extra)
{
    const auto *entry = static_cast<const clap_plugin_entry_t *>(dlsym(library, "clap_entry"));
    if (!entry)
        return "no clap_entry";
    char version[64];
    std::snprintf(version, sizeof version, "%u.%u.%u", entry->clap_version.major,
                  entry->clap_version.minor, entry->clap_version.revision);
    appendField(extra, "clapVersion", version);
    extra += ',';
    if (entry->clap_version.major < 1)
        return "clap_entry has a version before 1.0";
    if (!entry->init || !entry->get_factory || !entry->deinit)
        return "clap_entry is incomplete";
    if (!entry->init(path))
        return "clap_entry init failed";
    const auto *factory =
        static_cast<const clap_plugin_factory_t *>(entry->get_factory(kClapPluginFactoryId));
    const char *error = nullptr;
    if (!factory || !factory->get_plugin_count || !factory->get_plugin_descriptor) {
        error = "no plug-in factory";
    } else {
        const uint32_t count = factory->get_plugin_count(factory);
        for (uint32_t index = 0, listed = 0; index < count && index < kMaxPlugins; ++index) {
            const clap_plugin_descriptor_t *d = factory->get_plugin_descriptor(factory, index);
            if (!d)
                continue;
            if (listed++ > 0)
                plugins += ',';
            plugins += '{';
            appendField(plugins, "id", d->id);
            plugins += ',';
            appendField(plugins, "name", d->name);
            plugins += ',';
            appendField(plugins, "vendor", d->vendor);
            plugins += ',';
            appendField(plugins, "version", d->version);
            plugins += ',';
            appendField(plugins, "description", d->description);
            plugins += ',';
            appendField(plugins, "url", d->url);
            plugins += ",\"features\":[";
            for (int f = 0; d->features && d->features[f] && f < kMaxFeatures; ++f) {
                if (f > 0)
                    plugins += ',';
                appendJsonString(plugins, d->features[f]);
            }
            plugins += "]}";
        }
    }
    entry->deinit();
    return error;
}

void outOfMemory()
{
    std::_Exit(kOutOfMemory);
}

int usage()
{
    std::fputs("usage: korvane-probe [--format auto|ladspa|dssi|clap] PATH\n", stderr);
    return 2;
}

} // namespace

int main(int argc, char **argv)
{
    std::set_new_handler(outOfMemory);
    std::string format = "auto";
    const char *path = nullptr;
    for (int i = 1; i < argc; ++i) {
        if (std::strcmp(argv[i], "--format") == 0 && i + 1 < argc)
            format = argv[++i];
        else if (!path)
            path = argv[i];
        else
            return usage();
    }
    if (!path || (format != "auto" && format != "ladspa" && format != "dssi" && format != "clap"))
        return usage();

    // What the plug-in prints goes to standard error, so the report alone is on standard output.
    const int report = dup(STDOUT_FILENO);
    dup2(STDERR_FILENO, STDOUT_FILENO);

    std::string out = "{\"probe\":1,";
    appendField(out, "path", path);
    out += ',';
    std::string plugins;
    std::string extra;
    const char *error = nullptr;
    std::string loadError;
    // dlopen needs a path with a slash to not search the library path.
    std::string file = std::strchr(path, '/') ? path : std::string("./") + path;
    void *library = dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (!library) {
        const char *message = dlerror();
        loadError = std::string("cannot be loaded: ") + (message ? message : "unknown error");
        error = loadError.c_str();
    } else {
        if (format == "auto") {
            format = dlsym(library, "clap_entry")          ? "clap"
                     : dlsym(library, "dssi_descriptor")   ? "dssi"
                     : dlsym(library, "ladspa_descriptor") ? "ladspa"
                                                           : "";
            if (format.empty())
                error = "exports no clap_entry, dssi_descriptor or ladspa_descriptor";
        }
        if (format == "ladspa")
            error = probeLadspa(library, plugins);
        else if (format == "dssi")
            error = probeDssi(library, plugins);
        else if (format == "clap")
            error = probeClap(library, path, plugins, extra);
    }
    appendField(out, "format", format.c_str());
    out += ',';
    out += extra;
    if (error) {
        appendField(out, "error", error);
        out += ',';
    }
    out += "\"plugins\":[" + plugins + "]}\n";
    // Written in full before the library is unloaded; the plug-in may crash at exit, and the
    // report is already out.
    size_t written = 0;
    while (written < out.size()) {
        const ssize_t n = write(report, out.data() + written, out.size() - written);
        if (n <= 0)
            break;
        written += size_t(n);
    }
    std::fflush(stdout);
    std::_Exit(0); // no unloading, no static destructors of the plug-in
}

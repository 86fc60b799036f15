// The plug-in that GStreamer finds. People link it into the folders that it looks into, where no library
// would find those beside it: what works is opened by its real place.
#include <dlfcn.h>

#include <exception>
#include <stdexcept>

#include <gst/gst.h>

#include "adapters/support/plugin_place.h"

#define PACKAGE "aveffect" // which the macro below wants to have

namespace {

namespace fs = std::filesystem;

constexpr char kLibrary[] = "libaveffect_gst.so";

using Register = void(GstPlugin*);

Register* FindRegister(const fs::path& directory) {
    void* const library = dlopen((directory / kLibrary).c_str(), RTLD_NOW | RTLD_LOCAL);
    void* const address = library ? dlsym(library, "aveffect_gst_register") : nullptr;
    if (!address) throw std::runtime_error(dlerror());
    return reinterpret_cast<Register*>(address);
}

// A plug-in that fails would not be looked at again, even when what was missing has come. One without
// elements is, as soon as a file that it depends on changes.
gboolean Init(GstPlugin* plugin) {
    try {
        const fs::path directory = aveffect::adapters::PluginDirectory();
        gst_plugin_add_dependency_simple(
            plugin, nullptr, directory.c_str(),
            "libaveffect_gst.so,libAVEffect.so,libAVBaseTools.so,libAVBaseMedia.so",
            GST_PLUGIN_DEPENDENCY_FLAG_NONE);
        FindRegister(directory)(plugin);
    } catch (const std::exception& failure) {
        g_message("aveffect: there are no effects: %s", failure.what());
    }
    return TRUE;
}

} // namespace

GST_PLUGIN_DEFINE(GST_VERSION_MAJOR, GST_VERSION_MINOR, aveffect, "Video and audio effects", Init,
                  AVEFFECT_VERSION, "MIT/X11", "AVEffect", "AVEffect")

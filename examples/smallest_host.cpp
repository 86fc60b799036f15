// The smallest host: loads the plug-in, asks for an effect by name, and changes one picture.
#include <dlfcn.h>

#include <cstdio>

#include "aveffect/base_tools.h"
#include "aveffect/memory_frame.h"
#include "aveffect/pixel_format.h"
#include "aveffect/plugin.h"

int main() {
    void* library = dlopen(PLUGIN_DIR "/libAVEffect.so", RTLD_NOW);
    if (!library) return std::fprintf(stderr, "%s\n", dlerror()), 1;
    const auto create = reinterpret_cast<decltype(&CreateVideoProc)>(dlsym(library, "CreateVideoProc"));

    AVBased::IVideoProc* invert = create(nullptr, "invert");
    if (!invert) return std::fprintf(stderr, "%s\n", GetBaseException()->GetExceptionMsg()), 1;
    invert->SetProperty("duration", "1000"); // milliseconds

    unsigned char picture[2 * 2 * 4] = {0, 1, 2, 9}; // 2x2 pixels of B, G, R, A
    AVBased::MemoryFrame frame(AVBased::BGRA, 2, 2, {{picture, 8, 8, 2}});
    AVBased::ImagePostion position{};
    invert->ProcFrameInPlace(&position, /*time*/ 0, &frame);

    std::printf("%d %d %d %d\n", picture[0], picture[1], picture[2], picture[3]); // 255 254 253 9
    invert->Free();
    dlclose(library);
}

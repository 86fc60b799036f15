// The plug-in's own calls, for benches that are not written in C++.
#include <cstdint>

#include "aveffect/memory_frame.h"
#include "aveffect/pixel_format.h"
#include "tests/support/plugin.h"

extern "C" {

void* PlainMake(const char* effect) { return test::CreateVideo(effect); }

int PlainSet(void* proc, const char* name, const char* value) {
    return static_cast<AVBased::IVideoProc*>(proc)->SetProperty(name, value);
}

/// In place on BGRA without padding.
void PlainRun(void* proc, unsigned char* pixels, unsigned width, unsigned height) {
    AVBased::MemoryFrame frame(AVBased::BGRA, width, height, {{pixels, width * 4, width * 4, height}});
    test::Run(*static_cast<AVBased::IVideoProc*>(proc), frame);
}

} // extern "C"

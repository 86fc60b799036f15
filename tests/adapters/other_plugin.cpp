// A plug-in for tests that knows none of the effects.
#include "aveffect/plugin.h"

AVBased::IVideoProc* CreateVideoProc(AVBased::IAVManager*, const char*) { return nullptr; }
AVBased::IAudioProc* CreateAudioProc(AVBased::IAVManager*, const char*) { return nullptr; }

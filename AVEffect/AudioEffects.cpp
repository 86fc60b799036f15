// The factory of all audio effects.
#include <array>

#include "AVEffect/factory.h"

#define AVEFFECT_DECLARE_ROW(Class, ...)                                                                     \
    namespace AVBased {                                                                                      \
    class Class;                                                                                             \
    template <>                                                                                              \
    IAudioProc* ConstructAudio<Class>(IAVManager*, const std::string&);                                      \
    }
AVEFFECT_AUDIO_EFFECTS(AVEFFECT_DECLARE_ROW)

namespace {
using namespace AVBased;
#define AVEFFECT_FACTORY_ROW(Class, name, ...) FactoryRow<IAudioProc>{name, &ConstructAudio<Class>},
constexpr std::array<FactoryRow<IAudioProc>, kAudioEffects.size()> kRows = {
    AVEFFECT_AUDIO_EFFECTS(AVEFFECT_FACTORY_ROW)};
} // namespace

extern "C" [[gnu::visibility("default")]] IAudioProc* CreateAudioProc(IAVManager* manager, const char* name) {
    return ConstructByName<IAudioProc>(kRows, manager, name);
}

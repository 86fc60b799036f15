// The factory of all audio effects.
#include "AVEffect/CAudioFaderEffect.h"
#include "AVEffect/CAudioReplace.h"
#include "AVEffect/CAudioVolume.h"
#include "AVEffect/factory.h"
#include "aveffect/catalogue.h"

namespace {

using namespace AVBased;

template <class Effect>
constexpr auto Row = RowOf<IAudioProc, Effect>;

// A new effect adds its row to the catalogue and its class here, in the same place.
constexpr FactoryRow<IAudioProc> kRows[] = {
    Row<CAudioReplace>(catalogue::kReplaceSound),
    Row<CAudioFaderEffect>(catalogue::kFadeSound),
    Row<CAudioVolume>(catalogue::kVolume),
};
static_assert(InTheOrderOf<IAudioProc>(kAudioEffects, kRows), "classes stand in the catalogue's order");

} // namespace

extern "C" [[gnu::visibility("default")]] IAudioProc* CreateAudioProc(IAVManager* manager, const char* name) {
    return ConstructByName<IAudioProc>(kRows, manager, name);
}

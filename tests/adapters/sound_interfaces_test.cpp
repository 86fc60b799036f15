// What the adapters declare of LADSPA and LV2, against the interfaces' own headers.
#include <gtest/gtest.h>
#include <ladspa.h>
#include <lv2/core/lv2.h>

#include <cstddef>

#include "adapters/ladspa/ladspa_interface.h"
#include "adapters/lv2/lv2_interface.h"

namespace {

using namespace AVBased::ladspa;

struct Pair {
    size_t ours, theirs;
};

// A member's place, and a number, of ours and of theirs.
// clang-format off
#define AT(our, their) {offsetof(Ours, our), offsetof(Theirs, their)}
#define IS(our, their) {our, LADSPA_##their}

template <class Ours, class Theirs>
constexpr Pair kLadspa[] = {{sizeof(Ours), sizeof(Theirs)},
    AT(number, UniqueID), AT(label, Label), AT(properties, Properties), AT(name, Name), AT(maker, Maker),
    AT(copyright, Copyright), AT(portCount, PortCount), AT(portKinds, PortDescriptors), AT(portNames, PortNames),
    AT(rangeHints, PortRangeHints), AT(own, ImplementationData), AT(instantiate, instantiate),
    AT(connectPort, connect_port), AT(activate, activate), AT(run, run), AT(runAdding, run_adding),
    AT(setRunAddingGain, set_run_adding_gain), AT(deactivate, deactivate), AT(cleanup, cleanup)};
template <class Ours, class Theirs>
constexpr Pair kHint[] = {{sizeof(Ours), sizeof(Theirs)},
    AT(hints, HintDescriptor), AT(lower, LowerBound), AT(upper, UpperBound)};
template <class Ours, class Theirs>
constexpr Pair kLv2[] = {{sizeof(Ours), sizeof(Theirs)},
    AT(uri, URI), AT(instantiate, instantiate), AT(connectPort, connect_port), AT(activate, activate), AT(run, run),
    AT(deactivate, deactivate), AT(cleanup, cleanup), AT(extensionData, extension_data)};
constexpr Pair kNumbers[] = {
    IS(kHardRealTime, PROPERTY_HARD_RT_CAPABLE), IS(kInput, PORT_INPUT), IS(kOutput, PORT_OUTPUT),
    IS(kControl, PORT_CONTROL), IS(kAudio, PORT_AUDIO), IS(kBoundedBelow, HINT_BOUNDED_BELOW),
    IS(kBoundedAbove, HINT_BOUNDED_ABOVE), IS(kInteger, HINT_INTEGER), IS(kDefaultMinimum, HINT_DEFAULT_MINIMUM),
    IS(kDefaultMaximum, HINT_DEFAULT_MAXIMUM), IS(kDefault0, HINT_DEFAULT_0), IS(kDefault1, HINT_DEFAULT_1),
    IS(kDefault100, HINT_DEFAULT_100)};
// clang-format on
#undef AT
#undef IS

template <size_t kCount>
void ExpectSame(const char* what, const Pair (&pairs)[kCount]) {
    for (const Pair& pair : pairs) EXPECT_EQ(pair.ours, pair.theirs) << what << ", " << &pair - pairs;
}

TEST(SoundInterfaces, AreThePackagedOnes) {
    ExpectSame("LADSPA's descriptor", kLadspa<Descriptor, LADSPA_Descriptor>);
    ExpectSame("LADSPA's range hint", kHint<RangeHint, LADSPA_PortRangeHint>);
    ExpectSame("LADSPA's numbers", kNumbers);
    ExpectSame("LV2's descriptor", kLv2<AVBased::lv2::Descriptor, LV2_Descriptor>);
}

} // namespace

// The functions that cross the boundary, as hosts that are built already call them: if one of these fails,
// give the change a function of a new name instead.
#include <cstddef>
#include <type_traits>

#include "aveffect/base_media.h"
#include "aveffect/base_tools.h"
#include "aveffect/plugin.h"

using namespace AVBased;

template <auto function, typename Contract>
constexpr bool kHolds = std::is_same_v<decltype(function), Contract*>;

static_assert(kHolds<&CreateVideoProc, IVideoProc*(IAVManager*, const char*)>);
static_assert(kHolds<&CreateAudioProc, IAudioProc*(IAVManager*, const char*)>);
static_assert(kHolds<&GetBaseException, IBaseException*()>);
static_assert(kHolds<&ReleaseBaseException, void()>);
static_assert(kHolds<&GetBaseLogger, IBaseLogger*()>);
static_assert(kHolds<&AVBasedMemCopy, void*(void*, const void*, size_t)>);
static_assert(kHolds<&AVBasedGetCPUFeatures, unsigned()>);
static_assert(kHolds<&AVBasedSine, double(double)>);
static_assert(kHolds<&AVBasedCosine, double(double)>);
static_assert(kHolds<&AVBasedTangent, double(double)>);
static_assert(kHolds<&AVBasedArcCosine, double(double)>);
static_assert(kHolds<&AVBasedPower, double(double, double)>);
static_assert(kHolds<&AVBasedSinesAndCosines, void(const float*, float*, float*, size_t)>);
static_assert(kHolds<&CreateImageConverter, IImageConverter*(unsigned, unsigned, unsigned)>);
static_assert(kHolds<&CreateImageConverterEx, IImageConverter*(unsigned, unsigned, unsigned, unsigned)>);
static_assert(kHolds<&CreateRawVideoFrameCropPan, IRawVideoFrameCropPan*()>);
static_assert(kHolds<&CreateAudioResampler, IAudioResampler*(int, unsigned, int, int, bool, int, int)>);

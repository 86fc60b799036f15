// Kernels that change samples where they stand.
#include <memory>

#include "aveffect/audio_frame.h"
#include "bench/kernel_calls.h"
#include "kernels/colour.h"
#include "kernels/emboss.h"
#include "kernels/fade.h"
#include "kernels/filter3x3.h"
#include "kernels/key.h"
#include "kernels/morphology.h"
#include "kernels/noise.h"
#include "kernels/pop.h"
#include "kernels/relief.h"
#include "kernels/sound.h"
#include "kernels/stroke.h"

namespace bench {

namespace {

using namespace AVBased::kernels;
using Calls = std::vector<KernelCall>;

void AddColours(Calls& calls, unsigned features) {
    const auto& kernels = SelectKernels<ColourKernels>(features);
    calls.push_back(OnPlane("grayRgba32", kernels.grayRgba32));
    calls.push_back(OnPlane("flipColorRgba32", kernels.flipColorRgba32));
    calls.push_back(OnPlane("invertRgba32", kernels.invertRgba32));
    calls.push_back(OnPlane("agedFilmRgba32", kernels.agedFilmRgba32));
    calls.push_back(OnPlane("invertComponent", kernels.invertComponent));
    const MiddleGain gain = {301, 140};
    calls.push_back(OnPlane("middleGainRgba32", kernels.middleGainRgba32, gain));
    calls.push_back(OnPlane("middleGainComponent", kernels.middleGainComponent, gain));
    calls.push_back(OnPlane("saturateRgba32", kernels.saturateRgba32, gain, 77));
    calls.push_back(
        {"swapPlanes", 2, 1, [=](const auto& planes) { kernels.swapPlanes(planes[0], planes[1]); }});
    const auto& fades = SelectKernels<FadeKernels>(features);
    for (const uint32_t level : {77u, 300u}) {
        const std::string suffix = " " + std::to_string(level);
        calls.push_back(OnPlane("scaleAlphaRgba32" + suffix, fades.scaleAlphaRgba32, level));
        calls.push_back(OnPlane("scaleComponent" + suffix, fades.scaleComponent, level));
        calls.push_back(OnPlane("mixRgba32" + suffix, fades.mixRgba32, level, 0x80FF01u));
        calls.push_back(OnPlane("mixComponent" + suffix, fades.mixComponent, level, uint8_t{129}));
    }
}

void AddKeysAndNoise(Calls& calls, unsigned features) {
    const auto& keys = SelectKernels<KeyKernels>(features);
    calls.push_back(OnPlane("keyRgba32", keys.keyRgba32, 0x404040u, 0xC0C0C0u));
    for (const unsigned shift : {0u, 1u})
        calls.push_back({"keyComponent " + std::to_string(shift), 4, 1,
                         [=, scratch = std::make_shared<AVBased::Scratch>()](const auto& planes) {
                             const PlanarKey key = {{20, 200}, {0, 150}, {128, 255}, shift, shift};
                             keys.keyComponent(planes[0], planes[1], planes[2], planes[3], key,
                                               scratch->Require(KeyScratchBytes(planes[0].width)));
                         }});
    const auto& noise = SelectKernels<NoiseKernels>(features);
    calls.push_back({"addNoiseRgba32", 2, 4, [=](const auto& planes) {
                         noise.addNoiseRgba32(Pixels(planes[0]), planes[1].data, 280);
                     }});
    calls.push_back({"addNoiseComponent", 2, 1,
                     [=](const auto& planes) { noise.addNoiseComponent(planes[0], planes[1].data, 280); }});
    const auto& pops = SelectKernels<PopKernels>(features);
    calls.push_back(OnPlane("popRgba32", pops.popRgba32, uint8_t{127}, 0x7F32281Eu));
    for (const auto& [h, v] : {std::pair{0u, 0u}, {1u, 1u}, {2u, 0u}})
        calls.push_back({"popComponent " + std::to_string(10 * h + v), 3, 1,
                         [=, pop = PlanarPop{100, 1, 2, 3, h, v}](const auto& planes) {
                             pops.popComponent(planes[0], planes[1], planes[2], pop);
                         }});
}

void AddNeighbours(Calls& calls, unsigned features) {
    const auto& filters = SelectKernels<Filter3x3Kernels>(features);
    calls.push_back(WithScratch("blurComponent", FilterScratchBytes, filters.blurComponent));
    calls.push_back(WithScratch("blurRgba32", FilterScratchBytes, filters.blurRgba32));
    calls.push_back(WithScratch("sharpenComponent", FilterScratchBytes, filters.sharpenComponent));
    calls.push_back(WithScratch("sharpenRgba32", FilterScratchBytes, filters.sharpenRgba32));
    const auto& extremes = SelectKernels<MorphologyKernels>(features);
    calls.push_back(WithScratch("dilateComponent", MorphologyScratchBytes, extremes.dilateComponent));
    calls.push_back(WithScratch("dilateRgba32", MorphologyScratchBytes, extremes.dilateRgba32));
    calls.push_back(WithScratch("erodeComponent", MorphologyScratchBytes, extremes.erodeComponent));
    calls.push_back(WithScratch("erodeRgba32", MorphologyScratchBytes, extremes.erodeRgba32));
    const auto& reliefs = SelectKernels<ReliefKernels>(features);
    const ReliefWeights weights = {22, -164, -255, 196, 256, -196, 255, 164, -22};
    calls.push_back(WithScratch("reliefComponent", ReliefScratchBytes, reliefs.reliefComponent, weights));
    calls.push_back(WithScratch("reliefRgba32", ReliefScratchBytes, reliefs.reliefRgba32, weights));
    const auto& strokes = SelectKernels<StrokeKernels>(features);
    calls.push_back(WithScratch("strokeRgba32", StrokeScratchBytes, strokes.strokeRgba32, 32u));
    calls.push_back(OnPlane("strokeComponent", strokes.strokeComponent, 32u));
    const auto& embosses = SelectKernels<EmbossKernels>(features);
    for (const int32_t level : {2, 1000}) {
        const std::string suffix = " " + std::to_string(level);
        calls.push_back(OnPlane("embossRgba32" + suffix, embosses.embossRgba32, level));
        calls.push_back(OnPlane("embossComponent" + suffix, embosses.embossComponent, level));
        calls.push_back(OnPlane("embossRgba32Mmx" + suffix, embosses.embossRgba32Mmx, level));
        calls.push_back(OnPlane("embossComponentMmx" + suffix, embosses.embossComponentMmx, level));
    }
}

// A plane's bytes are one range of samples here.
void AddSound(Calls& calls, unsigned features) {
    using namespace AVBased;
    const auto& sound = SelectKernels<SoundKernels>(features);
    calls.push_back({"amplify16", 1, 2, [=](const auto& planes) {
                         sound.amplify16(planes[0].data, planes[0].pitch * planes[0].rows / 2, 384);
                     }});
    struct Format {
        const char* name;
        int id;
        size_t bytes;
    };
    for (const Format& format : {Format{"signed 16", sfSigned16, 2},
                                 {"signed 8", sfSigned8, 1},
                                 {"unsigned 8", sfUnsigned8, 1},
                                 {"unsigned 16", sfUnsigned16, 2},
                                 {"signed 32", sfSigned32, 4},
                                 {"unsigned 32", sfUnsigned32, 4},
                                 {"float", sfFloat, 4},
                                 {"double", sfDouble, 8}})
        for (const bool swapped : {false, true})
            if (!swapped || format.bytes > 1)
                calls.push_back(
                    {std::string("scaleSamples ") + format.name + (swapped ? ", bytes swapped" : ""), 1,
                     format.bytes, [=, bytes = format.bytes, id = format.id](const auto& planes) {
                         (swapped ? sound.scaleSwapped : sound.scale)[id](
                             planes[0].data, planes[0].pitch * planes[0].rows / bytes, 0.7);
                     }});
}

} // namespace

void AddSampleCalls(Calls& calls, unsigned features) {
    AddColours(calls, features);
    AddKeysAndNoise(calls, features);
    AddNeighbours(calls, features);
    AddSound(calls, features);
}

} // namespace bench

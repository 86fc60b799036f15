#include "host/effects/transition_frame.h"

extern "C" {
#include <libavutil/imgutils.h>
}

#include "host/settings/catalogue_lookup.h"
#include "host/support/error.h"
#include "mediabridge/picture_pool.h"
#include "mediabridge/video_frame.h"

namespace aveffect {

using mediabridge::AVFramePtr;

std::vector<const AVBased::EffectInfo*> AllTransitions() {
    auto effects = AllEffects();
    std::erase_if(effects, [](const AVBased::EffectInfo* effect) {
        return effect->kind != AVBased::EffectKind::Transition;
    });
    return effects;
}

void RequireTransition(const std::string& name) {
    std::string names;
    for (const AVBased::EffectInfo* transition : AllTransitions()) {
        if (Names(name, *transition)) return;
        names += (names.empty() ? "" : ", ") + std::string(transition->shortName);
    }
    const std::string guess = GuessEffect(name, AllTransitions());
    throw Error(ErrorKind::Usage,
                "'" + name + "' is no transition; " + (guess.empty() ? "these are: " + names : guess));
}

EffectSpec TransitionSpec(const std::string& transition, const std::string& first, const std::string& second,
                          int64_t startMs, int64_t endMs) {
    return {transition,
            {{"EffectPropVFPath1", first},
             {"EffectPropVFPath2", second},
             {"EffectPropStartTime", std::to_string(startMs)},
             {"EffectPropSourceDur", std::to_string(endMs)}}};
}

AVFramePtr DrawTransition(EffectChain& chain, const Canvas& canvas, int64_t timeMs) {
    AVFramePtr picture = mediabridge::AllocatePicture(AV_PIX_FMT_BGRA, canvas.width, canvas.height);
    const auto frame =
        picture ? mediabridge::VideoFrame::Wrap(picture.get(), static_cast<int>(timeMs), 0) : nullptr;
    if (!frame) throw NoMemory("no memory for a picture");
    const ptrdiff_t pitches[4] = {picture->linesize[0]};
    av_image_fill_black(picture->data, pitches, AV_PIX_FMT_BGRA, AVCOL_RANGE_JPEG, picture->width,
                        picture->height);
    chain.Process(frame.get(), static_cast<int>(timeMs));
    picture->format = AV_PIX_FMT_BGR0;
    MarkAs(canvas, *picture);
    return picture;
}

} // namespace aveffect

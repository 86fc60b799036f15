#include "timeline/playout/layers.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "host/effects/memory_pictures.h"
#include "host/effects/transition_frame.h"
#include "host/picture/canvas_fitting.h"
#include "mediabridge/compose.h"
#include "mediabridge/flatten.h"
#include "mediabridge/picture_pool.h"

namespace aveffect {

using mediabridge::AVFramePtr;

namespace {

AVFramePtr Required(AVFramePtr picture) {
    if (!picture) throw NoMemory("no memory for a picture");
    return picture;
}

AVFramePtr Writable(AVFramePtr picture) {
    const bool own = av_frame_is_writable(picture.get()) && picture->linesize[0] > 0;
    return own ? std::move(picture) : Required(mediabridge::CopyPicture(picture.get()));
}

AVFramePtr OverBlack(AVFramePtr picture) {
    return Required(mediabridge::FlattenOverBlack(std::move(picture)));
}

} // namespace

struct Layering::Ways {
    explicit Ways(const PlayoutSetup& common)
        : setup(common)
        , sides(common.workers + 1) {
        for (auto& side : sides)
            for (CanvasFitting& fitting : side) fitting = CanvasFitting(Fitter(common.canvas, &common.terms));
    }

    /// In BGRA: transparent, where nothing is there.
    AVFramePtr Made(const Sketch& sketch, unsigned worker, size_t side) {
        if (!sketch) return Empty();
        AVFramePtr picture = sketch.finish(worker);
        if (!sketch.opaque) return picture;
        picture = sides[worker][side].Fit(std::move(picture));
        picture->format = AV_PIX_FMT_BGRA;
        return picture;
    }

    AVFramePtr Empty() const {
        AVFramePtr picture =
            Required(mediabridge::AllocatePicture(AV_PIX_FMT_BGRA, setup.canvas.width, setup.canvas.height));
        std::memset(picture->data[0], 0,
                    static_cast<size_t>(picture->linesize[0]) * static_cast<size_t>(picture->height));
        MarkAs(setup.canvas, *picture);
        return picture;
    }

    AVFramePtr Pile(const std::vector<Sketch>& layers, bool onBlack, unsigned worker) {
        const bool opaque = onBlack || layers.front().opaque;
        AVFramePtr base = Writable(Made(layers.front(), worker, 0));
        if (opaque && !layers.front().opaque) base = OverBlack(std::move(base));
        for (size_t index = 1; index < layers.size(); ++index) {
            const AVFramePtr above = Made(layers[index], worker, 1);
            opaque ? mediabridge::CoverOpaque(*base, *above) : mediabridge::Cover(*base, *above);
        }
        if (opaque) base->format = AV_PIX_FMT_BGR0;
        return base;
    }

    // A transition reads its pictures once, so each moment has a processor of its own.
    AVFramePtr Draw(const EffectSpec& effect, AVFramePtr from, AVFramePtr to, int64_t timeMs,
                    int64_t lengthMs) const {
        EffectSpec spec =
            TransitionSpec(effect.name, MemoryPictures::kFirst, MemoryPictures::kSecond, 0, lengthMs);
        spec.properties.insert(spec.properties.end(), effect.properties.begin(), effect.properties.end());
        MemoryPictures pictures;
        pictures.Show(std::move(from), std::move(to));
        EffectChain chain(setup.plugin, &pictures, {spec}, {0, lengthMs});
        return DrawTransition(chain, setup.canvas, timeMs);
    }

    // Transitions know no alpha: colours over black and alpha as a grey picture each cross for themselves.
    AVFramePtr DrawTransparent(const EffectSpec& effect, AVFramePtr from, AVFramePtr to, int64_t timeMs,
                               int64_t lengthMs) const {
        AVFramePtr fromAlpha = Required(mediabridge::AlphaAsGrey(*from));
        AVFramePtr toAlpha = Required(mediabridge::AlphaAsGrey(*to));
        AVFramePtr colours =
            Draw(effect, OverBlack(std::move(from)), OverBlack(std::move(to)), timeMs, lengthMs);
        const AVFramePtr alpha = Draw(effect, std::move(fromAlpha), std::move(toAlpha), timeMs, lengthMs);
        colours->format = AV_PIX_FMT_BGRA;
        mediabridge::TakeAlpha(*colours, *alpha);
        return colours;
    }

    const PlayoutSetup& setup;
    std::vector<std::array<CanvasFitting, 2>> sides; ///< by workers, of opaque pictures in other formats
};

Layering::Layering(const PlayoutSetup& setup)
    : m_ways(std::make_shared<Ways>(setup)) {}

Sketch Layering::Stack(std::vector<Sketch> layers, bool onBlack) const {
    std::erase_if(layers, [](const Sketch& layer) { return !layer; });
    const auto covering =
        std::find_if(layers.rbegin(), layers.rend(), [](const Sketch& layer) { return layer.opaque; });
    if (covering != layers.rend()) layers.erase(layers.begin(), std::prev(covering.base()));
    if (layers.empty() && !onBlack) return {};
    if (layers.size() == 1 && (layers.front().opaque || !onBlack)) return std::move(layers.front());
    if (layers.empty()) layers.emplace_back(); // drawn as nothing, over black
    const bool opaque = onBlack || layers.front().opaque;
    return {[ways = m_ways, layers = std::move(layers), onBlack](unsigned worker) {
                return ways->Pile(layers, onBlack, worker);
            },
            opaque};
}

Sketch Layering::Cross(const EffectSpec& effect, Sketch from, Sketch to, int64_t timeMs,
                       int64_t lengthMs) const {
    const bool opaque = from.opaque && to.opaque;
    if (!from && !to) return {};
    return {[ways = m_ways, effect, from = std::move(from), to = std::move(to), timeMs, lengthMs,
             opaque](unsigned worker) {
                AVFramePtr first = ways->Made(from, worker, 0), second = ways->Made(to, worker, 1);
                return opaque ? ways->Draw(effect, std::move(first), std::move(second), timeMs, lengthMs)
                              : ways->DrawTransparent(effect, std::move(first), std::move(second), timeMs,
                                                      lengthMs);
            },
            opaque};
}

} // namespace aveffect

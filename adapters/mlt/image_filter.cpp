#include "adapters/mlt/image_filter.h"

#include <memory>
#include <utility>
#include <vector>

#include "adapters/mlt/complaints.h"
#include "adapters/mlt/effect_text.h"
#include "adapters/mlt/filter_worker.h"
#include "adapters/mlt/picture.h"
#include "adapters/mlt/the_plugin.h"
#include "adapters/support/bytes_alike.h"
#include "host/effects/effect_chain.h"

namespace aveffect::mlt {

namespace {

constexpr size_t kIdleChains = 16; // at most: as many threads work at a time

/// What a chain was made for.
struct ChainTerms {
    std::string text;
    int64_t lengthMs;
    mlt_image_format format;
    int width, height;

    bool operator==(const ChainTerms&) const = default;
};

class ImageFilter {
public:
    ImageFilter(const AVBased::EffectInfo& effect, mlt_filter filter)
        : m_effect(effect)
        , m_filter(filter)
        , m_complaints(MLT_FILTER_SERVICE(filter)) {}

    int GetImage(mlt_frame frame, uint8_t** image, mlt_image_format* format, int* width,
                 int* height) noexcept {
        *format =
            m_effect.traits & AVBased::kChangesAlpha ? mlt_image_rgba : FormatFor(frame, *width, *height);
        const int failed = mlt_frame_get_image(frame, image, format, width, height, 1);
        const bool served = *format == mlt_image_rgba || *format == mlt_image_yuv420p;
        if (failed || !*image || !served) return failed;
        const bool swaps = *format == mlt_image_rgba && !adapters::TreatsBytesAlike(m_effect.shortName);
        if (swaps) SwapRedAndBlue(*image, *width, *height);
        try {
            Draw(frame, *image, *format, *width, *height);
        } catch (const std::exception& failure) {
            m_complaints.Say(failure);
        }
        if (swaps) SwapRedAndBlue(*image, *width, *height);
        return 0;
    }

private:
    using ChainPtr = std::unique_ptr<EffectChain>;

    void Draw(mlt_frame frame, uint8_t* image, mlt_image_format format, int width, int height) {
        const mlt_service service = MLT_FILTER_SERVICE(m_filter);
        const mlt_position position = mlt_filter_get_position(m_filter, frame);
        const mlt_position length = mlt_filter_get_length2(m_filter, frame);
        ChainTerms terms{EffectText(m_effect, MLT_FILTER_PROPERTIES(m_filter), position, length),
                         Milliseconds(length, service), format, width, height};
        // The process has one generator, which settings seed too.
        static std::mutex drawing;
        std::unique_lock drawn(drawing, std::defer_lock);
        if (m_effect.traits & AVBased::kDrawsRandom) drawn.lock();
        // What an effect does on its first frame alone belongs to the first picture.
        ChainPtr chain = position > 0 ? Take(terms) : nullptr;
        if (!chain) chain = Make(terms);
        AVBased::MemoryFrame picture = PictureOf(image, format, width, height).Frame();
        chain->Process(&picture, static_cast<int>(Milliseconds(position, service)));
        Keep(std::move(terms), std::move(chain));
    }

    ChainPtr Make(const ChainTerms& terms) const {
        const std::vector<EffectSpec> effects = {ParseEffect(terms.text, false)};
        return std::make_unique<EffectChain>(ThePlugin(), nullptr, effects, TimeSpan{0, terms.lengthMs});
    }

    ChainPtr Take(const ChainTerms& terms) {
        const std::scoped_lock lock(m_mutex);
        if (m_idle.empty() || terms != m_terms) return nullptr;
        ChainPtr chain = std::move(m_idle.back());
        m_idle.pop_back();
        return chain;
    }

    // Settings that were left don't come back as a rule, and maps take memory.
    void Keep(ChainTerms terms, ChainPtr chain) {
        const std::scoped_lock lock(m_mutex);
        if (terms != m_terms) m_idle.clear();
        m_terms = std::move(terms);
        if (m_idle.size() < kIdleChains) m_idle.push_back(std::move(chain));
    }

    const AVBased::EffectInfo& m_effect;
    mlt_filter m_filter;
    Complaints m_complaints;
    std::mutex m_mutex;
    ChainTerms m_terms{}; ///< of the chains that no thread has now
    std::vector<ChainPtr> m_idle;
};

int PullImage(mlt_frame frame, uint8_t** image, mlt_image_format* format, int* width, int* height,
              int /*writable*/) {
    return WorkerIn<ImageFilter>(static_cast<mlt_filter>(mlt_frame_pop_service(frame)))
        ->GetImage(frame, image, format, width, height);
}

mlt_frame PushImage(mlt_filter filter, mlt_frame frame) {
    mlt_frame_push_service(frame, filter);
    mlt_frame_push_get_image(frame, PullImage);
    return frame;
}

} // namespace

mlt_filter MakeImageFilter(const AVBased::EffectInfo& effect) {
    return MakeFilter<ImageFilter>(effect, PushImage);
}

} // namespace aveffect::mlt

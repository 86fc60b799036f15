#include "adapters/mlt/image_filter.h"

#include "adapters/mlt/complaints.h"
#include "adapters/mlt/effect_text.h"
#include "adapters/mlt/filter_worker.h"
#include "adapters/mlt/picture.h"
#include "adapters/mlt/the_plugin.h"
#include "adapters/support/bytes_alike.h"
#include "adapters/support/picture_chains.h"

namespace aveffect::mlt {

namespace {

class ImageFilter {
public:
    ImageFilter(const AVBased::EffectInfo& effect, mlt_filter filter)
        : m_effect(effect)
        , m_filter(filter)
        , m_chains(effect)
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
            Draw(frame, PictureOf(*image, *format, *width, *height));
        } catch (const std::exception& failure) {
            m_complaints.Say(failure);
        }
        if (swaps) SwapRedAndBlue(*image, *width, *height);
        return 0;
    }

private:
    void Draw(mlt_frame frame, const adapters::HostPicture& picture) {
        const mlt_service service = MLT_FILTER_SERVICE(m_filter);
        const mlt_position position = mlt_filter_get_position(m_filter, frame);
        const mlt_position length = mlt_filter_get_length2(m_filter, frame);
        const mlt_profile profile = mlt_service_profile(service);
        const Scale scale{mlt_profile_scale_width(profile, static_cast<int>(picture.width)),
                          mlt_profile_scale_height(profile, static_cast<int>(picture.height))};
        m_chains.Draw(
            ThePlugin(), EffectText(m_effect, MLT_FILTER_PROPERTIES(m_filter), position, length, scale),
            Milliseconds(length, service), picture, static_cast<int>(Milliseconds(position, service)));
    }

    const AVBased::EffectInfo& m_effect;
    mlt_filter m_filter;
    adapters::PictureChains m_chains;
    Complaints m_complaints;
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

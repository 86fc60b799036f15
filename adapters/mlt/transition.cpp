#include "adapters/mlt/transition.h"

#include <algorithm>
#include <cstring>
#include <memory>

#include "adapters/mlt/complaints.h"
#include "adapters/mlt/picture.h"
#include "adapters/mlt/the_plugin.h"
#include "adapters/support/bytes_alike.h"
#include "adapters/support/crossing.h"
#include "adapters/support/progress.h"

namespace aveffect::mlt {

namespace {

/// One of the host's pictures, in a format that is asked for.
struct Image {
    uint8_t* data = nullptr;
    mlt_image_format format = mlt_image_rgba;
    int width = 0, height = 0;

    bool Get(mlt_frame frame, bool writable) {
        return mlt_frame_get_image(frame, &data, &format, &width, &height, writable) == 0 && data;
    }
    bool GoesWith(const Image& other) const {
        return format == other.format && width == other.width && height == other.height;
    }
    /// Both go with each other.
    void CopyTo(const Image& other) const noexcept {
        std::memcpy(other.data, data,
                    static_cast<size_t>(mlt_image_format_size(format, width, height, nullptr)));
    }
    void Swap() const noexcept { SwapRedAndBlue(data, width, height); }
    adapters::HostPicture Picture() const { return PictureOf(data, format, width, height); }
};

class Transition {
public:
    Transition(const AVBased::EffectInfo& effect, mlt_transition transition)
        : m_effect(effect)
        , m_transition(transition)
        , m_complaints(MLT_TRANSITION_SERVICE(transition)) {}

    int GetImage(mlt_frame first, mlt_frame second, uint8_t** image, mlt_image_format* format, int* width,
                 int* height) noexcept {
        Image from{nullptr, FormatFor(first, *width, *height), *width, *height};
        if (FormatFor(second, *width, *height) != from.format) from.format = mlt_image_rgba;
        Image to = from;
        const bool there = to.Get(second, true) && from.Get(first, true);
        *image = from.data;
        *format = from.format;
        *width = from.width;
        *height = from.height;
        if (!there) return from.data ? 0 : 1;
        // Before it plays, the host asks once with a profile that is not the clips' yet.
        if (!from.GoesWith(to)) {
            mlt_log_verbose(MLT_TRANSITION_SERVICE(m_transition),
                            "aveffect: a picture of %dx%d is passed on, the second one has %dx%d\n",
                            from.width, from.height, to.width, to.height);
            return 0;
        }
        const bool swaps = from.format == mlt_image_rgba && !adapters::TreatsBytesAlike(m_effect.shortName);
        if (swaps) from.Swap();
        if (swaps) to.Swap(); // lent to nobody else
        try {
            Draw(first, from, to);
        } catch (const std::exception& failure) {
            m_complaints.Say(failure);
        }
        if (swaps) from.Swap();
        return 0;
    }

private:
    void Draw(mlt_frame frame, const Image& from, const Image& to) const {
        const adapters::Moment moment = MomentOf(frame);
        if (moment.Over()) return to.CopyTo(from);
        DrawMoment(ThePlugin(), m_effect.name, from.Picture(), to.Picture(), from.Picture(), moment);
    }

    adapters::Moment MomentOf(mlt_frame frame) const {
        const mlt_service service = MLT_TRANSITION_SERVICE(m_transition);
        const mlt_properties properties = MLT_TRANSITION_PROPERTIES(m_transition);
        const mlt_position position = mlt_transition_get_position(m_transition, frame);
        const mlt_position length = mlt_transition_get_length(m_transition);
        const char* const said = mlt_properties_get(properties, kProgress);
        if (!said || !*said)
            return {Milliseconds(position, service), std::max<int64_t>(1, Milliseconds(length, service))};
        const double progress = mlt_properties_anim_get_double(properties, kProgress, position, length);
        return {adapters::PartOfWhole(progress), adapters::kWhole};
    }

    const AVBased::EffectInfo& m_effect;
    mlt_transition m_transition;
    Complaints m_complaints;
};

Transition* WorkerIn(mlt_transition transition) { return static_cast<Transition*>(transition->child); }

int PullCrossed(mlt_frame first, uint8_t** image, mlt_image_format* format, int* width, int* height,
                int /*writable*/) {
    const mlt_frame second = mlt_frame_pop_frame(first);
    const auto transition = static_cast<mlt_transition>(mlt_frame_pop_service(first));
    return WorkerIn(transition)->GetImage(first, second, image, format, width, height);
}

mlt_frame PushCrossed(mlt_transition transition, mlt_frame first, mlt_frame second) {
    mlt_frame_push_service(first, transition);
    mlt_frame_push_frame(first, second);
    mlt_frame_push_get_image(first, PullCrossed);
    return first;
}

void Close(mlt_transition transition) {
    delete WorkerIn(transition);
    transition->child = nullptr;
    transition->close = nullptr;
    mlt_transition_close(transition);
}

} // namespace

mlt_transition MakeTransition(const AVBased::EffectInfo& effect) {
    const mlt_transition transition = mlt_transition_new();
    if (!transition) return nullptr;
    auto own = std::make_unique<Transition>(effect, transition);
    transition->child = own.release();
    transition->process = PushCrossed;
    transition->close = Close;
    mlt_properties_set_int(MLT_TRANSITION_PROPERTIES(transition), "_transition_type", 1); // of pictures
    return transition;
}

} // namespace aveffect::mlt

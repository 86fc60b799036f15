// MLT's filters beside the plain effect.
#include <cstdlib>
#include <memory>
#include <string>

#include <framework/mlt.h>

#include "aveffect/pixel_format.h"
#include "bench/door_benchmarks.h"

namespace bench {
namespace {

template <auto close>
struct Closed {
    void operator()(auto* closed) const { close(closed); }
};
using ProfilePtr = std::unique_ptr<mlt_profile_s, Closed<mlt_profile_close>>;
using ProducerPtr = std::unique_ptr<mlt_producer_s, Closed<mlt_producer_close>>;
using FilterPtr = std::unique_ptr<mlt_filter_s, Closed<mlt_filter_close>>;
using FramePtr = std::unique_ptr<mlt_frame_s, Closed<mlt_frame_close>>;

/// A filter on pictures of a clip of ours.
class Film {
public:
    Film(const DoorPair& pair, const DoorKind& kind, unsigned char* picture)
        : m_packed(kind.format == AVBased::BGRA)
        , m_picture(picture)
        , m_profile(mlt_profile_init("atsc_1080p_25"))
        , m_producer(mlt_producer_new(m_profile.get()))
        , m_filter(mlt_factory_filter(m_profile.get(), ("aveffect." + std::string(pair.shortName)).c_str(),
                                      nullptr)) {
        const mlt_properties clip = MLT_PRODUCER_PROPERTIES(m_producer.get());
        mlt_properties_set(clip, "meta.media.0.codec.pix_fmt", m_packed ? "bgra" : "yuv420p");
        for (const auto& [property, value] : pair.settings)
            mlt_properties_set(MLT_FILTER_PROPERTIES(m_filter.get()), property, value);
    }

    void Push() {
        const FramePtr frame(mlt_frame_init(MLT_PRODUCER_SERVICE(m_producer.get())));
        const mlt_properties properties = MLT_FRAME_PROPERTIES(frame.get());
        mlt_frame_set_position(frame.get(), 1);
        mlt_properties_set_data(properties, "_producer", m_producer.get(), 0, nullptr, nullptr);
        mlt_properties_set_int(properties, "format", m_packed ? mlt_image_rgba : mlt_image_yuv420p);
        mlt_properties_set_int(properties, "width", kDoorWidth);
        mlt_properties_set_int(properties, "height", kDoorHeight);
        // As a file's reader says of its pictures.
        mlt_properties_set_int(properties, "meta.media.width", kDoorWidth);
        mlt_properties_set_int(properties, "meta.media.height", kDoorHeight);
        mlt_frame_set_aspect_ratio(frame.get(), 1);
        mlt_frame_set_image(frame.get(), m_picture, 0, nullptr);
        mlt_filter_process(m_filter.get(), frame.get());
        uint8_t* image = nullptr;
        mlt_image_format format = mlt_image_none;
        int width = kDoorWidth, height = kDoorHeight;
        if (mlt_frame_get_image(frame.get(), &image, &format, &width, &height, 1) != 0 || image != m_picture)
            std::abort();
    }

private:
    bool m_packed;
    unsigned char* m_picture;
    ProfilePtr m_profile;
    ProducerPtr m_producer;
    FilterPtr m_filter;
};

Push MakeFilm(const DoorPair& pair, const DoorKind& kind, unsigned char* picture) {
    return [film = std::make_shared<Film>(pair, kind, picture)] { film->Push(); };
}

} // namespace

void RegisterMltBenchmarks() {
    if (mlt_factory_init(AVEFFECT_MLT_MODULES)) RegisterDoorBenchmarks("MLT", MakeFilm);
}

} // namespace bench

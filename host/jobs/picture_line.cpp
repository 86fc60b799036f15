#include "host/jobs/picture_line.h"

#include <algorithm>
#include <climits>
#include <utility>

extern "C" {
#include <libavutil/imgutils.h>
}

#include "host/media/span.h"

namespace aveffect {

using mediabridge::AVFramePtr;

namespace {

int ToMs(int64_t ticks, AVRational base) {
    return static_cast<int>(std::clamp<int64_t>(av_rescale_q(ticks, base, kMilliseconds), 0, INT_MAX));
}

std::unique_ptr<ViewPairs> PairsFor(const LineSetup& setup, ViewPairs* first) {
    if (!setup.task.stereo.TwoViews()) return nullptr;
    if (first) return std::make_unique<ViewPairs>(first);
    return std::make_unique<ViewPairs>(setup.plugin, &setup.media, setup.task.effects, setup.times.clip,
                                       setup.task.stereo);
}

} // namespace

size_t PictureBytes(const AVFrame& picture) {
    const auto format = static_cast<AVPixelFormat>(picture.format);
    return static_cast<size_t>(
        std::max(0, av_image_get_buffer_size(format, picture.width, picture.height, 1)));
}

PictureLine::PictureLine(const LineSetup& setup, PictureLine* first)
    : m_setup(setup)
    , m_chain(first ? EffectChain(&first->m_chain)
                    : EffectChain(setup.plugin, &setup.media, setup.task.effects, setup.times.clip))
    , m_pairs(PairsFor(setup, first ? first->m_pairs.get() : nullptr))
    , m_stage(m_chain, setup.media, setup.task.pixelFormat, setup.uprightBy, setup.terms, setup.reporter,
              m_pairs.get()) {
    if (setup.task.framing.afterEffects)
        m_framer = Framer(setup.task.framing);
    else
        m_stage.Frame(setup.task.framing);
}

// In the clip, to the millisecond as a render of the whole clip has it.
int PictureLine::TimeOf(const AVFrame& picture) const {
    const Moment& start = m_setup.times.start;
    if (av_cmp_q(start.base, m_setup.base) == 0) return ToMs(start.ticks + picture.pts, m_setup.base);
    return ToMs(start.ticks, start.base) + ToMs(picture.pts, m_setup.base);
}

AVFramePtr PictureLine::Make(AVFramePtr picture, const AVFrame* second, std::optional<int64_t> number) {
    const int time = TimeOf(*picture);
    const int duration = ToMs(picture->pkt_duration, m_setup.base);
    const size_t bytes = PictureBytes(*picture);
    picture = m_stage.ApplyEffects(std::move(picture), time, static_cast<unsigned>(duration), second, number);
    picture = m_framer.Apply(std::move(picture));
    if (!m_output)
        m_output.emplace(m_setup.plan, m_stage.Origin(), *picture, m_setup.terms, m_setup.reporter);
    picture = m_output->Convert(std::move(picture));
    m_bytes = std::max({m_bytes, bytes, m_stage.WorkingBytes(), PictureBytes(*picture)});
    return picture;
}

void PictureLine::Stop() {
    m_chain.Stop();
    if (m_pairs) m_pairs->Stop();
}

} // namespace aveffect

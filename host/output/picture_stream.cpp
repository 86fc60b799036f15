#include "host/output/picture_stream.h"

#include <utility>

#include "host/support/error.h"

namespace aveffect {

using mediabridge::AVFramePtr;

PictureStream::PictureStream(const OutputPlan& plan, const AVFrame& sample, const PictureTimes& times,
                             Container& output)
    : m_clock(times.base, times.rate, plan.NeedsConstantRate(), plan.LargestDenominator())
    , m_encoder(plan, sample, {m_clock.Base(), times.rate.picturesPerSecond})
    , m_counts(plan.CountsPictures())
    , m_output(output)
    , m_stream(output.AddStream(m_encoder.Context())) {}

void PictureStream::Write(AVFramePtr picture) {
    const int64_t time = picture->pts;
    if (m_counts && m_clock.ComesLate(time)) return;
    picture->pts = m_clock.Convert(time);
    picture->pkt_duration = m_clock.ConvertDuration(time, picture->pkt_duration);
    if (m_counts) FillUntil(picture->pts);
    m_durations[picture->pts] = m_counts ? 1 : picture->pkt_duration;
    m_fillUntil = picture->pts + picture->pkt_duration;
    if (m_counts) m_shown.reset(av_frame_clone(picture.get()));
    Encode(picture.get());
}

// What counts pictures has one at every tick: the one that is shown stands again where the next is not due.
void PictureStream::FillUntil(int64_t tick) {
    if (!m_shown) return;
    while (m_shown->pts + 1 < tick) {
        const AVFramePtr again(av_frame_clone(m_shown.get()));
        if (!again) throw NoMemory("no memory for a picture");
        again->pts = ++m_shown->pts;
        m_durations[again->pts] = 1;
        Encode(again.get());
    }
}

// Not all encoders hand a picture's duration on to its packet, and the last one's would be lost.
void PictureStream::Encode(AVFrame* picture) {
    m_encoder.Encode(picture, [this](AVPacket& packet) {
        if (const auto duration = m_durations.find(packet.pts); duration != m_durations.end()) {
            packet.duration = duration->second;
            m_durations.erase(duration);
        }
        m_output.Write(packet, *m_stream, m_clock.Base());
    });
}

void PictureStream::Complete() {
    FillUntil(m_fillUntil);
    Encode(nullptr);
}

} // namespace aveffect

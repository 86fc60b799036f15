#include "host/media/right_clip.h"

#include <cstdlib>
#include <utility>

#include "host/support/error.h"

namespace aveffect {

using mediabridge::AVFramePtr;

RightClip::RightClip(const SourceRequest& request, std::optional<int64_t> fromMs, unsigned threads,
                     Reporter& reporter, const std::atomic<bool>& cancel)
    : m_clip(request, threads, cancel)
    , m_reporter(reporter) {
    if (fromMs) m_clip.SeekBefore(*fromMs);
}

// In microseconds, signed: how much later the picture begins.
int64_t RightClip::DistanceOf(const AVFrame& picture, const Moment& time) const {
    return av_rescale_q(picture.pts, m_clip.Clip().Pictures().time_base, kMicroseconds) -
           av_rescale_q(time.ticks, time.base, kMicroseconds);
}

AVFramePtr RightClip::At(const Moment& time) {
    if (!m_current) {
        m_current = m_clip.Next();
        if (!m_current)
            throw Error(ErrorKind::Input, m_clip.Clip().Path() + " holds no picture that can be decoded");
        m_next = m_clip.Next();
    }
    while (m_next && std::abs(DistanceOf(*m_next, time)) < std::abs(DistanceOf(*m_current, time)))
        m_current = std::exchange(m_next, m_clip.Next());
    if (!m_next) WarnOfEnd(time);
    AVFramePtr picture(av_frame_clone(m_current.get()));
    if (!picture) throw NoMemory(m_clip.Clip().Path() + ": out of memory");
    return picture;
}

// A still picture lasts for ever.
void RightClip::WarnOfEnd(const Moment& time) {
    const AVRational rate = m_clip.Clip().FrameRate();
    const int64_t interval = av_rescale(1000000, rate.den, rate.num);
    if (m_warned || m_clip.Count() < 2 || -DistanceOf(*m_current, time) < 2 * interval) return;
    m_warned = true;
    m_reporter.Warn(m_clip.Clip().Path() + " ends before the other view; its last picture stays");
}

} // namespace aveffect

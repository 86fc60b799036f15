#include "host/media/clip_player.h"

#include <algorithm>
#include <utility>

#include "host/picture/light_metadata.h"
#include "host/support/error.h"

namespace aveffect {

using mediabridge::AVFramePtr;

ClipPlayer::ClipPlayer(const SourceRequest& request, AVRational rate, IntakeTerms* terms, unsigned threads,
                       const std::atomic<bool>& cancel)
    : m_source(request, Source::Others::None, threads, cancel)
    , m_interval(av_inv_q(rate))
    , m_intake(terms) {
    Read();
    if (!m_next) throw Error(ErrorKind::Input, request.path + " holds no picture that can be decoded");
}

// Reads the next picture; the one that was next stays shown at the clip's end.
void ClipPlayer::Read() {
    if (m_next) m_shown = std::move(m_next);
    std::optional<SourceItem> item = m_source.Next();
    if (!item) return;
    ++m_read;
    const AVRational base = m_source.Pictures().time_base;
    m_end = {item->picture->pts + item->picture->pkt_duration, base};
    m_next = std::move(item->picture);
}

AVRational ClipPlayer::CountAtOwnRate() {
    if (m_source.IsConstantRate()) m_interval = av_inv_q(m_source.FrameRate());
    return av_inv_q(m_interval);
}

// Times in files may be rounded to milliseconds, so a tick's picture may begin a little after it.
void ClipPlayer::GoTo(int64_t tick) {
    constexpr int64_t kRoundingMs = 1;
    const int64_t time = av_rescale_q(tick, m_interval, kMilliseconds);
    m_source.SeekBefore(std::max(kRoundingMs, time - kRoundingMs));
    m_shown.reset();
    m_next.reset();
    Read();
}

void ClipPlayer::Frame(const Framing& framing) {
    m_framer = Framer(framing);
    m_framed.reset();
}

AVFramePtr ClipPlayer::Clone(const AVFrame& picture) const {
    AVFramePtr clone(av_frame_clone(&picture));
    if (!clone) throw NoMemory(m_source.Path() + ": out of memory");
    return clone;
}

AVFramePtr ClipPlayer::At(int64_t tick) {
    const AVRational base = m_source.Pictures().time_base;
    bool changed = false;
    while (m_next && (!m_shown || av_rescale_q(m_next->pts, base, m_interval) <= tick)) {
        Read();
        changed = true;
    }
    if (changed) {
        m_shown = m_upright.Apply(std::move(m_shown), m_source.Pictures());
        if (IsHighDynamicRange(*m_shown)) KeepLight(m_source.Pictures(), *m_shown);
        m_shown = m_intake.Map(std::move(m_shown));
        m_framed.reset();
    }
    if (!m_framed) m_framed = m_framer.Apply(Clone(*m_shown));
    return Clone(*m_framed);
}

} // namespace aveffect

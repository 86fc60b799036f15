#include "host/media/shown_pictures.h"

#include "host/support/error.h"
#include "host/support/stages.h"

namespace aveffect {

using mediabridge::AVFramePtr;

bool ShownPictures::Begins(const AVFrame& picture, int64_t atMs) const {
    return av_compare_ts(picture.pts, m_source.Pictures().time_base, atMs, kMilliseconds) <= 0;
}

bool ShownPictures::IsNear(int64_t atMs) const {
    constexpr int64_t kNearMs = 2000;
    return m_shown && Begins(*m_shown, atMs) && !Begins(*m_shown, atMs - kNearMs);
}

AVFramePtr ShownPictures::Read() {
    while (std::optional<SourceItem> item = m_source.Next()) {
        CheckCancel(m_cancel);
        if (item->picture) return std::move(item->picture);
    }
    return nullptr;
}

AVFramePtr ShownPictures::At(int64_t atMs) {
    if (!std::exchange(m_begun, true)) m_source.SeekBefore(atMs);
    if (!m_next) m_next = Read();
    while (m_next && (!m_shown || Begins(*m_next, atMs))) {
        m_shown = std::move(m_next);
        m_next = Read();
    }
    if (!m_shown) throw Error(ErrorKind::Input, m_source.Path() + " holds no picture that can be decoded");
    const int64_t end =
        av_rescale_q(m_shown->pts + m_shown->pkt_duration, m_source.Pictures().time_base, kMilliseconds);
    if (!m_source.EndMs() && atMs > 0 && atMs >= end && !m_next)
        throw Error(ErrorKind::Usage, SecondsText(atMs) + " is beyond the end of " + m_source.Path() +
                                          ", which lasts " + SecondsText(end));
    AVFramePtr picture(av_frame_clone(m_shown.get()));
    if (!picture) throw NoMemory("no memory for a picture");
    return picture;
}

} // namespace aveffect

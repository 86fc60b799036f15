#include "host/media/steady_pictures.h"

#include <algorithm>
#include <utility>

#include "host/support/error.h"

namespace aveffect {

SpanItem SteadyPictures::Show() {
    SpanItem item;
    item.picture.reset(av_frame_clone(m_shown->picture.get()));
    if (m_shown->second) item.second.reset(av_frame_clone(m_shown->second.get()));
    if (!item.picture || (m_shown->second && !item.second)) throw NoMemory("no memory for a picture");
    item.picture->pts = m_tick++;
    item.picture->pkt_duration = 1;
    ++m_given;
    return item;
}

// A picture is shown until the next one's tick, the last one until its end; a clip of a moment still has one.
std::optional<SpanItem> SteadyPictures::Next() {
    for (;;) {
        const bool full = m_limit && m_given >= *m_limit;
        if (m_shown && !full && m_tick < m_showUntil) return Show();
        if (m_following) {
            m_shown = std::exchange(m_following, std::nullopt);
            if (m_given == 0) m_tick = TickOf(m_shown->picture->pts);
        }
        if (m_ended) return std::nullopt;
        std::optional<SpanItem> item = m_next();
        if (item && !item->picture) return item;
        if (item) {
            m_showUntil = TickOf(item->picture->pts);
            m_following = std::move(item);
            continue;
        }
        m_ended = true;
        if (!m_shown) return std::nullopt;
        const AVFrame& last = *m_shown->picture;
        m_showUntil = std::max(TickOf(last.pts + last.pkt_duration), m_tick + (m_given == 0 ? 1 : 0));
    }
}

} // namespace aveffect

#include "studio/clips.h"

#include <algorithm>
#include <utility>

#include "host/picture/orientation.h"
#include "host/support/error.h"
#include "timeline/otio/media_headers.h"

extern "C" {
#include <libavutil/imgutils.h>
}

namespace aveffect {

using mediabridge::AVFramePtr;

namespace {

constexpr size_t kMostClips = 32;        // that are known
constexpr size_t kMostOpen = 4;          // of those, files that are kept open
constexpr size_t kMostBytes = 192 << 20; // of a clip's pictures that are kept
constexpr int64_t kAfterLastMs = 1000;   // how far before the end its last picture is looked for

size_t BytesOf(const AVFrame& picture) {
    const int bytes = av_image_get_buffer_size(static_cast<AVPixelFormat>(picture.format), picture.width,
                                               picture.height, 1);
    return static_cast<size_t>(std::max(0, bytes));
}

AVFramePtr Again(const AVFrame& picture) {
    AVFramePtr copy(av_frame_clone(&picture));
    if (!copy) throw NoMemory("no memory for a picture");
    return copy;
}

} // namespace

StudioClip::StudioClip(std::string id, std::string path, const std::atomic<bool>& cancel)
    : m_id(std::move(id))
    , m_path(std::move(path))
    , m_cancel(cancel) {
    MediaHeaders headers(&cancel);
    const MediaHeader& header = headers.Of(m_path);
    if (!header.fault.empty()) throw Error(ErrorKind::Input, header.fault);
    m_pictures = header.pictures;
    m_sound = header.sound;
    m_still = header.still;
    const auto& length = header.pictures ? header.seen : header.heard;
    if (length && !m_still) m_seconds = length->Seconds();
    if (!m_pictures) return;
    const Shown first = Decode(0);
    Upright upright;
    const AVFramePtr seen = upright.Apply(Again(*first.picture), first.source->Pictures());
    m_width = seen->width;
    m_height = seen->height;
    m_rate = av_q2d(first.source->FrameRate());
    m_frames = m_still ? 1 : first.source->PictureCount().value_or(std::llround(m_seconds * m_rate));
}

nlohmann::json StudioClip::Words() const {
    const size_t slash = m_path.rfind('/');
    return {{"id", m_id},
            {"path", m_path},
            {"name", m_path.substr(slash + 1)},
            {"width", m_width},
            {"height", m_height},
            {"duration", m_seconds},
            {"fps", m_still ? 0 : m_rate},
            {"frames", m_frames},
            {"pictures", m_pictures},
            {"still", m_still},
            {"sound", m_sound}};
}

StudioClip::Shown StudioClip::Decode(int64_t atMs) {
    if (!m_reading || !m_reading->pictures.IsNear(atMs)) {
        m_reading.reset();
        auto source = std::make_shared<Source>(ParseSourceUrl(m_path), Source::Others::None, 0u, m_cancel);
        m_reading.reset(new Reading{source, ShownPictures(*source, m_cancel)});
    }
    Shown shown{m_reading->source, m_reading->pictures.At(atMs), {}, 0};
    shown.damage = shown.source->Damage(1, {}, false);
    shown.timeMs = av_rescale_q(shown.picture->pts, shown.source->Pictures().time_base, kMilliseconds);
    Keep(shown);
    return shown;
}

void StudioClip::Keep(const Shown& shown) {
    const int64_t begin = shown.picture->pts;
    m_kept.push_front({begin,
                       begin + std::max<int64_t>(1, shown.picture->pkt_duration),
                       {shown.source, Again(*shown.picture), shown.damage, shown.timeMs}});
    size_t bytes = 0;
    for (auto kept = m_kept.begin(); kept != m_kept.end(); ++kept) {
        bytes += BytesOf(*kept->shown.picture);
        if (bytes <= kMostBytes || kept == m_kept.begin()) continue;
        m_kept.erase(kept, m_kept.end());
        break;
    }
}

StudioClip::Shown StudioClip::At(int64_t atMs) {
    const std::scoped_lock lock(m_mutex);
    if (!m_pictures) throw Error(ErrorKind::Usage, m_path + " has no pictures");
    if (m_still) atMs = 0;
    const auto end = static_cast<int64_t>(m_seconds * 1000);
    if (end > 0 && atMs >= end) atMs = std::max<int64_t>(0, end - 1);
    for (const Kept& kept : m_kept) {
        const AVRational base = kept.shown.source->Pictures().time_base;
        const bool shows = av_compare_ts(kept.begin, base, atMs, kMilliseconds) <= 0 &&
                           av_compare_ts(kept.end, base, atMs, kMilliseconds) > 0;
        if (shows || m_still)
            return {kept.shown.source, Again(*kept.shown.picture), kept.shown.damage, kept.shown.timeMs};
    }
    try {
        return Decode(atMs);
    } catch (const Error& error) {
        // Files may end before they say they do.
        if (error.Kind() != ErrorKind::Usage || atMs == 0) throw;
        return Decode(std::max<int64_t>(0, atMs - kAfterLastMs));
    }
}

void StudioClip::Close() {
    const std::scoped_lock lock(m_mutex);
    m_reading.reset();
    m_kept.clear();
}

std::shared_ptr<StudioClip> StudioClips::Open(const std::string& place) {
    {
        const std::scoped_lock lock(m_mutex);
        for (const auto& clip : m_clips)
            if (clip->Path() == place) return clip;
    }
    std::string id;
    {
        const std::scoped_lock lock(m_mutex);
        id = "c" + std::to_string(++m_count);
    }
    auto clip = std::make_shared<StudioClip>(id, place, m_cancel);
    const std::scoped_lock lock(m_mutex);
    m_clips.push_front(clip);
    if (m_clips.size() > kMostClips) m_clips.pop_back();
    return clip;
}

std::shared_ptr<StudioClip> StudioClips::Of(const std::string& id) {
    std::shared_ptr<StudioClip> found, idle;
    {
        const std::scoped_lock lock(m_mutex);
        const auto at = std::ranges::find(m_clips, id, &StudioClip::Id);
        if (at == m_clips.end())
            throw Error(ErrorKind::Usage, "there is no clip '" + id + "' any more; open its file again");
        found = *at;
        std::rotate(m_clips.begin(), at, at + 1);
        if (m_clips.size() > kMostOpen) idle = m_clips[kMostOpen];
    }
    if (idle) idle->Close();
    return found;
}

} // namespace aveffect

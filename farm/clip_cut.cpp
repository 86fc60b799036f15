#include "farm/clip_cut.h"

#include <algorithm>
#include <limits>

#include "host/jobs/clip_input.h"

namespace aveffect {

namespace {

[[noreturn]] void Refuse(const RenderOptions& options, const std::string& why) {
    throw Error(ErrorKind::Usage, "the render of " + options.input + " can't be shared out: " + why);
}

/// When each picture of the clip is shown, in ticks of its stream from the clip's start, in order.
std::vector<int64_t> TimesOf(const RenderOptions& options, const std::atomic<bool>& cancel) {
    Source source(RequestOf(options), Source::Others::WithPictures, 1, cancel);
    std::vector<int64_t> times;
    while (const std::optional<SourceItem> item = source.Next()) {
        const AVPacket& packet = *item->packet;
        if (packet.stream_index != source.Pictures().index || packet.flags & AV_PKT_FLAG_DISCARD) continue;
        if (packet.pts == AV_NOPTS_VALUE)
            Refuse(options, "the clip does not say when its pictures are shown");
        times.push_back(packet.pts);
    }
    source.RequireRead();
    std::ranges::sort(times);
    if (std::ranges::adjacent_find(times) != times.end())
        Refuse(options, "two of the clip's pictures are shown at the same time");
    return times;
}

/// One clip's way from its times to its chunks.
class ClipCut {
public:
    ClipCut(FarmPlan& plan, const RenderOptions& options, const JobTools& tools)
        : m_plan(plan)
        , m_options(options)
        , m_reporter(tools.observer)
        , m_cancel(tools.cancel)
        , m_render(PlanRender(options, tools.cancel))
        , m_input((Require(), m_render), m_reporter, tools.cancel)
        , m_base(m_input.source.Pictures().time_base)
        , m_times(TimesOf(options, tools.cancel)) {}

    void Make(const std::function<int64_t(int64_t, AVRational)>& picturesAChunk) {
        KeepSpan();
        m_plan.ticks = m_base;
        m_plan.wholeToMs = m_input.limits.toMs;
        m_plan.wholeLengthMs = m_input.span.LengthMs();
        m_plan.wholeStart = m_options.fromMs ? m_times.front() : 0;
        if (m_options.rate)
            AtRate(picturesAChunk);
        else
            AsTheyAre(picturesAChunk);
    }

private:
    void Require() const {
        if (m_render.output.IsStill() && !m_render.output.IsNumbered())
            Refuse(m_options, m_options.output + " is one picture");
        if (m_render.kind == RenderPlan::Kind::Sound) Refuse(m_options, "there are no pictures");
        if (m_render.kind == RenderPlan::Kind::Copy) Refuse(m_options, "its pictures are copied as they are");
        if (m_render.output.IsNumbered()) return;
        const AVCodecID codec = m_render.output.muxer->video_codec;
        if (codec == AV_CODEC_ID_GIF || codec == AV_CODEC_ID_APNG)
            Refuse(m_options, "pictures of animations build on those before");
    }

    // As SpanReader keeps them.
    void KeepSpan() {
        const auto isBefore = [this](const std::optional<int64_t>& ms) {
            return [this, moment = Moment{*ms, kMilliseconds}](int64_t time) {
                return Moment{time, m_base} < moment;
            };
        };
        const SpanLimits& limits = m_input.limits;
        if (limits.toMs)
            m_times.erase(std::ranges::partition_point(m_times, isBefore(limits.toMs)), m_times.end());
        if (limits.fromMs)
            m_times.erase(m_times.begin(), std::ranges::partition_point(m_times, isBefore(limits.fromMs)));
        if (limits.frameLimit && static_cast<int64_t>(m_times.size()) > *limits.frameLimit) {
            m_following = m_times[static_cast<size_t>(*limits.frameLimit)];
            m_times.resize(static_cast<size_t>(*limits.frameLimit));
        }
        if (m_times.empty()) throw Error(ErrorKind::Usage, m_options.input + " has no picture in that span");
        for (size_t index = 1; index < m_times.size(); ++index)
            if (Milliseconds(m_times[index]) == Milliseconds(m_times[index - 1]))
                Refuse(m_options, "it shows more than 1000 pictures a second");
    }

    int64_t Milliseconds(int64_t time) const {
        return av_rescale_q_rnd(time, m_base, kMilliseconds, AV_ROUND_DOWN);
    }
    std::optional<int64_t> FromOf(size_t index) const {
        return index == 0 && !m_options.fromMs ? std::nullopt : std::optional(Milliseconds(m_times[index]));
    }
    // What follows the last picture tells how long it is shown.
    std::optional<int64_t> ToOf(size_t end) const {
        if (end < m_times.size()) return Milliseconds(m_times[end]);
        return m_following ? std::optional(Milliseconds(*m_following)) : m_input.limits.toMs;
    }

    bool IsConstant(AVRational rate) const {
        for (size_t index = 0; index < m_times.size(); ++index) {
            const int64_t even = av_rescale_q(static_cast<int64_t>(index), av_inv_q(rate), m_base);
            if (std::abs(m_times[index] - m_times.front() - even) > 1) return false;
        }
        return true;
    }

    void AsTheyAre(const std::function<int64_t(int64_t, AVRational)>& picturesAChunk) {
        m_plan.rate = m_input.source.FrameRate();
        m_plan.firstTicks = m_times.front() - m_plan.wholeStart;
        const bool constant = IsConstant(m_plan.rate);
        const auto all = static_cast<int64_t>(m_times.size());
        const int64_t most = picturesAChunk(all, m_plan.rate);
        for (int64_t begin = 0; begin < all; begin += most) {
            const int64_t end = std::min(begin + most, all);
            const auto first = static_cast<size_t>(begin);
            PlannedChunk chunk{begin, end, FromOf(first), ToOf(static_cast<size_t>(end)), {}};
            if (!constant) chunk.startTicks = m_times[first] - m_plan.wholeStart;
            m_plan.chunks.push_back(chunk);
        }
    }

    int64_t TickOf(size_t index) const {
        return av_rescale_q(m_times[index] - m_plan.wholeStart, m_base, av_inv_q(*m_options.rate));
    }

    // Each tick shows the last picture whose own tick is not behind it.
    void AtRate(const std::function<int64_t(int64_t, AVRational)>& picturesAChunk) {
        m_plan.rate = *m_options.rate;
        const int64_t first = TickOf(0);
        const int64_t end = LastTick() + 1;
        m_plan.firstTicks = av_rescale_q(first, av_inv_q(m_plan.rate), m_base);
        const int64_t most = picturesAChunk(end - first, m_plan.rate);
        size_t shown = 0;
        for (int64_t begin = first; begin < end; begin += most) {
            while (shown + 1 < m_times.size() && TickOf(shown + 1) <= begin) ++shown;
            m_plan.chunks.push_back(
                {begin, std::min(begin + most, end), FromOf(shown), m_input.limits.toMs, {}});
        }
    }

    // How long the last picture is shown is found by reading it.
    int64_t LastTick() {
        RenderOptions options = m_options;
        const int64_t last = TickOf(m_times.size() - 1);
        options.share = {last,
                         std::numeric_limits<int64_t>::max(),
                         FromOf(m_times.size() - 1),
                         m_input.limits.toMs,
                         m_plan.wholeStart,
                         m_plan.wholeToMs,
                         m_plan.wholeLengthMs};
        const RenderPlan render{options, m_render.output};
        ClipInput input(render, m_reporter, m_cancel);
        int64_t found = last;
        while (const std::optional<SpanItem> item = input.Next()) found = std::max(found, item->picture->pts);
        const int64_t most = m_options.frameLimit ? TickOf(0) + *m_options.frameLimit - 1 : found;
        return std::min(found, most);
    }

    FarmPlan& m_plan;
    const RenderOptions& m_options;
    Reporter m_reporter;
    const std::atomic<bool>& m_cancel;
    RenderPlan m_render;
    ClipInput m_input;
    AVRational m_base;
    std::vector<int64_t> m_times;
    std::optional<int64_t> m_following; ///< the first one that is left out behind them
};

} // namespace

void CutClip(FarmPlan& plan, const RenderOptions& options,
             const std::function<int64_t(int64_t, AVRational)>& picturesAChunk, const JobTools& tools) {
    ClipCut(plan, options, tools).Make(picturesAChunk);
}

} // namespace aveffect

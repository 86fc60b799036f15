#include "host/jobs/clip_input.h"

#include <algorithm>

namespace aveffect {

namespace {

// Where a rate is asked for, a number of its pictures is a time; one picture more of the clip's makes sure
// that none is missing.
std::optional<int64_t> EndOf(const RenderOptions& options, const Source& source) {
    if (!options.rate || !options.frameLimit) return options.toMs;
    const auto lastMs = [](int64_t pictures, AVRational rate) {
        return av_rescale_q_rnd(pictures, av_inv_q(rate), kMilliseconds, AV_ROUND_UP);
    };
    const int64_t to = options.fromMs.value_or(0) + lastMs(*options.frameLimit, *options.rate) +
                       lastMs(1, source.FrameRate());
    return std::min(to, options.toMs.value_or(to));
}

SpanLimits LimitsOf(const RenderOptions& options, const Source& source) {
    if (const auto& share = options.share)
        return {share->fromMs, share->toMs,
                options.rate ? std::nullopt : std::optional(share->end - share->begin)};
    return {options.fromMs, EndOf(options, source), options.rate ? std::nullopt : options.frameLimit};
}

Source::Others OthersOf(const RenderPlan& plan) {
    return plan.output.IsStill() || plan.options.share ? Source::Others::None : Source::Others::Copied;
}

} // namespace

ClipInput::ClipInput(const RenderPlan& plan, Reporter& reporter, const std::atomic<bool>& cancel)
    : request(RequestOf(plan.options))
    , source(request, OthersOf(plan), plan.options.threads, cancel)
    , limits(LimitsOf(plan.options, source))
    , span(source, limits)
    , m_options(plan.options) {
    const std::optional<AVRational>& rate = m_options.rate;
    if (rate) {
        const std::optional<int64_t> most = m_options.share ? std::nullopt : m_options.frameLimit;
        m_steady.emplace([this] { return Read(); }, source.Pictures().time_base, *rate, most);
    }
    if (!m_options.stereo.right.empty())
        m_right = std::make_unique<RightClip>(ParseSourceUrl(m_options.stereo.right).At(rate), limits.fromMs,
                                              m_options.threads, reporter, cancel);
}

std::optional<SpanItem> ClipInput::Next() {
    if (m_options.share && m_steady) return Shared();
    return m_steady ? m_steady->Next() : Read();
}

// Pictures that are shown again or left out count from the whole's start.
std::optional<SpanItem> ClipInput::Shared() {
    for (;;) {
        std::optional<SpanItem> item = m_steady->Next();
        if (!item || item->picture->pts >= m_options.share->end) return std::nullopt;
        if (item->picture->pts >= m_options.share->begin) return item;
    }
}

std::optional<SpanItem> ClipInput::Read() {
    std::optional<SpanItem> item = span.Next();
    if (!item || !item->picture) return item;
    if (m_right) item->second = m_right->At({span.Start() + item->picture->pts, source.Pictures().time_base});
    if (m_options.share && m_steady) item->picture->pts += span.Start() - m_options.share->wholeStart;
    return item;
}

TimeSpan ClipInput::Clip() const {
    const std::optional<ClipShare>& share = m_options.share;
    TimeSpan clip = ClipTimes(source, share ? share->wholeToMs : limits.toMs, m_options.rate);
    if (m_options.restart) clip.endMs = share ? share->wholeLengthMs : span.LengthMs();
    return clip;
}

Moment ClipInput::Start() const {
    const std::optional<ClipShare>& share = m_options.share;
    const int64_t whole = share ? share->wholeStart : span.Start();
    const int64_t first = share && m_steady ? share->wholeStart : span.Start();
    return {m_options.restart ? first - whole : first, source.Pictures().time_base};
}

std::optional<int64_t> ClipInput::ExpectedPictures() const {
    if (m_options.share) return m_options.share->end - m_options.share->begin;
    const std::optional<AVRational>& rate = m_options.rate;
    const std::optional<int64_t>& frameLimit = m_options.frameLimit;
    const std::optional<int64_t> length = span.LengthMs();
    if (!rate || !length) return rate ? frameLimit : span.ExpectedPictures();
    const int64_t ticks = av_rescale_q(*length, kMilliseconds, av_inv_q(*rate));
    return std::max<int64_t>(1, std::min(ticks, frameLimit.value_or(ticks)));
}

DamageReport ClipInput::Damage() const {
    DamageReport all = span.Damage();
    if (m_right) all.Add(m_right->Damage());
    return all;
}

} // namespace aveffect

#include "host/jobs/playback.h"

#include <algorithm>
#include <climits>
#include <utility>

#include "host/effects/audio_effect_chain.h"
#include "host/effects/media_check.h"
#include "host/effects/picture_stage.h"
#include "host/effects/view_pairs.h"
#include "host/media/media_manager.h"
#include "host/media/right_clip.h"
#include "host/media/span.h"
#include "host/media/steady_pictures.h"
#include "host/picture/framer.h"
#include "host/sound/clip_sound.h"
#include "host/support/bounded_queue.h"
#include "host/support/stages.h"

namespace aveffect {

using mediabridge::AVFramePtr;
using mediabridge::Scaler;

namespace {

constexpr unsigned kPicturesAhead = 4;

SpanLimits LimitsFrom(const RenderOptions& options, int64_t atMs) {
    // Without a start the span begins with the clip's first picture, whatever its time.
    const bool begins = atMs == 0 && !options.fromMs;
    return {begins ? std::nullopt : std::optional(options.fromMs.value_or(0) + atMs), options.toMs, {}};
}

/// What pictures and sound have in common.
struct PlayedClip {
    const Plugin& plugin;
    const RenderOptions& options;
    int64_t atMs;
    Reporter& reporter;
    const std::atomic<bool>& cancel;
    MediaManager& media;
};

/// The clip's pictures, made one by one.
class PlayedPictures {
public:
    PlayedPictures(const PlayedClip& clip, IntakeTerms& terms)
        : m_source(RequestOf(clip.options), Source::Others::None, clip.options.threads, clip.cancel)
        , m_lengthMs(SpanReader(m_source, {clip.options.fromMs, clip.options.toMs, {}}).LengthMs())
        , m_span(m_source, LimitsFrom(clip.options, clip.atMs))
        , m_base(clip.options.rate ? av_inv_q(*clip.options.rate) : m_source.Pictures().time_base)
        , m_restart(clip.options.restart)
        , m_fromMs(clip.options.fromMs.value_or(0))
        , m_clip(m_restart ? TimeSpan{0, m_lengthMs}
                           : ClipTimes(m_source, clip.options.toMs, clip.options.rate))
        , m_chain(clip.plugin, &clip.media, clip.options.effects, m_clip)
        , m_pairs(clip.options.stereo.TwoViews()
                      ? std::make_unique<ViewPairs>(clip.plugin, &clip.media, clip.options.effects, m_clip,
                                                    clip.options.stereo)
                      : nullptr)
        , m_stage(m_chain, clip.media, clip.options.pixelFormat, &m_source.Pictures(), terms, clip.reporter,
                  m_pairs.get())
        , m_toShow(AV_PIX_FMT_BGRA, 0, 0, mediabridge::ScaleQuality::Bilinear) {
        const RenderOptions& options = clip.options;
        RequireFraming(options.framing, options.stereo.TwoViews());
        RequirePictures(clip.media, options.effects);
        if (options.framing.afterEffects)
            m_framer = Framer(options.framing);
        else
            m_stage.Frame(options.framing);
        if (options.rate)
            m_steady.emplace([this] { return m_span.Next(); }, m_source.Pictures().time_base, *options.rate,
                             std::nullopt);
        if (!options.stereo.right.empty())
            m_right = std::make_unique<RightClip>(ParseSourceUrl(options.stereo.right).At(options.rate),
                                                  LimitsFrom(options, clip.atMs).fromMs, options.threads,
                                                  clip.reporter, clip.cancel);
    }

    const Source& Clip() const noexcept { return m_source; }
    std::optional<int64_t> LengthMs() const { return m_lengthMs; }
    const TimeSpan& EffectSpan() const { return m_clip; }

    /// With its times from the clip's start, not made yet; nothing at the end.
    std::optional<PlayedPicture> Next() {
        std::optional<SpanItem> item = m_steady ? m_steady->Next() : m_span.Next();
        if (!item) return std::nullopt;
        const AVRational sourceBase = m_source.Pictures().time_base;
        const AVFrame& picture = *item->picture;
        const int64_t begin = av_cmp_q(m_base, sourceBase) == 0
                                  ? av_rescale_q(m_span.Start() + picture.pts, m_base, kMilliseconds)
                                  : av_rescale_q(m_span.Start(), sourceBase, kMilliseconds) +
                                        av_rescale_q(picture.pts, m_base, kMilliseconds);
        const int64_t length = av_rescale_q(picture.pkt_duration, m_base, kMilliseconds);
        return PlayedPicture{std::move(item->picture), 1, begin, begin + length};
    }

    /// As it is shown, with its times from the span's start.
    void Make(PlayedPicture& played) {
        AVFramePtr second;
        const int64_t start = av_rescale_q(m_span.Start(), m_source.Pictures().time_base, m_base);
        if (m_right) second = m_right->At({start + played.picture->pts, m_base});
        const AVFramePtr picture = m_framer.Apply(m_stage.ApplyEffects(
            std::move(played.picture), static_cast<int>(played.timeMs + (m_restart ? 0 : m_fromMs)),
            static_cast<unsigned>(played.endMs - played.timeMs), second.get()));
        played.picture = m_toShow.Convert(picture.get());
        if (!played.picture) throw Error(ErrorKind::Output, "a picture can't be shown: " + m_toShow.Error());
        played.pixelAspect = PixelAspect(*played.picture);
    }

private:
    Source m_source;
    const std::optional<int64_t> m_lengthMs;
    SpanReader m_span;
    const AVRational m_base; ///< of the pictures' times
    const bool m_restart;
    const int64_t m_fromMs;
    const TimeSpan m_clip; ///< that effects' times refer to
    EffectChain m_chain;
    std::unique_ptr<ViewPairs> m_pairs;
    std::unique_ptr<RightClip> m_right;
    PictureStage m_stage;
    Framer m_framer; ///< behind the effects
    std::optional<SteadyPictures> m_steady;
    Scaler m_toShow;
};

/// Of sound alone, as far as the file tells.
std::optional<int64_t> SoundLength(const AVFormatContext& input, const AVStream& sound,
                                   const RenderOptions& options) {
    const int64_t from = options.fromMs.value_or(0);
    const std::optional<int64_t> end = SoundTimes(input, sound, options.toMs).endMs;
    if (!end) return std::nullopt;
    if (from >= *end)
        throw Error(ErrorKind::Usage, SecondsText(from) + " is beyond the end of " + options.input +
                                          ", which lasts " + SecondsText(*end));
    return std::min(*end, options.toMs.value_or(*end)) - from;
}

} // namespace

class Playback::Work {
public:
    Work(const Plugin& plugin, const RenderOptions& options, int64_t atMs, Reporter& reporter,
         const std::atomic<bool>& cancel)
        : m_cancel(cancel)
        , m_fromMs(options.fromMs.value_or(0))
        , m_atMs(atMs)
        , m_terms(options.sdr, reporter)
        , m_stages([this] { m_made.Stop(); }) {
        m_manager.TakeOn(m_terms);
        const SourceRequest request = RequestOf(options);
        const InputContextPtr input = OpenInput(request, m_interrupt);
        RequireStreams(*input, request);
        AVStream* const pictures = FindPictures(*input, request);
        AVStream* const sound = FindSound(*input, request, pictures);
        const PlayedClip clip{plugin, options, atMs, reporter, cancel, m_manager};
        if (pictures)
            m_pictures = std::make_unique<PlayedPictures>(clip, m_terms);
        else
            RequireSoundAlone(options, sound);
        m_lengthMs = pictures ? m_pictures->LengthMs() : SoundLength(*input, *sound, options);
        RequireSounds(m_manager, options.audioEffects);
        OpenSound(clip, *input, sound);
        if (m_pictures)
            m_stages.Start([this] { MakePictures(); });
        else
            m_made.Finish();
    }

    std::optional<PlayedPicture> Next(int waitMs) {
        std::optional<PlayedPicture> picture = m_made.PopWithin(std::chrono::milliseconds(waitMs));
        if (!picture && m_made.Stopped()) m_stages.Join();
        return picture;
    }

    void SkipTo(int64_t timeMs) { m_skipTo = timeMs; }
    bool HasPictures() const { return m_pictures != nullptr; }
    bool Ended() const { return m_made.Drained(); }
    bool IsStill() const { return Ended() && m_count == 1 && !m_sound && m_atMs == 0; }
    bool HasSound() const { return m_sound != nullptr; }
    AVFramePtr NextSound(int64_t untilMs) { return m_sound->Next({untilMs - m_atMs, kMilliseconds}); }
    std::optional<int64_t> LengthMs() const { return m_lengthMs; }

private:
    static void RequireSoundAlone(const RenderOptions& options, const AVStream* sound) {
        if (!sound)
            throw Error(ErrorKind::Input,
                        options.input + " has neither pictures nor sound that can be played");
        if (!options.effects.empty() || !options.framing.Empty() || options.stereo.TwoViews())
            throw Error(ErrorKind::Usage, options.input + " has no pictures, which --effect, --size and the "
                                                          "like would change; --audio-effect changes sound");
    }

    void MakePictures() {
        while (std::optional<PlayedPicture> picture = m_pictures->Next()) {
            CheckCancel(m_cancel);
            picture->timeMs -= m_fromMs;
            picture->endMs -= m_fromMs;
            if (picture->endMs < m_skipTo && IsLate()) continue;
            m_pictures->Make(*picture);
            ++m_count;
            if (!m_made.Push(std::move(*picture), 1)) return;
        }
        m_made.Finish();
    }

    // Some pictures are shown however late they are.
    bool IsLate() {
        constexpr int kMostInARow = 10;
        m_skipped = m_skipped < kMostInARow ? m_skipped + 1 : 0;
        return m_skipped != 0;
    }

    // Of the clip, in the file's times.
    Moment Start(const AVFormatContext& input) const {
        if (m_pictures) return m_pictures->Clip().Start();
        return {input.start_time == AV_NOPTS_VALUE ? 0 : input.start_time, kMicroseconds};
    }

    void OpenSound(const PlayedClip& played, const AVFormatContext& input, const AVStream* stream) {
        const RenderOptions& options = played.options;
        const bool brings = BringsSound(options.audioEffects);
        if (!stream && !brings) return;
        const Moment clip = Start(input);
        const Moment start{av_rescale_q(clip.ticks, clip.base, kMicroseconds) +
                               av_rescale_q(m_fromMs + m_atMs, kMilliseconds, kMicroseconds),
                           kMicroseconds};
        m_audioEffects = options.audioEffects;
        const EffectTimes times{SoundSpan(options, input, stream),
                                {(options.restart ? 0 : m_fromMs) + m_atMs, kMilliseconds}};
        const ClipSoundSetup setup{played.plugin, &m_manager, m_audioEffects, times, brings, start, m_cancel};
        m_sound = std::make_unique<ClipSound>(setup, RequestOf(options), stream, ShapeFor(setup, stream),
                                              SoundForm{{kSoundRate, "stereo"}, AV_SAMPLE_FMT_S16, 0});
        if (m_lengthMs && (options.toMs || brings))
            m_sound->EndAt(Moment{*m_lengthMs - m_atMs, kMilliseconds});
    }

    // That effects on sound refer to.
    TimeSpan SoundSpan(const RenderOptions& options, const AVFormatContext& input,
                       const AVStream* stream) const {
        if (m_pictures) return m_pictures->EffectSpan();
        return options.restart ? TimeSpan{0, m_lengthMs} : SoundTimes(input, *stream, options.toMs);
    }

    const std::atomic<bool>& m_cancel;
    ReadInterrupt m_interrupt{&m_cancel, std::nullopt};
    const int64_t m_fromMs, m_atMs;
    IntakeTerms m_terms;
    MediaManager m_manager{&m_cancel};
    std::unique_ptr<PlayedPictures> m_pictures; ///< null for sound alone
    std::optional<int64_t> m_lengthMs;
    std::vector<EffectSpec> m_audioEffects;
    std::unique_ptr<ClipSound> m_sound;
    std::atomic<int64_t> m_skipTo{0}, m_count{0};
    int m_skipped = 0;
    BoundedQueue<PlayedPicture> m_made{kPicturesAhead};
    StageGroup m_stages; ///< last member: ends before the others go
};

Playback::Playback(const Plugin& plugin, const RenderOptions& options, int64_t atMs, Reporter& reporter,
                   const std::atomic<bool>& cancel)
    : m_work(std::make_unique<Work>(plugin, options, atMs, reporter, cancel)) {}
Playback::~Playback() = default;

std::optional<PlayedPicture> Playback::Next(int waitMs) { return m_work->Next(waitMs); }
bool Playback::HasPictures() const { return m_work->HasPictures(); }
bool Playback::Ended() const { return m_work->Ended(); }
void Playback::SkipTo(int64_t timeMs) { m_work->SkipTo(timeMs); }
bool Playback::HasSound() const { return m_work->HasSound(); }
AVFramePtr Playback::NextSound(int64_t untilMs) { return m_work->NextSound(untilMs); }
std::optional<int64_t> Playback::LengthMs() const { return m_work->LengthMs(); }
bool Playback::IsStill() const { return m_work->IsStill(); }

} // namespace aveffect

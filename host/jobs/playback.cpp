#include "host/jobs/playback.h"

#include <algorithm>
#include <climits>
#include <utility>

#include "host/effects/media_check.h"
#include "host/effects/picture_stage.h"
#include "host/effects/view_pairs.h"
#include "host/media/media_manager.h"
#include "host/media/right_clip.h"
#include "host/media/span.h"
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

} // namespace

class Playback::Work {
public:
    Work(const Plugin& plugin, const RenderOptions& options, int64_t atMs, Reporter& reporter,
         const std::atomic<bool>& cancel)
        : m_cancel(cancel)
        , m_fromMs(options.fromMs.value_or(0))
        , m_atMs(atMs)
        , m_terms(options.sdr, reporter)
        , m_source(RequestOf(options), Source::Others::None, options.threads, cancel)
        , m_lengthMs(SpanReader(m_source, {options.fromMs, options.toMs, {}}).LengthMs())
        , m_span(m_source, LimitsFrom(options, atMs))
        , m_effectLength(
              static_cast<uint32_t>(std::clamp<int64_t>(m_lengthMs.value_or(kUnknownLengthMs), 0, INT_MAX)))
        , m_chain(plugin, &m_manager, options.effects, m_effectLength)
        , m_pairs(options.stereo.TwoViews() ? std::make_unique<ViewPairs>(plugin, &m_manager, options.effects,
                                                                          m_effectLength, options.stereo)
                                            : nullptr)
        , m_stage(m_chain, m_manager, options.pixelFormat, &m_source.Pictures(), m_terms, reporter,
                  m_pairs.get())
        , m_toShow(AV_PIX_FMT_BGRA, 0, 0, mediabridge::ScaleQuality::Bilinear)
        , m_stages([this] { m_made.Stop(); }) {
        m_manager.TakeOn(m_terms);
        RequirePictures(m_manager, options.effects);
        RequireSounds(m_manager, options.audioEffects);
        if (!options.stereo.right.empty())
            m_right = std::make_unique<RightClip>(ParseSourceUrl(options.stereo.right).At(options.rate),
                                                  LimitsFrom(options, atMs).fromMs, options.threads, reporter,
                                                  cancel);
        OpenSound(plugin, options);
        m_stages.Start([this] { MakePictures(); });
    }

    std::optional<PlayedPicture> Next(int waitMs) {
        std::optional<PlayedPicture> picture = m_made.PopWithin(std::chrono::milliseconds(waitMs));
        if (!picture && m_made.Stopped()) m_stages.Join();
        return picture;
    }

    void SkipTo(int64_t timeMs) { m_skipTo = timeMs; }
    bool Ended() const { return m_made.Drained(); }
    bool IsStill() const { return Ended() && m_pictures == 1 && !m_sound && m_atMs == 0; }
    bool HasSound() const { return m_sound != nullptr; }
    AVFramePtr NextSound(int64_t untilMs) { return m_sound->Next({untilMs - m_soundFromMs, kMilliseconds}); }
    std::optional<int64_t> LengthMs() const { return m_lengthMs; }

private:
    void MakePictures() {
        while (std::optional<SpanItem> item = m_span.Next()) {
            CheckCancel(m_cancel);
            const AVRational base = m_source.Pictures().time_base;
            const int64_t begin =
                av_rescale_q(m_span.Start() + item->picture->pts, base, kMilliseconds) - m_fromMs;
            const int64_t length = av_rescale_q(item->picture->pkt_duration, base, kMilliseconds);
            PlayedPicture made{nullptr, 1, begin, begin + length};
            if (made.endMs < m_skipTo && IsLate()) continue;
            AVFramePtr second;
            if (m_right) second = m_right->At({m_span.Start() + item->picture->pts, base});
            const AVFramePtr picture =
                m_stage.ApplyEffects(std::move(item->picture), static_cast<int>(made.timeMs),
                                     static_cast<unsigned>(length), second.get());
            made.picture = m_toShow.Convert(picture.get());
            if (!made.picture)
                throw Error(ErrorKind::Output, "a picture can't be shown: " + m_toShow.Error());
            made.pixelAspect = PixelAspect(*made.picture);
            ++m_pictures;
            if (!m_made.Push(std::move(made), 1)) return;
        }
        m_made.Finish();
    }

    // Some pictures are shown however late they are.
    bool IsLate() {
        constexpr int kMostInARow = 10;
        m_skipped = m_skipped < kMostInARow ? m_skipped + 1 : 0;
        return m_skipped != 0;
    }

    // Effects on sound need what came before: then it is made from the start of the span and not heard.
    void OpenSound(const Plugin& plugin, const RenderOptions& options) {
        const SourceRequest request = RequestOf(options);
        const InputContextPtr input = OpenInput(request.path, m_interrupt);
        const AVStream* const stream = FindSound(*input, request, FindPictures(*input, request));
        const bool brings = BringsSound(options.audioEffects);
        if (!stream && !brings) return;
        m_soundFromMs = options.audioEffects.empty() ? m_atMs : 0;
        const Moment clip = m_source.Start();
        const Moment start{av_rescale_q(clip.ticks, clip.base, kMicroseconds) +
                               av_rescale_q(m_fromMs + m_soundFromMs, kMilliseconds, kMicroseconds),
                           kMicroseconds};
        m_audioEffects = options.audioEffects;
        const ClipSoundSetup setup{plugin, &m_manager, m_audioEffects, m_effectLength,
                                   brings, start,      m_cancel};
        m_sound = std::make_unique<ClipSound>(setup, request, stream, ShapeFor(setup, stream),
                                              SoundForm{{kSoundRate, "stereo"}, AV_SAMPLE_FMT_S16, 0});
        if (m_lengthMs && (options.toMs || brings))
            m_sound->EndAt(Moment{*m_lengthMs - m_soundFromMs, kMilliseconds});
        while (m_sound->Reached() < Moment{m_atMs - m_soundFromMs, kMilliseconds} && NextSound(m_atMs)) {
        }
    }

    const std::atomic<bool>& m_cancel;
    ReadInterrupt m_interrupt{&m_cancel, std::nullopt};
    const int64_t m_fromMs, m_atMs;
    IntakeTerms m_terms;
    Source m_source;
    const std::optional<int64_t> m_lengthMs;
    SpanReader m_span;
    MediaManager m_manager{&m_cancel};
    const uint32_t m_effectLength;
    EffectChain m_chain;
    std::unique_ptr<ViewPairs> m_pairs;
    std::unique_ptr<RightClip> m_right;
    PictureStage m_stage;
    Scaler m_toShow;
    std::vector<EffectSpec> m_audioEffects;
    std::unique_ptr<ClipSound> m_sound;
    int64_t m_soundFromMs = 0; ///< where the sound's own times begin
    std::atomic<int64_t> m_skipTo{0}, m_pictures{0};
    int m_skipped = 0;
    BoundedQueue<PlayedPicture> m_made{kPicturesAhead};
    StageGroup m_stages; ///< last member: ends before the others go
};

Playback::Playback(const Plugin& plugin, const RenderOptions& options, int64_t atMs, Reporter& reporter,
                   const std::atomic<bool>& cancel)
    : m_work(std::make_unique<Work>(plugin, options, atMs, reporter, cancel)) {}
Playback::~Playback() = default;

std::optional<PlayedPicture> Playback::Next(int waitMs) { return m_work->Next(waitMs); }
bool Playback::Ended() const { return m_work->Ended(); }
void Playback::SkipTo(int64_t timeMs) { m_work->SkipTo(timeMs); }
bool Playback::HasSound() const { return m_work->HasSound(); }
AVFramePtr Playback::NextSound(int64_t untilMs) { return m_work->NextSound(untilMs); }
std::optional<int64_t> Playback::LengthMs() const { return m_work->LengthMs(); }
bool Playback::IsStill() const { return m_work->IsStill(); }

} // namespace aveffect

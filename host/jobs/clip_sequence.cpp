#include "host/jobs/clip_sequence.h"

#include <algorithm>
#include <utility>

#include "host/effects/memory_pictures.h"
#include "host/effects/transition_frame.h"
#include "host/jobs/film_framing.h"
#include "host/picture/orientation.h"
#include "host/picture/working_format.h"

namespace aveffect {

using mediabridge::AVFramePtr;

ClipSequence::ClipSequence(const Plugin& plugin, SequenceSetup setup, Reporter& reporter,
                           const std::atomic<bool>& cancel)
    : m_plugin(plugin)
    , m_setup(std::move(setup))
    , m_cancel(cancel) {
    int64_t begin = 0;
    for (const SequencePart& part : m_setup.parts) {
        m_begins.push_back(begin);
        begin += part.pictures - part.seam.pictures;
    }
    Open(0);
    Shape(reporter);
}

// Colours are the first part's, size and shape of pixels the model's.
void ClipSequence::Shape(Reporter& reporter) {
    Playing& first = m_playing.front();
    const std::unique_ptr<ClipPlayer> other = m_setup.model == 0 ? nullptr : Player(m_setup.model);
    ClipPlayer& model = other ? *other : *first.player;
    const ClipScan& clip = *m_setup.parts[m_setup.model].clip;
    m_framing =
        FilmFraming(m_setup.framing, {clip.request.path, CanvasOf(*model.At(0)), clip.still}, reporter);
    model.Frame(m_framing);
    const AVFramePtr picture = model.At(0);
    m_canvas = CanvasOf(other ? *first.player->At(0) : *picture);
    m_canvas.width = m_setup.squarePixels ? WidthFor(*picture, {1, 1}) : picture->width;
    m_canvas.height = picture->height;
    m_canvas.pixelAspect = m_setup.squarePixels ? AVRational{1, 1} : CanvasOf(*picture).pixelAspect;
    if (other) first.player->Frame(m_framing);
    first.fittings = MakeFittings();
}

ClipSequence::Fittings ClipSequence::MakeFittings() const {
    auto fittings = std::make_shared<std::vector<CanvasFitting>>();
    for (unsigned worker = 0; worker < m_setup.workers; ++worker)
        fittings->emplace_back(Fitter(m_canvas, m_setup.terms));
    return fittings;
}

int64_t ClipSequence::Pictures() const { return m_begins.back() + m_setup.parts.back().pictures; }

std::unique_ptr<ClipPlayer> ClipSequence::Player(size_t part) const {
    return std::make_unique<ClipPlayer>(m_setup.parts[part].clip->request, m_setup.rate, m_setup.terms,
                                        m_setup.threads, m_cancel);
}

void ClipSequence::Open(size_t part) {
    Playing& playing = m_playing.emplace_back();
    playing.player = Player(part);
    playing.player->Frame(m_framing);
    playing.fittings = MakeFittings();
}

void ClipSequence::Leave() {
    m_damage.Add(m_playing.front().player->Damage());
    m_playing.pop_front();
    ++m_shown;
    if (m_playing.empty()) Open(m_shown);
}

AVFramePtr ClipSequence::Look() {
    Playing& playing = m_playing.front();
    CanvasFitting& fitting = playing.fittings->front();
    AVFramePtr picture = fitting.Show(playing.player->At(0));
    const auto isGrey = [](const SequencePart& part) { return IsGrey(part.clip->format); };
    const bool grey = IsGrey(static_cast<AVPixelFormat>(picture->format));
    if (!grey || std::ranges::all_of(m_setup.parts, isGrey)) return picture;
    picture = fitting.Fit(std::move(picture));
    picture->format = AV_PIX_FMT_BGR0;
    return picture;
}

namespace {

/// A picture that a function which can be copied hands on once.
using Handed = std::shared_ptr<AVFramePtr>;
Handed Hand(AVFramePtr picture) { return std::make_shared<AVFramePtr>(std::move(picture)); }

} // namespace

void ClipSequence::GoTo(int64_t index) {
    m_playing.clear();
    while (index >= m_begins[m_shown] + m_setup.parts[m_shown].pictures) ++m_shown;
    Open(m_shown);
    m_playing.front().player->GoTo(index - m_begins[m_shown]);
    if (m_shown + 1 == m_begins.size() || index < m_begins[m_shown + 1]) return;
    Open(m_shown + 1);
    m_playing.back().player->GoTo(index - m_begins[m_shown + 1]);
}

Drawing ClipSequence::Draw(int64_t index) {
    while (index >= m_begins[m_shown] + m_setup.parts[m_shown].pictures) Leave();
    const bool crosses = m_shown + 1 < m_begins.size() && index >= m_begins[m_shown + 1];
    if (crosses && m_playing.size() < 2) Open(m_shown + 1);
    Playing& from = m_playing.front();
    const Handed shown = Hand(from.player->At(index - m_begins[m_shown]));
    if (!crosses)
        return [shown, fittings = from.fittings](unsigned worker) {
            return (*fittings)[worker].Show(std::move(*shown));
        };
    Playing& to = m_playing.back();
    const int64_t across = index - m_begins[m_shown + 1];
    return [this, &seam = m_setup.parts[m_shown].seam, shown, next = Hand(to.player->At(across)), across,
            left = from.fittings, right = to.fittings](unsigned worker) {
        AVFramePtr first = (*left)[worker].Fit(std::move(*shown));
        return Cross(seam, std::move(first), (*right)[worker].Fit(std::move(*next)), across);
    };
}

// A transition reads its pictures once, so each moment has a processor of its own.
AVFramePtr ClipSequence::Cross(const Seam& seam, AVFramePtr from, AVFramePtr to, int64_t picture) const {
    const AVRational interval = av_inv_q(m_setup.rate);
    const int64_t length = std::max<int64_t>(1, av_rescale_q(seam.pictures, interval, kMilliseconds));
    MemoryPictures pictures;
    pictures.Show(std::move(from), std::move(to));
    EffectChain chain(
        m_plugin, &pictures,
        {TransitionSpec(seam.transition, MemoryPictures::kFirst, MemoryPictures::kSecond, 0, length)},
        {0, length});
    return DrawTransition(chain, m_canvas, av_rescale_q(picture, interval, kMilliseconds));
}

std::vector<SoundPart> ClipSequence::Sound(int rate) const {
    const AVRational interval = av_inv_q(m_setup.rate);
    const auto samples = [&](int64_t picture) { return av_rescale_q(picture, interval, {1, rate}); };
    std::vector<SoundPart> parts;
    for (size_t index = 0; index < m_begins.size(); ++index) {
        const SequencePart& part = m_setup.parts[index];
        const int64_t end = samples(m_begins[index] + part.pictures);
        const int64_t shared = index + 1 < m_begins.size() ? end - samples(m_begins[index + 1]) : 0;
        parts.push_back({part.clip, end - samples(m_begins[index]), shared});
    }
    return parts;
}

DamageReport ClipSequence::Damage() const {
    DamageReport all = m_damage;
    for (const Playing& playing : m_playing) all.Add(playing.player->Damage());
    return all;
}

} // namespace aveffect

#include "host/jobs/clip_sequence.h"

#include <algorithm>
#include <utility>

#include "host/effects/transition_frame.h"
#include "host/picture/orientation.h"

namespace aveffect {

using mediabridge::AVFramePtr;

ClipSequence::ClipSequence(const Plugin& plugin, SequenceSetup setup, const std::atomic<bool>& cancel)
    : m_plugin(plugin)
    , m_setup(std::move(setup))
    , m_cancel(cancel) {
    int64_t begin = 0;
    for (const SequencePart& part : m_setup.parts) {
        m_begins.push_back(begin);
        begin += part.pictures - m_setup.across;
    }
    Open(0);
    m_canvas = ChooseCanvas(*m_playing.front().player->At(0));
    m_playing.front().fitter = Fitter(m_canvas, m_setup.terms);
}

Canvas ClipSequence::ChooseCanvas(const AVFrame& first) const {
    Canvas canvas = CanvasOf(first);
    if (m_setup.squarePixels || m_setup.size) {
        const PictureSize size = m_setup.size.value_or(PictureSize{WidthFor(first, {1, 1}), first.height});
        canvas.width = size.width;
        canvas.height = size.height;
        canvas.pixelAspect = {1, 1};
    }
    return canvas;
}

int64_t ClipSequence::Pictures() const { return m_begins.back() + m_setup.parts.back().pictures; }

void ClipSequence::Open(size_t part) {
    Playing& playing = m_playing.emplace_back();
    playing.player = std::make_unique<ClipPlayer>(*m_setup.parts[part].clip, m_setup.rate, m_setup.terms,
                                                  m_setup.threads, m_cancel);
    playing.fitter = Fitter(m_canvas, m_setup.terms);
}

AVFramePtr ClipSequence::FirstPicture() {
    AVFramePtr picture = m_playing.front().player->At(0);
    Fitter& fitter = m_playing.front().fitter;
    return fitter.Fits(*picture) ? std::move(picture) : fitter.Fit(*picture);
}

AVFramePtr ClipSequence::Draw(int64_t index) {
    if (index >= m_begins[m_shown] + m_setup.parts[m_shown].pictures) {
        m_damage.Add(m_playing.front().player->Damage());
        m_playing.pop_front();
        ++m_shown;
    }
    AVFramePtr picture = m_playing.front().player->At(index - m_begins[m_shown]);
    Fitter& fitter = m_playing.front().fitter;
    const bool crosses = m_shown + 1 < m_begins.size() && index >= m_begins[m_shown + 1];
    if (!crosses) return fitter.Fits(*picture) ? std::move(picture) : fitter.Fit(*picture);
    if (m_playing.size() < 2) Open(m_shown + 1);
    const int64_t across = index - m_begins[m_shown + 1];
    const AVFramePtr next = m_playing.back().player->At(across);
    return Cross(fitter.Fit(*picture), m_playing.back().fitter.Fit(*next), across);
}

// A transition reads its pictures once, so each moment has a processor of its own.
AVFramePtr ClipSequence::Cross(AVFramePtr from, AVFramePtr to, int64_t picture) {
    const AVRational interval = av_inv_q(m_setup.rate);
    const int64_t length = std::max<int64_t>(1, av_rescale_q(m_setup.across, interval, kMilliseconds));
    m_pictures.Show(std::move(from), std::move(to));
    EffectChain chain(
        m_plugin, &m_pictures,
        {TransitionSpec(m_setup.transition, MemoryPictures::kFirst, MemoryPictures::kSecond, 0, length)},
        static_cast<uint32_t>(length));
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

#include "host/effects/audio_stage.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <map>
#include <utility>

#include "aveffect/base_tools.h"
#include "host/effects/effect_chain.h"
#include "host/effects/sound_mix.h"
#include "host/media/span.h"
#include "host/settings/catalogue_lookup.h"
#include "host/support/error.h"

namespace aveffect {
namespace {

constexpr int kPieces = 50;        // a second: a multiple of the steps in which fades move
constexpr int kMovingPieces = 200; // such a step

bool IsMovingNumber(const SettingAtTime& setting) {
    return setting.Moves() && setting.Property().kind == AVBased::ValueKind::Number;
}

unsigned char* Samples(mediabridge::AudioFrame& frame) {
    unsigned bytes = 0;
    return frame.GetBuffer(0, &bytes);
}

AVSampleFormat SampleFormatOf(const AVFrame& sound) { return static_cast<AVSampleFormat>(sound.format); }

size_t BytesASample(const AVFrame& sound) {
    return static_cast<size_t>(av_get_bytes_per_sample(SampleFormatOf(sound))) *
           static_cast<size_t>(sound.ch_layout.nb_channels);
}

mediabridge::AudioFrame::Ptr Copy(const AVFrame& piece, int64_t timeMs) {
    auto frame = mediabridge::AudioFrame::Copy(&piece, static_cast<unsigned>(timeMs));
    if (!frame) throw NoMemory("the sound can't be handed to the effects: out of memory");
    return frame;
}

} // namespace

AudioStage::AudioStage(const Plugin& plugin, AVBased::IAVManager* manager, const EffectSpec& effect,
                       const TimeSpan& clip, int rate)
    : m_info(RequireEffect(effect.name))
    , m_settings(effect, clip)
    , m_rate(rate)
    , m_origin(av_rescale_rnd(m_settings.Span().beginMs, rate, 1000, AV_ROUND_UP))
    , m_begin(m_settings.Begins() ? m_origin : std::numeric_limits<int64_t>::min())
    , m_end(m_settings.Ends() ? av_rescale_rnd(*m_settings.Span().endMs, rate, 1000, AV_ROUND_UP)
                              : std::numeric_limits<int64_t>::max())
    , m_voice(Make(plugin, manager)) {
    const std::vector<SettingAtTime>& properties = m_settings.Properties();
    const auto moving = std::ranges::find_if(properties, IsMovingNumber);
    if (moving == properties.end()) return;
    if (std::ranges::count_if(properties, IsMovingNumber) == 1 && !NeedsAll() &&
        moving->Property().type == AVBased::kInt32)
        m_step = static_cast<size_t>(moving - properties.begin());
    else
        m_later = Make(plugin, manager);
}

int AudioStage::PiecesASecond() const noexcept { return m_later ? kMovingPieces : kPieces; }

bool AudioStage::NeedsAll() const noexcept { return (m_info.traits & AVBased::kKeepsState) != 0; }

AudioStage::Voice AudioStage::Make(const Plugin& plugin, AVBased::IAVManager* manager) const {
    Voice voice{plugin.MakeAudio(manager, m_info.name), {}};
    SetDuration(*voice.proc, static_cast<uint32_t>(m_settings.LengthMs().value_or(kUnknownLengthMs)));
    Set(voice, TextsAt(static_cast<double>(m_settings.Span().beginMs)));
    return voice;
}

double AudioStage::ClipMs(int64_t sample) const {
    return static_cast<double>(m_origin + sample) * 1000 / m_rate;
}

std::vector<std::string> AudioStage::TextsAt(double ms) const {
    std::vector<std::string> texts;
    for (const SettingAtTime& property : m_settings.Properties()) texts.push_back(property.TextAt(ms));
    return texts;
}

void AudioStage::Set(Voice& voice, std::vector<std::string> texts) const {
    for (size_t index = 0; index < texts.size(); ++index)
        if (voice.texts.empty() || voice.texts[index] != texts[index])
            SetProperty(*voice.proc, m_settings.Properties()[index].Property().name, texts[index]);
    voice.texts = std::move(texts);
}

AudioStage::FramePtr AudioStage::Hear(Voice& voice, const AVFrame& piece, int64_t first) const {
    FramePtr frame = Copy(piece, av_rescale(std::max<int64_t>(0, first), 1000, m_rate));
    GetBaseException()->Clear();
    voice.proc->ProcFrameInPlace(frame.get());
    RequireNoRecord(*voice.proc);
    return frame;
}

AudioStage::FramePtr AudioStage::HearAt(Voice& voice, int64_t sample, const AVFrame& piece,
                                        int64_t first) const {
    if (m_settings.Move()) Set(voice, TextsAt(ClipMs(sample)));
    return Hear(voice, piece, first);
}

// Between two whole numbers, what either of them gives counts as much as the value is near to it.
AudioStage::FramePtr AudioStage::HearSteps(const AVFrame& piece, int64_t first) {
    std::map<int64_t, FramePtr> heard; // the whole piece, by the number
    const auto hear = [&](int64_t number) {
        FramePtr& frame = heard[number];
        if (!frame) {
            std::vector<std::string> texts = m_voice.texts;
            texts[*m_step] = std::to_string(number);
            Set(m_voice, std::move(texts));
            frame = Hear(m_voice, piece, first);
        }
        return Samples(*frame);
    };
    const SettingAtTime& setting = m_settings.Properties()[*m_step];
    const size_t sampleBytes = BytesASample(piece);
    FramePtr mixed = Copy(piece, 0);
    for (int begin = 0, end = 0; begin < piece.nb_samples; begin = end) {
        const double number = std::floor(setting.NumberAt(ClipMs(first + begin)));
        m_weights.clear();
        for (; end < piece.nb_samples; ++end) {
            const double beyond = setting.NumberAt(ClipMs(first + end)) - number;
            if (beyond < 0 || beyond >= 1) break;
            m_weights.push_back(beyond);
        }
        const size_t place = static_cast<size_t>(begin) * sampleBytes;
        std::memcpy(Samples(*mixed) + place, hear(std::llround(number)) + place,
                    m_weights.size() * sampleBytes);
        if (std::ranges::any_of(m_weights, [](double weight) { return weight > 0; }))
            MixSamples(SampleFormatOf(piece), piece.ch_layout.nb_channels, Samples(*mixed) + place,
                       hear(std::llround(number) + 1) + place, m_weights);
    }
    return mixed;
}

// What is heard at the piece's begin goes over evenly into what is heard at its end.
AudioStage::FramePtr AudioStage::HearBetween(const AVFrame& piece, int64_t first) {
    FramePtr mixed = HearAt(m_voice, first, piece, first);
    const FramePtr later = HearAt(*m_later, first + piece.nb_samples, piece, first);
    m_weights.clear();
    for (int sample = 0; sample < piece.nb_samples; ++sample)
        m_weights.push_back(static_cast<double>(sample) / piece.nb_samples);
    MixSamples(SampleFormatOf(piece), piece.ch_layout.nb_channels, Samples(*mixed), Samples(*later),
               m_weights);
    return mixed;
}

void AudioStage::Process(AVFrame& piece, int64_t first) {
    const FramePtr heard = m_step    ? HearSteps(piece, first)
                           : m_later ? HearBetween(piece, first)
                                     : HearAt(m_voice, first, piece, first);
    if (!m_settings.StrengthMatters()) {
        std::memcpy(piece.data[0], Samples(*heard),
                    static_cast<size_t>(piece.nb_samples) * BytesASample(piece));
        return;
    }
    m_weights.clear();
    for (int sample = 0; sample < piece.nb_samples; ++sample)
        m_weights.push_back(m_settings.StrengthAt(ClipMs(first + sample)));
    MixSamples(SampleFormatOf(piece), piece.ch_layout.nb_channels, piece.data[0], Samples(*heard), m_weights);
}

} // namespace aveffect

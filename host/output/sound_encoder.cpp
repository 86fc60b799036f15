#include "host/output/sound_encoder.h"

#include <algorithm>
#include <string_view>

#include "host/output/sound_formats.h"
#include "host/support/error.h"
#include "host/support/log_capture.h"

namespace aveffect {
namespace {

constexpr int64_t kOwnBitRate = 0;    // the encoder's default
constexpr int64_t kLowBitRate = 6300; // the one that G.723.1 takes

int64_t UsualBitRate(int rate, int channels) { return channels * (rate > 24000 ? 96000 : 48000); }

/// To try, the one that is asked for or else the best first.
std::vector<int64_t> BitRates(const OutputPlan& plan, int rate, const AVChannelLayout& layout) {
    if (plan.sound.bitRate) return {*plan.sound.bitRate};
    return {UsualBitRate(rate, layout.nb_channels), kOwnBitRate, kLowBitRate};
}

const AVCodec& ChooseEncoder(const OutputPlan& plan, const std::string& name) {
    const AVCodec* codec =
        name.empty() ? avcodec_find_encoder(plan.muxer->audio_codec) : FindSoundEncoder(name);
    if (!codec && name.empty()) codec = FindSoundEncoder(UsualSoundCodec(plan, AV_CODEC_ID_NONE));
    if (!codec)
        throw Error(ErrorKind::Usage,
                    name.empty()
                        ? std::string("no encoder for ") + avcodec_get_name(plan.muxer->audio_codec) +
                              " is installed; choose another sound codec"
                        : "no sound encoder is called \"" + name +
                              "\"; aac, libopus, libvorbis, flac and pcm_s16le are usual ones");
    if (!HoldsSound(plan, codec->id))
        throw Error(ErrorKind::Usage, "." + plan.Kind() + " files can't hold " + avcodec_get_name(codec->id) +
                                          " sound; these can: " + ContainersFor(codec->id, HoldsSound));
    const AVCodec* player = avcodec_find_decoder(codec->id);
    if (!player || (player->capabilities & AV_CODEC_CAP_EXPERIMENTAL))
        throw Error(ErrorKind::Usage, std::string("sound of ") + codec->name +
                                          " could not be played again: no decoder does it");
    return *codec;
}

/// Rates to try, the nearest first: the rate itself, higher ones upwards, lower ones downwards.
std::vector<int> RatesFor(const AVCodec& codec, const SoundLimits& limits, int wanted) {
    std::vector<int> rates;
    if (codec.supported_samplerates)
        for (const int* rate = codec.supported_samplerates; *rate; ++rate) rates.push_back(*rate);
    else
        rates = {wanted, 8000, 11025, 12000, 16000, 22050, 24000, 32000, 44100, 48000, 88200, 96000, 192000};
    std::erase_if(rates, [&](int rate) { return !limits.Allow(rate); });
    std::ranges::sort(rates, [wanted](int a, int b) {
        const bool aBelow = a < wanted, bBelow = b < wanted;
        return aBelow != bBelow ? bBelow : aBelow ? a > b : a < b;
    });
    rates.erase(std::unique(rates.begin(), rates.end()), rates.end());
    return rates;
}

AVChannelLayout LayoutFrom(const std::string& text) {
    AVChannelLayout layout = {};
    RequireMemory(av_channel_layout_from_string(&layout, text.c_str()), text);
    return layout;
}

/// Layouts to try, the nearest first: the layout itself, one of as many channels, smaller ones downwards,
/// larger ones upwards. Channels without a place can't be mixed.
std::vector<AVChannelLayout> LayoutsFor(const AVCodec& codec, const SoundLimits& limits,
                                        const std::string& text) {
    const AVChannelLayout wanted = LayoutFrom(text);
    AVChannelLayout usual = {};
    av_channel_layout_default(&usual, wanted.nb_channels);
    std::vector<AVChannelLayout> layouts = {wanted, usual};
    for (const int channels : {1, 2, 6, 8}) av_channel_layout_default(&layouts.emplace_back(), channels);
    if (codec.ch_layouts)
        for (const AVChannelLayout* own = codec.ch_layouts; own->nb_channels > 0; ++own)
            layouts.push_back(*own);
    const auto known = [&](const AVChannelLayout& layout) {
        if (!codec.ch_layouts) return true;
        for (const AVChannelLayout* own = codec.ch_layouts; own->nb_channels > 0; ++own)
            if (av_channel_layout_compare(own, &layout) == 0) return true;
        return false;
    };
    std::erase_if(layouts, [&](const AVChannelLayout& layout) {
        const bool mixed = layout.nb_channels != wanted.nb_channels;
        return !known(layout) || !limits.Allow(layout) || (mixed && wanted.order != AV_CHANNEL_ORDER_NATIVE);
    });
    std::ranges::stable_sort(layouts, [&](const AVChannelLayout& a, const AVChannelLayout& b) {
        const bool aAbove = a.nb_channels > wanted.nb_channels, bAbove = b.nb_channels > wanted.nb_channels;
        return aAbove != bAbove ? bAbove
               : aAbove         ? a.nb_channels < b.nb_channels
                                : a.nb_channels > b.nb_channels;
    });
    return layouts;
}

/// The format itself, planar or not, else the first that is no narrower, else the encoder's first.
AVSampleFormat NearestFormat(const AVCodec& codec, AVSampleFormat wanted) {
    if (!codec.sample_fmts) return wanted == AV_SAMPLE_FMT_NONE ? AV_SAMPLE_FMT_FLTP : wanted;
    if (wanted == AV_SAMPLE_FMT_NONE) return codec.sample_fmts[0];
    AVSampleFormat wide = AV_SAMPLE_FMT_NONE;
    for (const AVSampleFormat* known = codec.sample_fmts; *known != AV_SAMPLE_FMT_NONE; ++known) {
        if (av_get_packed_sample_fmt(*known) == av_get_packed_sample_fmt(wanted)) return *known;
        if (wide == AV_SAMPLE_FMT_NONE && av_get_bytes_per_sample(*known) >= av_get_bytes_per_sample(wanted))
            wide = *known;
    }
    return wide == AV_SAMPLE_FMT_NONE ? codec.sample_fmts[0] : wide;
}

/// Two samples share a byte in these, and some of their encoders end the program over half a byte.
bool WantsPairs(AVCodecID codec) { return std::string_view(avcodec_get_name(codec)).starts_with("adpcm_"); }

/// The sound and one sample of silence.
mediabridge::AVFramePtr OneLonger(const AVFrame& sound) {
    mediabridge::AVFramePtr longer(av_frame_alloc());
    if (!longer) return nullptr;
    longer->format = sound.format;
    longer->sample_rate = sound.sample_rate;
    longer->ch_layout = sound.ch_layout; // owns nothing: a mask, or a number
    longer->nb_samples = sound.nb_samples + 1;
    longer->pts = sound.pts;
    if (av_frame_get_buffer(longer.get(), 0) < 0) return nullptr;
    const auto format = static_cast<AVSampleFormat>(sound.format);
    av_samples_copy(longer->extended_data, sound.extended_data, 0, 0, sound.nb_samples,
                    sound.ch_layout.nb_channels, format);
    av_samples_set_silence(longer->extended_data, sound.nb_samples, 1, sound.ch_layout.nb_channels, format);
    return longer;
}

std::string Describe(const AVChannelLayout& layout) {
    char text[64] = {};
    av_channel_layout_describe(&layout, text, sizeof text);
    return text;
}

} // namespace

// What encoders take of rates, channels and bit rates is in part known only to them, so they are asked.
SoundEncoder::SoundEncoder(const OutputPlan& plan, const std::string& name, const SoundShape& wanted,
                           AVSampleFormat format)
    : Encoder(ChooseEncoder(plan, name))
    , m_wanted(wanted) {
    if (plan.sound.bitRate) RequireBitRate(Codec());
    CheckSettings(Codec(), plan.sound.settings);
    const SoundLimits limits = LimitsOf(plan, Codec().id);
    const AVSampleFormat nearest = NearestFormat(Codec(), format);
    TakeLibraryError();
    int first = 0;
    std::string reason = "it takes nothing near " + Describe(LayoutFrom(wanted.layout));
    for (const AVChannelLayout& layout : LayoutsFor(Codec(), limits, wanted.layout))
        for (const int rate : RatesFor(Codec(), limits, wanted.rate))
            for (const int64_t bitRate : BitRates(plan, rate, layout)) {
                const int code = TryToOpen(plan, nearest, layout, rate, bitRate);
                if (code >= 0) return;
                const std::string detail = TakeLibraryError();
                if (first == 0) {
                    first = code;
                    reason = detail;
                }
                if (code == AVERROR(ENOMEM)) Fail("can't start", code, detail);
            }
    Fail("can't start", first ? first : AVERROR(EINVAL), reason);
}

int SoundEncoder::TryToOpen(const OutputPlan& plan, AVSampleFormat format, const AVChannelLayout& layout,
                            int rate, int64_t bitRate) {
    Reset();
    AVCodecContext& settings = Settings();
    settings.sample_fmt = format;
    settings.sample_rate = rate;
    settings.ch_layout = layout; // owns nothing: a mask, or a number
    if (bitRate != kOwnBitRate) settings.bit_rate = bitRate;
    settings.time_base = {1, rate};
    if (Codec().capabilities & AV_CODEC_CAP_EXPERIMENTAL)
        settings.strict_std_compliance = FF_COMPLIANCE_EXPERIMENTAL;
    ApplySettings(settings, plan.sound.settings);
    return Open(plan.muxer);
}

SoundForm SoundEncoder::Form() const {
    const bool any = Codec().capabilities & AV_CODEC_CAP_VARIABLE_FRAME_SIZE;
    return {{Context().sample_rate, LayoutText(Context().ch_layout)},
            Context().sample_fmt,
            any ? 0 : Context().frame_size};
}

std::string SoundEncoder::Summary() const {
    std::string text = std::string("sound is encoded by ") + Codec().name;
    if (Context().sample_rate != m_wanted.rate)
        text += ", at " + std::to_string(Context().sample_rate) + " Hz instead of " +
                std::to_string(m_wanted.rate);
    const AVChannelLayout wanted = LayoutFrom(m_wanted.layout);
    if (av_channel_layout_compare(&wanted, &Context().ch_layout) != 0)
        text += ", " + Describe(Context().ch_layout) + " instead of " + Describe(wanted);
    return text;
}

AVFrame* SoundEncoder::Prepare(AVFrame* sound) {
    const bool whole = sound->nb_samples % 2 == 0 || sound->nb_samples == Context().frame_size;
    if (whole || !WantsPairs(Codec().id)) return sound;
    m_even = OneLonger(*sound);
    if (!m_even) throw NoMemory("out of memory");
    return m_even.get();
}

} // namespace aveffect
